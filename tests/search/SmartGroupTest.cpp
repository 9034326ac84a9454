// Who is in a smart group, what it notices of changes, and what it refuses.
#include "search/SmartGroupWorld.h"

#include "core/ZRFailure.h"
#include "platform/run/Log.h"
#include "platform/value/PropertyList.h"

#include <algorithm>

namespace test {

namespace {

using SmartGroups = SmartGroupWorld;

TEST_F(SmartGroups, HaveWhoeverMatches)
{
    const auto ana = card("Ana"), bo = card("Bo");
    const auto group = groupOf({"Ana", "Cy"});
    EXPECT_EQ(namesOf(group->members()), Names{"Ana"});
    EXPECT_EQ(namesOf(group->membersAndSubgroups()), Names{"Ana"});
    EXPECT_TRUE(group->_isSmartGroupParentOfRecord(*ana));
    EXPECT_FALSE(group->_isSmartGroupParentOfRecord(*bo));
}

TEST_F(SmartGroups, WithoutASearchHaveNobody)
{
    card("Ana");
    const auto empty = group("empty");
    EXPECT_FALSE(empty->searchElement());
    EXPECT_TRUE(empty->members().empty());
    EXPECT_EQ(changesOf(*empty), "as before");
}

TEST_F(SmartGroups, CanLookForGroupsAndFindThemselves)
{
    ZRGroup::initWithRoster(roster)->setValue("Friends", kZRGroupNameProperty);
    const auto group = smartGroup(roster, "Friends of friends",
        ZRGroup::searchElementForProperty({}, {}, {}, "Friends", kZRPrefixMatch));
    EXPECT_EQ(group->members().size(), 2u);
    EXPECT_TRUE(group->_isSmartGroupParentOfRecord(*group));
}

TEST_F(SmartGroups, AnswerTheSearchThatWasSet)
{
    const auto group = groupOf({"Ana"});
    EXPECT_EQ(group->searchElement()->description(), "First == Ana");
    EXPECT_EQ(group->searchElement(), group->searchElement()) << "it is read once";
    EXPECT_THROW(group->setSearchElement(nullptr), ZRInvalidArgument);
    EXPECT_EQ(group->searchElement()->description(), "First == Ana");

    // Somebody else writes the property: another process, a restore.
    const auto other = where(kZRLastNameProperty, kZREqual, "Lima")->archivedData();
    group->setValue(Value::data(*other), kZRSearchElementProperty);
    EXPECT_EQ(group->searchElement()->description(), "Last == Lima");
    group->removeValueForProperty(kZRSearchElementProperty);
    EXPECT_FALSE(group->searchElement());
}

TEST_F(SmartGroups, RefuseASearchThatNoArchiveHolds)
{
    const auto group = groupOf({"Ana"});
    const auto hopeless = where(kZRFirstNameProperty, kZREqual, Value(card("Bo")));
    EXPECT_THROW(group->setSearchElement(hopeless), ZRInvalidArgument);
    EXPECT_EQ(group->searchElement()->description(), "First == Ana");
}

// ---- what they notice

TEST_F(SmartGroups, NoticeWhoComesAndGoes)
{
    const auto ana = card("Ana"), bo = card("Bo");
    const auto group = groupOf({"Ana", "Bo", "Cy", "Di"});
    const struct {
        const char* what;
        std::function<void()> change;
        const char* expected;
    } steps[] = {
        {"nothing happens", [] {}, "as before"},
        {"one comes", [&] { card("Cy"); }, "modified, in came: Cy"},
        {"nothing happens", [] {}, "modified, in came: Cy"},
        {"one goes", [&] { bo->setValue("Not Bo", kZRFirstNameProperty); }, "modified, in came: nobody"},
        {"one comes as another goes",
            [&] {
                bo->setValue("Bo", kZRFirstNameProperty);
                ana->setValue("Not Ana", kZRFirstNameProperty);
            },
            "modified, in came: Bo"},
        {"one is deleted", [&] { roster->removeRecord(bo); }, "modified, in came: nobody"},
        {"the rule changes",
            [&] { group->setSearchElement(where(kZRFirstNameProperty, kZREqual, "Not Ana")); },
            "modified, in came: Not Ana"},
        {"the user has seen it", [&] { group->setIsModified(false); }, "as before, but with ids"},
        {"two come",
            [&] {
                card("Not Ana");
                card("Not Ana");
            },
            "modified, in came: Not Ana Not Ana"},
    };
    group->members();
    for (const auto& [what, change, expected] : steps) {
        change();
        group->_members();
        group->members();
        EXPECT_EQ(changesOf(*group), expected) << what;
    }
}

// A set of people that another handle saw last is not this handle's: the memory lives as long as the handle.
TEST_F(SmartGroups, NoticeNothingAcrossTheLivesOfAHandle)
{
    auto group = groupOf({"Ana"});
    const std::string id = group->uniqueId();
    ASSERT_TRUE(roster->save());
    group->members();
    group = nullptr;
    card("Ana");
    group = platform::refCast<ZRSmartGroup>(roster->recordForUniqueId(id));
    EXPECT_EQ(group->members().size(), 1u);
    EXPECT_EQ(changesOf(*group), "as before");
}

TEST_F(SmartGroups, ThatAreGoneStayGone)
{
    card("Ana");
    const auto group = groupOf({"Ana"});
    group->members();
    ASSERT_TRUE(roster->removeRecord(group));
    EXPECT_TRUE(group->members().empty()) << "looking at it must not bring it back";
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(roster->groups().empty());
}

TEST_F(SmartGroups, StoreIdsAsABinaryPropertyList)
{
    const auto group = groupOf({"Ana"});
    const auto ids = Value::array({"an id"});
    group->setValue(ids, kZRSmartGroupModifiedUIDsProperty);
    const Value stored = group->zrosValueForKey("modifiedUniqueIdsData");
    ASSERT_TRUE(stored.isData());
    EXPECT_EQ(platform::propertyListFormatOf(stored.asBytes()), platform::PropertyListFormat::binary);
    EXPECT_EQ(*platform::decodePropertyList(stored.asBytes()), ids);

    const platform::LogCapture log;
    group->setValue(Value::array({"\xff"}), kZRSmartGroupModifiedUIDsProperty);
    EXPECT_TRUE(log.contains("Error setting modified UIDs: "));
    EXPECT_TRUE(group->valueForProperty(kZRSmartGroupModifiedUIDsProperty).isNothing());
}

// Bits of newer versions are theirs.
TEST_F(SmartGroups, KeepTheirFlagsApart)
{
    const auto group = groupOf({"Ana"});
    group->setValue(Value(12), kZRSmartGroupFlagsProperty);
    const auto flagsWith = [&](bool tracks, bool isModified) {
        group->setTracksModification(tracks);
        group->setIsModified(isModified);
        EXPECT_EQ(group->tracksModification(), tracks);
        EXPECT_EQ(group->isModified(), isModified);
        return group->valueForProperty(kZRSmartGroupFlagsProperty).asInteger();
    };
    EXPECT_EQ(flagsWith(true, false), 12 + 2);
    EXPECT_EQ(flagsWith(true, true), 12 + 3);
    EXPECT_EQ(flagsWith(false, true), 12 + 1);
    EXPECT_EQ(flagsWith(false, false), 12);
}

// ---- what they refuse

TEST_F(SmartGroups, RefuseToBeFilledByHand)
{
    const auto ana = person(roster,
        {{kZRFirstNameProperty, "Ana"}, {kZREmailProperty, multiValue({{"a@b.c", kZREmailWorkLabel}})}});
    const auto bo = card("Bo");
    const auto group = groupOf({"Ana"});
    const auto other = ZRGroup::initWithRoster(roster);
    const std::string email(ana->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->identifierAtIndex(0));
    ASSERT_TRUE(roster->save());

    const auto choose = [&]() ZR_NTS {
        return group->nts_SetDistributionIdentifier(email, kZREmailProperty, *ana, true);
    };
    const std::pair<const char*, bool> refused[] = {
        {"add member", group->addMember(*bo)},
        {"remove member", group->removeMember(*ana)},
        {"add members", group->addMembers({bo})},
        {"remove members", group->removeMembers({ana})},
        {"add subgroup", group->addSubgroup(*other)},
        {"remove subgroup", group->removeSubgroup(*other)},
        {"add subgroups", group->addSubgroups({other})},
        {"choose an address", group->setDistributionIdentifier(email, kZREmailProperty, *ana)},
        {"choose one within the lock", locked(*roster, ZRAccess::write, choose)},
        {"publish", group->isPublishable()},
    };
    for (const auto& [what, isDone] : refused)
        EXPECT_FALSE(isDone) << what;
    EXPECT_FALSE(group->distributionIdentifierForProperty(kZREmailProperty, *ana));
    EXPECT_FALSE(roster->hasUnsavedChanges());
    EXPECT_EQ(namesOf(group->members()), Names{"Ana"});
    EXPECT_TRUE(group->subgroups().empty());
}

// ---- searches that cannot be read

TEST_F(SmartGroups, TellOfASearchThatCannotBeRead)
{
    card("Ana");
    const auto damaged = groupOf({"Ana"}), newer = group("newer"), sound = groupOf({"Ana"});
    damaged->members();
    damaged->setValue(Value::data("rubbish"), kZRSearchElementProperty);
    ZRSearchElementMatch::setEncodingVersion(10501);
    newer->setSearchElement(where(kZRFirstNameProperty, kZREqual, "Ana"));
    ZRSearchElementMatch::setEncodingVersion(1);
    newer->clearTemporaryCache();
    ASSERT_TRUE(roster->save());

    EXPECT_THROW(damaged->searchElement(), ZRUnreadableSearchElement);
    EXPECT_THROW(damaged->members(), ZRUnreadableSearchElement);
    EXPECT_THROW(newer->searchElement(), ZRIncompatibleSearchElementVersionException);
    EXPECT_THROW(newer->members(), ZRIncompatibleSearchElementVersionException);
    EXPECT_FALSE(roster->hasUnsavedChanges()) << "nobody left the group: its members are not known";

    EXPECT_FALSE(sound->isModified()) << "nor does it keep the others from being looked after";
}

// ---- dictionaries

TEST_F(SmartGroups, GoThroughDictionaries)
{
    card("Ana");
    const auto group = groupOf({"Ana"});
    group->setTracksModification(true);
    group->setValue(Value::array({"an id"}), kZRSmartGroupModifiedUIDsProperty);
    const Value dictionary = group->dictionaryRepresentation();
    EXPECT_EQ(dictionary.asDictionary()->count(), 5u) << dictionary.description();
    EXPECT_EQ(dictionary[kZRGroupClassKey], Value("ZRSmartGroup"));

    const auto elsewhere = ZRRoster::emptyMemoryBackedRoster();
    const auto copy = locked(*elsewhere, ZRAccess::write, [&]() ZR_NTS {
        return platform::refCast<ZRSmartGroup>(
            ZRSmartGroup::nts_RecordFromDictionaryRepresentation(dictionary, Value(), *elsewhere, false));
    });
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->dictionaryRepresentation(), dictionary);
    EXPECT_TRUE(copy->valueForProperty(kZRSmartGroupModifiedUIDsProperty).isNothing());
    EXPECT_TRUE(copy->members().empty());
    person(elsewhere, {{kZRFirstNameProperty, "Ana"}});
    EXPECT_EQ(copy->members().size(), 1u);

    const Value bare = SmartGroupWorld::group("bare")->dictionaryRepresentation();
    EXPECT_EQ(bare.asDictionary()->count(), 3u) << bare.description();
}

// What dictionaries of other makers hold beside is not taken, but for whoever brings back whole records.
TEST_F(SmartGroups, TakeFromADictionaryWhatIsTheirs)
{
    const Value dictionary = Value::dictionary({{std::string(kZRGroupNameProperty), "New"},
        {std::string(kZRSmartGroupModifiedUIDsProperty), Value::array({"an id"})},
        {std::string(kZRMembersDictionaryKey), Value::array({"a member"})},
        {std::string(kZRCreationDateProperty), Value(platform::Date{1000})}});
    const auto made = locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        return ZRSmartGroup::nts_RecordFromDictionaryRepresentation(dictionary, Value(), *roster, false);
    });
    ASSERT_TRUE(made);
    EXPECT_EQ(made->valueForProperty(kZRGroupNameProperty), Value("New"));
    EXPECT_TRUE(made->valueForProperty(kZRSmartGroupModifiedUIDsProperty).isNothing());
    EXPECT_NE(made->valueForProperty(kZRCreationDateProperty), Value(platform::Date{1000}));

    const auto whole =
        ZRRecord::initWithDictionaryRepresentation(ZRSmartGroup::recordClassDescription, dictionary, roster);
    EXPECT_EQ(whole->valueForProperty(kZRSmartGroupModifiedUIDsProperty), Value::array({"an id"}));
    EXPECT_EQ(whole->valueForProperty(kZRCreationDateProperty), Value(platform::Date{1000}));
}

TEST_F(SmartGroups, OfTheSharedRosterAreListed)
{
    const auto shared = ZRRoster::sharedRoster();
    const auto group = smartGroup(shared, "shared");
    const auto listed = ZRSmartGroup::smartGroups();
    EXPECT_EQ(std::ranges::count(listed, Ref<ZRRecord>(group)), 1);
    EXPECT_EQ(ZRSmartGroup::init()->roster(), shared);
    shared->resetDatabase();
}

} // namespace

} // namespace test
