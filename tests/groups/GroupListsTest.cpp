// Members and subgroups by the list: what is refused, what is raised, and what a deleted group leaves behind.
#include "groups/GroupWorld.h"

#include "core/ZRAllGroup.h"
#include "core/ZRFailure.h"
#include "objectstore/StoreContext.h"
#include "store/ZROSRecord.h"

#include <thread>

namespace test {

namespace {

class GroupLists : public GroupTest {
protected:
    const Ref<ZRGroup> friends = group(roster, "friends");
    const Ref<ZRPerson> ana = named(roster, "Ana"), bo = named(roster, "Bo"), cy = named(roster, "Cy");
};

} // namespace

TEST_F(GroupLists, TakeAllButTheRefused)
{
    const auto elsewhere = ZRRoster::emptyMemoryBackedRoster();
    const auto stranger = named(elsewhere, "Stranger");
    EXPECT_FALSE(friends->addMembers({ana, stranger, bo}));
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Ana", "Bo"));
    EXPECT_TRUE(friends->addMembers({bo, cy})) << "a member already is no reason to refuse";
    ASSERT_TRUE(roster->save());
    EXPECT_FALSE(friends->removeMembers({ana, stranger, cy}));
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Bo"));
    EXPECT_FALSE(friends->addMember(*stranger));
}

TEST_F(GroupLists, RaiseBeforeAnythingIsChanged)
{
    friends->addMember(*cy);
    const auto other = group(roster, "other");
    for (const auto& wrong : {Ref<ZRRecord>(other), Ref<ZRRecord>()}) {
        EXPECT_THROW(friends->addMembers({ana, wrong, bo}), ZRInvalidArgument);
        EXPECT_THROW(friends->removeMembers({cy, wrong}), ZRInvalidArgument);
    }
    for (const auto& wrong : {Ref<ZRRecord>(ana), Ref<ZRRecord>()})
        EXPECT_THROW(friends->addSubgroups({other, wrong}), ZRInvalidArgument);
    EXPECT_THAT(namesOf(friends->membersAndSubgroups()), ElementsAre("Cy"));
}

TEST_F(GroupLists, OfSubgroupsAddAllButCircles)
{
    const auto one = group(roster, "one"), two = group(roster, "two");
    EXPECT_FALSE(friends->addSubgroups({one, friends, two}));
    EXPECT_THAT(namesOf(friends->subgroups()), ElementsAre("one", "two"));
    EXPECT_TRUE(friends->removeSubgroups({ana, one, Ref<ZRRecord>()})) << "what is no group is passed over";
    EXPECT_THAT(namesOf(friends->subgroups()), ElementsAre("two"));
}

TEST_F(GroupLists, AcceptSomebodyWhoIsInNoRoster)
{
    roster->removeRecord(bo);
    EXPECT_TRUE(friends->addMember(*bo));
    EXPECT_TRUE(friends->addMembers({ana, bo}));
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Ana"));
}

TEST_F(GroupLists, AreRefusedByAGroupThatIsGone)
{
    roster->removeRecord(friends);
    EXPECT_FALSE(friends->addMember(*ana));
    EXPECT_FALSE(friends->addSubgroup(*group(roster, "other")));
    EXPECT_THAT(friends->membersAndSubgroups(), IsEmpty());
    EXPECT_TRUE(ana->parentGroups().empty());
}

TEST_F(GroupLists, SurviveTheirGroup)
{
    const auto above = group(roster, "above"), beside = group(roster, "beside"),
               below = group(roster, "below");
    friends->addMembers({ana, bo});
    beside->addMember(*ana);
    above->addSubgroup(*friends);
    friends->addSubgroup(*below);
    below->addMember(*cy);
    const auto ben = named(roster, "Ben", {"one@example.com", "two@example.com"});
    friends->addMember(*ben);
    ASSERT_TRUE(friends->setDistributionIdentifier(emailIdentifier(*ben, 1), kZREmailProperty, *ben));
    ASSERT_TRUE(roster->save());
    for (const bool isSaved : {false, true}) {
        if (!isSaved)
            ASSERT_TRUE(roster->removeRecord(friends));
        else
            ASSERT_TRUE(roster->save());
        EXPECT_THAT(namesOf(roster->people()), ElementsAre("Ana", "Ben", "Bo", "Cy"));
        EXPECT_THAT(namesOf(roster->groups()), ElementsAre("above", "below", "beside"));
        EXPECT_THAT(above->subgroups(), IsEmpty());
        EXPECT_THAT(below->parentGroups(), IsEmpty());
        EXPECT_THAT(namesOf(ana->parentGroups()), ElementsAre("beside"));
        EXPECT_THAT(namesOf(below->members()), ElementsAre("Cy"));
    }
    EXPECT_THAT(rows("ZROSDistributionListConfig"), IsEmpty());
}

TEST_F(GroupLists, LoseAPersonThatIsDeleted)
{
    friends->addMembers({ana, bo});
    ASSERT_TRUE(roster->save());
    roster->removeRecord(ana);
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Bo"));
    ASSERT_TRUE(roster->save());
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Bo"));
}

// The lock is taken for each element: another thread sees half of a list done, but never loses who was in.
TEST_F(GroupLists, ShowHalfOfAListButLoseNobody)
{
    constexpr std::size_t count = 300;
    friends->addMember(*ana);
    ZRRecordList many;
    for (std::size_t i = 0; i < count; ++i)
        many.push_back(named(roster, "m"));
    std::thread adding([&] { EXPECT_TRUE(friends->addMembers(many)); });
    std::size_t before = 1;
    while (before < count + 1) {
        const auto seen = friends->members();
        ASSERT_GE(seen.size(), before);
        ASSERT_TRUE(std::ranges::find(seen, ana.get(), &Ref<ZRRecord>::get) != seen.end());
        before = seen.size();
    }
    adding.join();
    EXPECT_TRUE(friends->removeMembers(many));
    EXPECT_THAT(namesOf(friends->members()), ElementsAre("Ana"));
}

// A group that came from somebody else is not published again, and is as writable as its source.
TEST_F(GroupLists, OfSubscribedGroupsBelongToOthers)
{
    EXPECT_TRUE(friends->isPublishable());
    EXPECT_FALSE(friends->isReadOnly());
    ASSERT_TRUE(friends->setValue(multiValue({{"there", kZRPublishLabel}}), kZRRemoteLocationProperty));
    EXPECT_TRUE(friends->isPublishable());
    ASSERT_TRUE(friends->setValue(multiValue({{"there", kZRSubscribeLabel}}), kZRRemoteLocationProperty));
    EXPECT_FALSE(friends->isPublishable());
    const std::string before = textOf(friends->valueForProperty(kZRRemoteLocationProperty));
    ASSERT_TRUE(roster->save());
    friends->zrDatabaseImpl()->context()->refreshObject(*friends->zrDatabaseImpl(), false);
    EXPECT_FALSE(friends->isPublishable());
    EXPECT_EQ(friends->remoteLocation(), "there");
    EXPECT_EQ(textOf(friends->valueForProperty(kZRRemoteLocationProperty)), before);
    EXPECT_FALSE(friends->setValue("no multi-value", kZRReadSharingACLProperty));
    EXPECT_TRUE(friends->removeValueForProperty(kZRRemoteLocationProperty));
    EXPECT_TRUE(friends->isPublishable());
}

/// Whether groups that came from somewhere may be written, as the info record grants it to somebody or
/// nobody.
const Role writes("ask who may write", [](const Words&) {
    const auto roster = openShared();
    const auto friends = group(roster, "friends");
    std::string told = friends->isReadOnly() ? "yes" : "no";
    friends->setValue(multiValue({{"there", kZRSubscribeLabel}}), kZRRemoteLocationProperty);
    told += friends->isReadOnly() ? " yes" : " no";
    ZRAllGroup::allGroup()->setValue(multiValue({{"ana", "l"}}), kZRReadWriteSharingACLProperty);
    told += friends->isReadOnly() ? " yes" : " no";
    const auto other = group(ZRRoster::emptyMemoryBackedRoster(), "other");
    ZRRoster::setIsInert(true);
    for (const bool ignoresInert : {false, true})
        told += other->isReadOnlyIgnoresInert(ignoresInert) ? " yes" : " no";
    return told;
});

TEST(SubscribedGroups, AreReadOnlyWhereNobodyMayWrite)
{
    const Home home;
    const Outcome outcome = home.play("ask who may write");
    EXPECT_EQ(outcome.answer, "no yes no yes no") << outcome.log;
}

} // namespace test
