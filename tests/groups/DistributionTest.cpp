// Which entry of a member a group uses: the default, a choice, and what becomes of a choice.
#include "groups/GroupWorld.h"

#include "core/ZRFailure.h"
#include "objectstore/StoreContext.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "support/SQL.h"

namespace test {

namespace {

class Distribution : public GroupTest {
protected:
    Distribution() { friends->addMember(*ana); }

    std::string chosen() const
    {
        return std::string(friends->distributionValueForProperty(kZREmailProperty, *ana).asText());
    }
    bool choose(ZRIndex index) const
    {
        return friends->setDistributionIdentifier(emailIdentifier(*ana, index), kZREmailProperty, *ana);
    }
    Ref<ZRMutableMultiValue> emails() const
    {
        return ana->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->mutableCopy();
    }

    const Ref<ZRGroup> friends = group(roster, "friends");
    const Ref<ZRPerson> ana = named(roster, "Ana", {"a@x", "b@x", "c@x"});
};

} // namespace

TEST_F(Distribution, FollowsThePrimaryEntryUntilOneIsChosen)
{
    EXPECT_EQ(chosen(), "a@x");
    const auto edited = emails();
    edited->setPrimaryIdentifier(edited->identifierAtIndex(2));
    ana->setValue(Value(edited), kZREmailProperty);
    EXPECT_EQ(chosen(), "c@x");
    EXPECT_EQ(friends->distributionIndexForProperty(kZREmailProperty, *ana), 2);
    ASSERT_TRUE(choose(1));
    EXPECT_EQ(chosen(), "b@x");
    ASSERT_TRUE(choose(0));
    EXPECT_EQ(chosen(), "a@x");
    EXPECT_EQ(rows("ZROSDistributionListConfig").size(), 1U) << "a choice is changed, not added to";
}

TEST_F(Distribution, IsEachGroupsOwnAndEachPropertys)
{
    const auto family = group(roster, "family");
    family->addMember(*ana);
    ana->setValue(multiValue({{"1", kZRHomeLabel}, {"2", kZRHomeLabel}}), kZRPhoneProperty);
    ana->setValue(multiValue({{Value::dictionary({{"City", "Oslo"}}), kZRHomeLabel},
                      {Value::dictionary({{"City", "Rome"}}), kZRHomeLabel}}),
        kZRAddressProperty);
    const auto second = [&](std::string_view property) {
        return ana->valueForProperty(property).as<ZRMultiValue>()->identifierAtIndex(1);
    };
    ASSERT_TRUE(choose(2));
    for (const std::string_view property : {kZRPhoneProperty, kZRAddressProperty})
        ASSERT_TRUE(family->setDistributionIdentifier(second(property), property, *ana));
    EXPECT_EQ(family->distributionValueForProperty(kZREmailProperty, *ana), Value("a@x"));
    EXPECT_EQ(family->distributionValueForProperty(kZRPhoneProperty, *ana), Value("2"));
    EXPECT_EQ(family->distributionValueForProperty(kZRAddressProperty, *ana)["City"], Value("Rome"));
    EXPECT_EQ(friends->distributionValueForProperty(kZRPhoneProperty, *ana), Value("1"));
}

TEST_F(Distribution, IsRefusedWhereThereIsNothingToChoose)
{
    ana->setValue(multiValue({{"http://x", kZRHomeLabel}}), kZRURLsProperty);
    const std::string url = ana->valueForProperty(kZRURLsProperty).as<ZRMultiValue>()->identifierAtIndex(0);
    ASSERT_TRUE(roster->save());
    EXPECT_FALSE(friends->setDistributionIdentifier("no such entry", kZREmailProperty, *ana));
    EXPECT_FALSE(friends->setDistributionIdentifier(std::nullopt, kZREmailProperty, *ana));
    EXPECT_FALSE(friends->setDistributionIdentifier(url, kZREmailProperty, *ana)) << "of another property";
    EXPECT_FALSE(friends->setDistributionIdentifier(url, kZRURLsProperty, *ana))
        << "groups keep none of those";
    EXPECT_FALSE(roster->hasUnsavedChanges());
    EXPECT_EQ(friends->distributionValueForProperty(kZRURLsProperty, *ana), Value("http://x"));
    for (const std::string_view single : {kZRFirstNameProperty, "Unknown"}) {
        EXPECT_THROW(friends->setDistributionIdentifier("x", single, *ana), ZRInvalidArgument) << single;
        EXPECT_THROW(friends->distributionIdentifierForProperty(single, *ana), ZRInvalidArgument) << single;
    }
    EXPECT_EQ(friends->distributionIndexForProperty(kZRPhoneProperty, *ana), kZRNotFound);
    EXPECT_TRUE(friends->distributionValueForProperty(kZRPhoneProperty, *ana).isAbsent());
}

TEST_F(Distribution, MarksTheGroupAsChanged)
{
    ASSERT_TRUE(roster->save());
    friends->setValue(Value(platform::Date{1}), kZRModificationDateProperty);
    ASSERT_TRUE(choose(1));
    EXPECT_GT(friends->valueForProperty(kZRModificationDateProperty).asDate().seconds, 1);
}

// An edit makes all rows of a multi-value anew: a choice belongs to the entry and not to its row.
TEST_F(Distribution, SurvivesEditsOfTheEntry)
{
    ASSERT_TRUE(choose(1));
    for (const bool isSaved : {false, true}) {
        const auto edited = emails();
        const ZRIndex at =
            edited->indexForIdentifier(*friends->distributionIdentifierForProperty(kZREmailProperty, *ana));
        edited->replaceValueAtIndex(at, "new@x");
        edited->replaceLabelAtIndex(at, "Own label");
        edited->_moveContentsAt(at, at == 0 ? 2 : 0);
        ana->setValue(Value(edited), kZREmailProperty);
        EXPECT_EQ(chosen(), "new@x");
        ASSERT_TRUE(roster->save());
        EXPECT_EQ(chosen(), "new@x") << isSaved;
    }
    EXPECT_EQ(rows("ZROSDistributionListConfig").size(), 1U);
}

TEST_F(Distribution, DiesWithTheEntry)
{
    const struct {
        const char* what;
        std::function<void()> remove;
        std::string left;
    } cases[] = {
        {"the entry is removed",
            [&] {
                const auto edited = emails();
                edited->removeValueAndLabelAtIndex(1);
                ana->setValue(Value(edited), kZREmailProperty);
            },
            "a@x"},
        {"the entry is emptied, and pruned at the save",
            [&] {
                const auto edited = emails();
                edited->replaceValueAtIndex(1, "");
                ana->setValue(Value(edited), kZREmailProperty);
            },
            "a@x"},
        {"the property is removed", [&] { ana->removeValueForProperty(kZREmailProperty); }, ""},
    };
    for (const auto& [what, remove, left] : cases) {
        ana->setValue(multiValue({{"a@x", "l"}, {"b@x", "l"}, {"c@x", "l"}}), kZREmailProperty);
        ASSERT_TRUE(choose(1)) << what;
        ASSERT_TRUE(roster->save()) << what;
        ASSERT_EQ(rows("ZROSDistributionListConfig").size(), 1U) << what;
        remove();
        ASSERT_TRUE(roster->save()) << what;
        EXPECT_EQ(chosen(), left) << what;
        EXPECT_THAT(rows("ZROSDistributionListConfig"), IsEmpty()) << what;
    }
}

TEST_F(Distribution, MakesOneStringForEachMemberWithAnAddress)
{
    const auto below = group(roster, "below");
    friends->addSubgroup(*below);
    below->addMembers({ana, named(roster, "Bo", {"bo@x"}), named(roster, "Nobody")});
    below->addMember(
        *person(roster, {{kZRNicknameProperty, ""}, {kZREmailProperty, multiValue({{"bare@x", "l"}})}}));
    ASSERT_TRUE(choose(2));
    EXPECT_THAT(friends->distributionStringsForMembers(),
        UnorderedElementsAre("Ana <c@x>", "Ana <a@x>", "Bo <bo@x>", "bare@x"));
}

// ---- across processes

namespace {

struct Stored {
    Ref<ZRRoster> roster = openShared();
    Ref<ZRGroup> friends;
    Ref<ZRPerson> ana;

    explicit Stored(bool makes = false)
    {
        if (makes) {
            friends = group(roster, "friends");
            ana = named(roster, "Ana", {"a@x", "b@x", "c@x"});
            friends->addMember(*ana);
            friends->setDistributionIdentifier(emailIdentifier(*ana, 1), kZREmailProperty, *ana);
            roster->save();
        } else {
            friends = platform::refCast<ZRGroup>(roster->groups().at(0));
            ana = platform::refCast<ZRPerson>(friends->members().at(0));
        }
    }
    std::string chosen() const
    {
        return std::string(friends->distributionValueForProperty(kZREmailProperty, *ana).asText());
    }
    void edit(ZRIndex index, std::string_view address) const
    {
        const auto edited = ana->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->mutableCopy();
        if (address.empty())
            edited->removeValueAndLabelAtIndex(index);
        else
            edited->replaceValueAtIndex(index, Value(address));
        ana->setValue(Value(edited), kZREmailProperty);
    }
};

const Role edits("edit the address at, to", [](const Words& words) {
    const Stored stored;
    stored.edit(std::stoi(words.at(0)), words.at(1));
    return std::string(stored.roster->save() ? "saved" : "not saved");
});

const Role makes("make a choice", [](const Words&) { return Stored(true).chosen(); });

const Role tells("tell what is chosen", [](const Words&) { return Stored().chosen(); });

/// Another process edits and saves, with or without an edit or a choice here that is not saved yet; then this
/// one saves.
const Role shares("choose, and be edited elsewhere", [](const Words& words) {
    // The other's edit is seen by versions at the next look, without being told.
    platform::DistributedNotificationCenter::install(nullptr);
    const Stored stored(true);
    if (words.at(2) == "choose")
        stored.friends->setDistributionIdentifier(
            emailIdentifier(*stored.ana, std::stoi(words.at(3))), kZREmailProperty, *stored.ana);
    else if (!words.at(2).empty())
        stored.edit(std::stoi(words.at(2)), words.at(3));
    if (play("edit the address at, to", {words.at(0), words.at(1)}).answer != "saved")
        return std::string("the other did not save");
    const std::string before = stored.roster->save() ? "" : "not saved ";
    stored.roster->groups();
    const auto problems = stored.roster->check().problems;
    return before + stored.chosen() + ", elsewhere " + play("tell what is chosen").answer
        + (problems.empty() ? "" : ", " + problems.front());
});

} // namespace

TEST(DistributionInProcesses, SurvivesWhatOthersEdit)
{
    const struct {
        const char* what;
        Words words;
        const char* expected;
    } cases[] = {
        {"the chosen entry", {"1", "new@x", "", ""}, "new@x, elsewhere new@x"},
        {"another entry", {"0", "new@x", "", ""}, "b@x, elsewhere b@x"},
        {"the chosen entry is removed", {"1", "", "", ""}, "a@x, elsewhere a@x"},
        {"both edit another entry than the chosen one", {"0", "new@x", "2", "mine@x"}, "b@x, elsewhere b@x"},
        {"the other edits the chosen one, this one another", {"1", "new@x", "2", "mine@x"},
            "new@x, elsewhere new@x"},
        {"the other edits what this one chooses", {"2", "new@x", "choose", "2"}, "new@x, elsewhere new@x"},
        {"the other removes what this one chooses", {"2", "", "choose", "2"}, "a@x, elsewhere a@x"},
        {"the other removes the choice that this one changes", {"1", "", "choose", "2"},
            "a@x, elsewhere a@x"},
        {"this one edits the chosen one, the other another", {"0", "new@x", "1", "mine@x"},
            "mine@x, elsewhere mine@x"},
    };
    for (const auto& [what, words, expected] : cases) {
        const Home home;
        const Outcome outcome = home.play("choose, and be edited elsewhere", words);
        EXPECT_EQ(outcome.answer, expected) << what << "\n" << outcome.log;
    }
}

// A store that lost a row, as no process of ours leaves it.
TEST(DistributionInProcesses, TellsOfAnEntryThatIsNotThere)
{
    const Home home;
    ASSERT_EQ(home.play("make a choice").answer, "b@x");
    runSQL(home.storeFile(), "DELETE FROM email_address WHERE address = 'b@x'");
    const Outcome outcome = home.play("tell what is chosen");
    EXPECT_EQ(outcome.answer, "");
    EXPECT_THAT(outcome.log,
        testing::HasSubstr("The group 'friends' has a corrupt distribution list entry for Ana."));
}

} // namespace test
