// Smart groups whose searches name other groups: in circles, in great numbers, gone, and kept in files.
#include "search/SmartGroupWorld.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace test {

namespace {

using GroupReferences = SmartGroupWorld;

Ref<ZRSearchElement> named(const std::string& firstName)
{
    return where(kZRFirstNameProperty, kZREqual, Value(firstName));
}

TEST_F(GroupReferences, AreTold)
{
    const auto plain = ZRGroup::initWithRoster(roster), other = ZRGroup::initWithRoster(roster);
    const auto smart = group("of plain", inGroup(plain));
    const auto search = inGroup(smart);
    EXPECT_TRUE(search->isReferencingGroup(*smart));
    EXPECT_TRUE(search->isReferencingGroup(*plain));
    EXPECT_FALSE(search->isReferencingGroup(*other));
    EXPECT_TRUE(search->usesGroupInDefinition(*smart));
    EXPECT_FALSE(search->usesGroupInDefinition(*plain));
    const auto both = all({search, inGroup(other), search});
    EXPECT_EQ(both->groupsUsedInDefinition(), (std::vector<Ref<ZRGroup>>{smart, other}));
    EXPECT_TRUE(both->isReferencingGroup(*plain));
    EXPECT_TRUE(named("Ana")->groupsUsedInDefinition().empty());
}

// What a group is asked for while it is being looked into is not there.
TEST_F(GroupReferences, EndWhereTheyGoInCircles)
{
    for (const char* name : {"Ana", "Bo", "Cy", "Di"})
        card(name);
    std::vector<Ref<ZRSmartGroup>> ring;
    for (const char* name : {"a", "b", "c", "d"})
        ring.push_back(group(name));
    const Names names{"Ana", "Bo", "Cy", "Di"};
    for (std::size_t i = 0; i < ring.size(); ++i)
        ring[i]->setSearchElement(any({named(names[i]), inGroup(ring[(i + 1) % ring.size()])}));
    for (const auto& one : ring) {
        EXPECT_EQ(namesOf(one->members()), names) << one->name();
        EXPECT_TRUE(ring.front()->searchElement()->isReferencingGroup(*one)) << one->name();
    }

    const auto itself = group("itself"), empty = group("no search");
    itself->setSearchElement(any({named("Ana"), inGroup(itself)}));
    ring[0]->setSearchElement(inGroup(ring[1]));
    ring[1]->setSearchElement(inGroup(ring[0]));
    const std::pair<Ref<ZRSmartGroup>, Names> wanted[]{
        {itself, {"Ana"}}, {ring[0], {}}, {ring[3], {"Di"}}, {empty, {}}};
    for (const auto& [one, found] : wanted) {
        EXPECT_EQ(namesOf(roster->recordsMatchingSearchElement(inGroup(one))), found) << one->name();
        EXPECT_EQ(namesOf(roster->recordsMatchingSearchElementNoHinting(inGroup(one))), found) << one->name();
    }
}

TEST_F(GroupReferences, ToGroupsThatAreGoneFindNobody)
{
    const auto gone = ZRGroup::initWithRoster(roster);
    const auto goneSmart = groupOf({"Ana"});
    gone->addMember(*card("Ana"));
    const auto group = SmartGroupWorld::group("of gone ones", any({inGroup(gone), inGroup(goneSmart)}));
    const auto left = SmartGroupWorld::group("some left", any({inGroup(gone), named("Bo")}));
    card("Bo");
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(namesOf(group->members()), Names{"Ana"});

    ASSERT_TRUE(roster->removeRecord(gone) && roster->removeRecord(goneSmart));
    EXPECT_EQ(namesOf(group->members()), Names{});
    EXPECT_EQ(namesOf(left->members()), Names{"Bo"});
    ASSERT_TRUE(roster->save());
    group->clearTemporaryCache();
    EXPECT_EQ(namesOf(group->members()), Names{});
    EXPECT_EQ(namesOf(left->members()), Names{"Bo"});
}

// Each names the two before it: read naively, the twentieth names the first some ten thousand times.
TEST_F(GroupReferences, ThatMeetAgainAndAgainAreAnswered)
{
    std::vector<Ref<ZRSmartGroup>> groups;
    Names names;
    for (int i = 0; i < 20; ++i) {
        names.push_back(fmt::format("Card {:02}", i));
        card(names.back());
        std::vector<Ref<ZRSearchElement>> parts{named(names.back())};
        for (int before = std::max(0, i - 2); before < i; ++before)
            parts.push_back(inGroup(groups[static_cast<std::size_t>(before)]));
        groups.push_back(group(names.back(), any(parts)));
    }
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(namesOf(groups[9]->members()), Names(names.begin(), names.begin() + 10));
    EXPECT_EQ(namesOf(groups[19]->members()), names);
    EXPECT_TRUE(groups[19]->searchElement()->isReferencingGroup(*groups[0]));
    EXPECT_FALSE(groups[19]->searchElement()->isReferencingGroup(*group("a stranger")));
}

// Where each asks for any group among other things, every order of the groups is a way through them.
TEST_F(GroupReferences, ToAnyGroupFromManyAreAnswered)
{
    const auto friends = ZRGroup::initWithRoster(roster);
    friends->addMember(*card("Ana"));
    card("Bo");
    const Value marker(kZRSmartGroupAnyGroupMembershipProperty);
    std::vector<Ref<ZRSmartGroup>> groups;
    for (const char* name : {"Ana", "Bo", "Ana", "Bo", "Ana", "Bo", "Ana", "Bo", "Ana", "Bo", "Ana", "Bo"})
        groups.push_back(
            group(name, all({named(name), where(kZRParentGroupsProperty, kZRMemberOfGroup, marker)})));
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(namesOf(groups[0]->members()), Names{"Ana"});
    EXPECT_EQ(namesOf(groups[1]->members()), Names{});
}

TEST_F(GroupReferences, JoinTwelveHundredGroupsInOneRule)
{
    std::vector<Ref<ZRSearchElement>> parts, smartParts;
    std::vector<Ref<ZRGroup>> kept;
    for (int i = 0; i < 1200; ++i) {
        kept.push_back(ZRGroup::initWithRoster(roster));
        parts.push_back(inGroup(kept.back()));
        if (i % 100 == 0)
            kept.back()->addMember(*card(fmt::format("Card {:04}", i)));
        const auto smart = group("smart", named(fmt::format("Card {:04}", i)));
        smartParts.push_back(inGroup(smart));
        kept.push_back(smart);
    }
    card("Nobody");
    ASSERT_TRUE(roster->save());
    const auto ofGroups = group("all groups", any(parts)),
               ofSmart = group("all smart groups", any(smartParts));
    EXPECT_EQ(ofGroups->members().size(), 12u);
    EXPECT_EQ(ofSmart->members().size(), 12u);
    EXPECT_EQ(ofGroups->searchElement()->groupsUsedInDefinition().size(), 1200u);
}

// ---- kept in files

std::string told(const ZRSmartGroup& group)
{
    const auto search = group.searchElement();
    const Names found = namesOf(group.members());
    return fmt::format("{}: {}; {}; {} groups", group.name(), fmt::join(found, " "), changesOf(group),
        search ? search->groupsUsedInDefinition().size() : 0);
}

const Role make("make smart groups", [](const Words&) {
    const auto roster = openShared();
    const auto friends = ZRGroup::initWithRoster(roster);
    friends->addMember(*person(roster, {{kZRFirstNameProperty, "Ana"}}));
    const auto ofFriends = smartGroup(roster, "a", inGroup(friends));
    const auto ofBoth = smartGroup(roster, "b", any({inGroup(ofFriends), named("Bo")}));
    smartGroup(roster, "c", inGroup(ofBoth, kZRNotMemberOfGroup))->setTracksModification(true);
    smartGroup(roster, "d")->setSearchElement(named("Ana"));
    ofBoth->members();
    person(roster, {{kZRFirstNameProperty, "Bo"}});
    ofBoth->members();
    person(roster, {{kZRFirstNameProperty, "Cy"}});
    return roster->save() ? "saved" : roster->lastSaveError().text;
});

const Role tell("tell of smart groups", [](const Words&) {
    const auto roster = openShared();
    Words lines;
    for (const auto& record : ZRSmartGroup::smartGroups())
        lines.push_back(told(static_cast<const ZRSmartGroup&>(*record)));
    std::ranges::sort(lines);
    return fmt::format("{}{}", fmt::join(lines, "\n"), roster->hasUnsavedChanges() ? "\nunsaved" : "");
});

constexpr char expected[] = "a: Ana; as before; 1 groups\n"
                            "b: Ana Bo; modified, in came: Bo; 1 groups\n"
                            "c: Bo Cy; as before; 1 groups\n"
                            "d: Ana; as before; 0 groups";

TEST(SmartGroupsInFiles, AreTheSameInEveryProcess)
{
    const Home home;
    ASSERT_EQ(home.play("make smart groups").answer, "saved");
    EXPECT_EQ(home.play("tell of smart groups").answer, expected);
    EXPECT_EQ(home.play("tell of smart groups").answer, expected) << "looking changes nothing";
}

// Archives name the directory of their groups; where it is gone, the groups are those of the roster in use.
TEST(SmartGroupsInFiles, FollowTheirRosterToAnotherDirectory)
{
    const Home old, present;
    ASSERT_EQ(old.play("make smart groups").answer, "saved");
    present.stage();
    fs::remove_all(present.rosterDirectory());
    fs::rename(old.rosterDirectory(), present.rosterDirectory());
    EXPECT_EQ(present.play("tell of smart groups").answer, expected);
}

const Role edit("edit while another looks", [](const Words& words) {
    const auto roster = openShared();
    for (const auto& record : roster->groups()) {
        auto& group = static_cast<ZRSmartGroup&>(*record);
        group.setIsModified(false);
        group.setSearchElement(named(words.front()));
    }
    return roster->save() ? "saved" : roster->lastSaveError().text;
});

const Role watch("look while another edits", [](const Words& words) {
    const auto roster = openShared();
    const auto bo = person(roster, {{kZRFirstNameProperty, "Bo"}});
    const auto group = smartGroup(roster, "watched", named("Ana"));
    group->members();
    group->setIsModified(true);
    if (!roster->save())
        return roster->lastSaveError().text;
    const std::string before = group->searchElement()->description();
    const auto other = play("edit while another looks", {words.front()});
    // As the notice of the other process would, whose time nobody knows.
    roster->resetRecordsWithUniqueIds(Value::array({Value(group->uniqueId())}));
    const std::string flags =
        fmt::format("{}", group->valueForProperty(kZRSmartGroupFlagsProperty).asInteger());
    const Names found = namesOf(group->members());
    return fmt::format("{}, {} {}; flags {}; {}; {}", before, other.answer,
        group->searchElement()->description(), flags, fmt::join(found, " "), changesOf(*group));
});

// A search that was read before is read anew when another process has changed it.
TEST(SmartGroupsInFiles, AreReadAnewWhenAnotherProcessChangesThem)
{
    const Home home;
    EXPECT_EQ(home.play("look while another edits", {"Bo"}).answer,
        "First == Ana, saved First == Bo; flags 0; Bo; modified, in came: Bo");
}

} // namespace

} // namespace test
