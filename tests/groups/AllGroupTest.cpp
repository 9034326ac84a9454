// The group of everybody: its members are the roster's records, and what it says of sharing is kept
// elsewhere.
#include "groups/GroupWorld.h"

#include "core/ZRAllGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRPrivateRecords.h"
#include "core/ZRUniqueId.h"
#include "store/ZRServices.h"

namespace test {

namespace {

class AllGroup : public GroupTest {
protected:
    const Ref<ZRAllGroup> all = ZRAllGroup::specialGroupForRoster(roster);
};

} // namespace

TEST_F(AllGroup, HasWhoIsInTheRoster)
{
    const auto ana = named(roster, "Ana");
    const auto friends = group(roster, "friends");
    EXPECT_THAT(namesOf(all->members()), ElementsAre("Ana"));
    EXPECT_THAT(namesOf(all->subgroups()), ElementsAre("friends"));
    EXPECT_THAT(namesOf(all->membersAndSubgroups()), ElementsAre("Ana", "friends"));
    EXPECT_TRUE(all->recursiveContainsGroup(*friends));
    EXPECT_EQ(all->name(), "All Contacts");
    EXPECT_EQ(all->remoteLocation(), "local");
}

TEST_F(AllGroup, AddsToTheRosterAndDeletesFromIt)
{
    const auto elsewhere = ZRRoster::emptyMemoryBackedRoster();
    const auto ana = named(elsewhere, "Ana");
    const auto friends = group(elsewhere, "friends");
    EXPECT_TRUE(all->addMembers({ana}));
    EXPECT_TRUE(all->addSubgroup(*friends));
    EXPECT_THAT(namesOf(roster->people()), ElementsAre("Ana"));
    EXPECT_THAT(namesOf(roster->groups()), ElementsAre("friends"));
    EXPECT_TRUE(all->removeMember(*ana));
    EXPECT_TRUE(all->removeSubgroup(*friends));
    EXPECT_FALSE(all->removeMember(*ana)) << "it is gone";
    EXPECT_THAT(roster->people(), IsEmpty());
    EXPECT_THAT(roster->groups(), IsEmpty());
}

TEST_F(AllGroup, IsNoRecordOfTheRoster)
{
    EXPECT_TRUE(all->isSpecialGroup());
    EXPECT_FALSE(group(roster, "friends")->isSpecialGroup());
    EXPECT_EQ(zrTableOfUniqueId(all->uniqueId()), "ZRGroup");
    EXPECT_EQ(all->_table(), "ZRGroup");
    EXPECT_EQ(roster->recordForUniqueId(all->uniqueId()), Ref<ZRRecord>(all));
    EXPECT_FALSE(roster->addRecord(all));
    EXPECT_FALSE(roster->removeRecord(all));
    EXPECT_FALSE(all->setValue("other", kZRGroupNameProperty));
    EXPECT_FALSE(group(roster, "top")->addSubgroup(*all));
    EXPECT_TRUE(all->doesPropertyExist(kZRGroupNameProperty));
    EXPECT_FALSE(all->doesPropertyExist(kZRFirstNameProperty));
    EXPECT_TRUE(all->valueForProperty(kZRCreationDateProperty).isAbsent());
    EXPECT_EQ(roster->groups().size(), 2U);
    const auto ana = named(roster, "Ana", {"a@x", "b@x"});
    EXPECT_FALSE(all->setDistributionIdentifier(emailIdentifier(*ana, 1), kZREmailProperty, *ana));
    EXPECT_EQ(all->distributionValueForProperty(kZREmailProperty, *ana), Value("a@x"));
    EXPECT_EQ(ZRSpecialGroup::initWithUniqueId("x:ZRGroup", roster)->uniqueId(), "x:ZRGroup");
}

TEST_F(AllGroup, KeepsWhatIsSaidOfSharingInTheInfoRecord)
{
    for (const std::string_view property :
        {kZRRemoteLocationProperty, kZRReadWriteSharingACLProperty, kZRReadSharingACLProperty}) {
        const Value value = multiValue({{"ana", kZRPublishLabel}});
        EXPECT_TRUE(all->setValue(value, property));
        const auto info = locked(*roster, ZRAccess::read, [&]() ZR_NTS { return roster->nts_Info(); });
        EXPECT_EQ(textOf(info->valueForProperty(property)), textOf(value)) << property;
        EXPECT_EQ(textOf(all->valueForProperty(property)), textOf(value)) << property;
        EXPECT_TRUE(all->removeValueforProperty(property));
        EXPECT_TRUE(info->valueForProperty(property).isAbsent()) << property;
    }
}

namespace {

/// What the group at "there" says, without and with a subscription to that location.
const Role tells("tell of the group at a location", [](const Words&) {
    const auto roster = openShared();
    const auto everybody = ZRAllGroup::allGroupForRemoteLocation("there");
    const auto tell = [&] {
        return "\"" + everybody->name() + "\" "
            + textOf(everybody->valueForProperty(kZRReadWriteSharingACLProperty)) + "; ";
    };
    const auto ana = named(roster, "Ana");
    std::string told = std::to_string(everybody->membersAndSubgroups().size()) + " ";
    ZRServices::registered().peopleAtRemoteLocation = [&](ZRRoster&, const std::string& location) {
        return location == "there" ? ZRRecordList{ana} : ZRRecordList();
    };
    told += std::to_string(everybody->membersAndSubgroups().size()) + " " + everybody->remoteLocation() + " "
        + tell();
    const auto subscription =
        ZRRecord::initWithUniqueId(ZRSubscription::recordClassDescription, std::nullopt, roster);
    subscription->setValue("Ana's people", "displayName");
    ZRServices::registered().findSubscription = [&](ZRRoster&, const std::string& location) {
        return location == "there" ? subscription : nullptr;
    };
    told += tell();
    everybody->setValue(multiValue({{"ana", "l"}}), kZRReadWriteSharingACLProperty);
    const Value writers = subscription->valueForProperty(kZRReadWriteSharingACLProperty);
    told += std::to_string(writers.as<ZRMultiValue>()->count());
    told += ZRAllGroup::allGroupForRemoteLocation("there") == everybody ? ", one" : ", another";
    told += ZRAllGroup::allGroup() == ZRAllGroup::specialGroupForRoster(roster) ? ", one" : ", another";
    return told;
});

} // namespace

TEST(AllGroupOfALocation, TakesItsFactsFromTheSubscription)
{
    const Home home;
    const Outcome outcome = home.play("tell of the group at a location");
    EXPECT_EQ(outcome.answer, "0 1 there \"\" absent; \"Ana's people\" absent; 1, one, one") << outcome.log;
}

} // namespace test
