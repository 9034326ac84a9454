// A group as a dictionary, and what becomes of one that is read.
#include "groups/GroupWorld.h"

#include "platform/run/Log.h"

namespace test {

namespace {

class GroupDictionaries : public GroupTest {
protected:
    /// `friends` with two members, of whom Ana has a choice, and a subgroup.
    Ref<ZRGroup> friends()
    {
        auto made = group(roster, "friends");
        made->addMembers({ana, bo});
        made->addSubgroup(*below);
        EXPECT_TRUE(made->setDistributionIdentifier(emailIdentifier(*ana, 1), kZREmailProperty, *ana));
        return made;
    }

    const Ref<ZRPerson> ana = named(roster, "Ana", {"a@x", "b@x"}), bo = named(roster, "Bo", {"bo@x"});
    const Ref<ZRGroup> below = group(roster, "below");
};

std::vector<std::string> textsOf(const Value& array)
{
    std::vector<std::string> texts;
    for (const Value& text : array.asArray())
        texts.emplace_back(text.asText());
    return texts;
}

} // namespace

TEST_F(GroupDictionaries, NameMembersChoicesAndSubgroups)
{
    const auto whole = friends();
    for (const bool isSaved : {false, true}) {
        const Value dictionary = whole->dictionaryRepresentation();
        EXPECT_EQ(dictionary["UID"], Value(whole->uniqueId()));
        EXPECT_EQ(dictionary["ZRGroupClass"], Value("ZRGroup"));
        EXPECT_EQ(dictionary["GroupName"], Value("friends"));
        EXPECT_THAT(
            textsOf(dictionary["ZRGroupMembers"]), UnorderedElementsAre(ana->uniqueId(), bo->uniqueId()));
        EXPECT_THAT(textsOf(dictionary["ZRGroupSubgroups"]), ElementsAre(below->uniqueId()));
        EXPECT_EQ(textOf(dictionary["ZREmailDistributionList"]),
            textOf(Value::dictionary({{ana->uniqueId(), Value(emailIdentifier(*ana, 1))}})));
        EXPECT_EQ(textOf(dictionary["ZRPhoneDistributionList"]), "{}");
        ASSERT_TRUE(roster->save()) << isSaved;
    }
    const Value bare = ZRGroup::initWithRoster(roster)->dictionaryRepresentation();
    EXPECT_EQ(bare.asDictionary()->count(), 2U) << "id and class; nothing of what it does not have";
}

TEST_F(GroupDictionaries, ComeBackAsGroups)
{
    const auto original = friends();
    const Value dictionary = original->dictionaryRepresentation();
    ASSERT_TRUE(roster->save());
    roster->removeRecord(original);
    ASSERT_TRUE(roster->save());
    const auto again = ZRGroup::addGroupFromDictionary(dictionary, roster);
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(again->name(), "friends");
    EXPECT_EQ(textOf(again->dictionaryRepresentation()), textOf(dictionary));
    EXPECT_EQ(again->distributionValueForProperty(kZREmailProperty, *ana), Value("b@x"));
    EXPECT_EQ(roster->typeOfProperty("ZRGroupMembers", "ZRGroup"), 0) << "no property is declared for it";
}

TEST_F(GroupDictionaries, AreReadWithTheIdsOfAPaste)
{
    const Value dictionary = friends()->dictionaryRepresentation();
    const auto newAna = named(roster, "New Ana", {"a@x", "b@x"}), newBo = named(roster, "New Bo");
    const Value mapping = Value::dictionary(
        {{ana->uniqueId(), Value(newAna->uniqueId())}, {bo->uniqueId(), Value("found only in the batch")}});
    const auto pasted = group(roster, "pasted");
    locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        pasted->nts_AddMembersAndSubgroupsFromDictionaryRepresentation(
            dictionary, mapping, {{"found only in the batch", newBo}});
    });
    EXPECT_THAT(namesOf(pasted->membersAndSubgroups()), ElementsAre("New Ana", "New Bo", "below"));
    EXPECT_EQ(pasted->distributionValueForProperty(kZREmailProperty, *newAna), Value("a@x"))
        << "its entries have identifiers of their own";
}

TEST_F(GroupDictionaries, LeaveOutWhatTheRosterDoesNotHave)
{
    const std::string person = "00000000-0000-0000-0000-000000000001:ZRPerson",
                      absent = "00000000-0000-0000-0000-000000000002:ZRGroup";
    const Value dictionary = Value::dictionary({{"GroupName", "some"},
        {"ZRGroupMembers",
            Value::array(
                {Value(person), Value(below->uniqueId()), Value("?"), Value(7), Value(ana->uniqueId())})},
        {"ZRGroupSubgroups",
            Value::array({Value(absent), Value(bo->uniqueId()), Value(below->uniqueId())})}});
    platform::LogCapture log;
    const auto some = ZRGroup::addGroupFromDictionary(dictionary, roster);
    EXPECT_THAT(namesOf(some->membersAndSubgroups()), ElementsAre("Ana", "below"));
    for (const auto& id : {person, below->uniqueId(), std::string("?")})
        EXPECT_TRUE(log.contains("Could not find member with uid: " + id)) << id;
    for (const auto& id : {absent, bo->uniqueId()})
        EXPECT_TRUE(log.contains("Could not find subgroup with uid: " + id)) << id;
}

// An import looks for no choice that is there: it is meant for groups that are new.
TEST_F(GroupDictionaries, MakeChoicesWithoutLookingForOldOnes)
{
    const auto whole = friends();
    ASSERT_TRUE(roster->save());
    const Value dictionary = whole->dictionaryRepresentation();
    locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        whole->nts_AddMembersAndSubgroupsFromDictionaryRepresentation(dictionary, Value(), {});
    });
    EXPECT_EQ(rows("ZROSDistributionListConfig").size(), 2U);
    EXPECT_EQ(whole->distributionValueForProperty(kZREmailProperty, *ana), Value("b@x"));
    EXPECT_THAT(namesOf(whole->membersAndSubgroups()), ElementsAre("Ana", "Bo", "below"));
}

} // namespace test
