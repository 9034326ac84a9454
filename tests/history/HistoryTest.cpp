// What a step is, which records stand in the way of taking it back, and how much is kept.
#include "history/ZRHistory.h"

#include "groups/GroupWorld.h"
#include "history/ZRHistoryStep.h"
#include "store/RosterSnapshot.h"

#include <functional>

namespace {

using namespace test;
using Status = ZRHistoryOutcome::Status;

class HistoryTest : public testing::Test {
protected:
    Ref<ZRPerson> add(std::string_view name) { return named(roster, name, {"a@b.example"}); }
    Ref<ZRPerson> card(std::string_view id)
    {
        return platform::refCast<ZRPerson>(roster->recordForUniqueId(id));
    }
    /// What `edit` changes is one step.
    void step(const std::function<void()>& edit, std::string title = "a step")
    {
        const ZRHistoryStep step(*roster, std::move(title));
        edit();
        ASSERT_TRUE(roster->save());
    }
    /// As a program does that keeps no history.
    void unnoted(const std::function<void()>& edit)
    {
        edit();
        ASSERT_TRUE(roster->save());
    }
    Status undo() { return told(history.undo()); }
    Status redo() { return told(history.redo()); }
    /// The status; why it failed is told.
    static Status told(const ZRHistoryOutcome& outcome)
    {
        EXPECT_EQ(outcome.error.text, "");
        return outcome.status;
    }
    std::size_t countOfSteps() { return history.steps()->size(); }
    void expectState(const Snapshot& expected) { EXPECT_EQ(differenceOf(expected, snapshotOf(roster)), ""); }

    Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    ZRHistory history{*roster};
};

TEST_F(HistoryTest, TakesAllSavesOfAStepBackAtOnce)
{
    unnoted([&] { add("Before"); });
    const Snapshot before = snapshotOf(roster);
    step([&] {
        const auto ana = add("Ana");
        ASSERT_TRUE(roster->save());
        ana->setValue(Value("Lima"), kZRLastNameProperty);
        const auto passing = add("Passing");
        ASSERT_TRUE(roster->save());
        roster->removeRecord(passing);
    });
    const Snapshot after = snapshotOf(roster);
    const auto steps = history.steps();
    ASSERT_EQ(steps->size(), 1U);
    EXPECT_EQ(steps->front().added, 1);
    EXPECT_EQ(steps->front().changed + steps->front().removed, 0);
    ASSERT_EQ(undo(), Status::done);
    expectState(before);
    ASSERT_EQ(redo(), Status::done);
    expectState(after);
    EXPECT_EQ(redo(), Status::nothing);
}

TEST_F(HistoryTest, LeavesNoStepOfWhatComesToNothing)
{
    unnoted([&] { add("Ana"); });
    step([&] {
        const auto passing = add("Passing");
        ASSERT_TRUE(roster->save());
        roster->removeRecord(passing);
    });
    step([&] {
        platform::refCast<ZRPerson>(roster->people().front())->setValue(Value("Ana"), kZRFirstNameProperty);
    });
    EXPECT_EQ(countOfSteps(), 0U);
    EXPECT_EQ(undo(), Status::nothing);
}

// So an import clears the mark of the one before while its own cards wait with their pictures.
TEST_F(HistoryTest, KnowsPicturesThatWaitWhileAnotherContextSaves)
{
    constexpr std::int64_t lastImport = 128;
    const auto marked = add("Marked");
    unnoted([&] { marked->setValue(Value(lastImport), kZRPersonFlags); });
    const Snapshot before = snapshotOf(roster);
    {
        const ZRHistoryStep step(*roster, "import");
        const auto reading = roster->parallelUniverseRoster();
        person(reading, {{kZRFirstNameProperty, "Ana"}})->setImageData(Value::data("her picture"));
        marked->removeValueForProperty(kZRPersonFlags);
        ASSERT_TRUE(roster->save());
        ASSERT_TRUE(reading->save());
    }
    EXPECT_EQ(history.steps()->front().changed, 0) << "the mark does not count";
    const Snapshot after = snapshotOf(roster);
    ASSERT_EQ(undo(), Status::done);
    EXPECT_EQ(snapshotOf(roster).size(), before.size());
    ASSERT_EQ(redo(), Status::done);
    expectState(after);
}

TEST_F(HistoryTest, DropsWhatWasUndoneWithANewStep)
{
    step([&] { add("One"); }, "one");
    step([&] { add("Two"); }, "two");
    ASSERT_EQ(undo(), Status::done);
    step([&] { add("Three"); }, "three");
    EXPECT_EQ(redo(), Status::nothing);
    const auto steps = history.steps();
    ASSERT_EQ(steps->size(), 2U);
    EXPECT_EQ((*steps)[0].title, "three");
    EXPECT_EQ((*steps)[1].title, "one");
}

TEST_F(HistoryTest, IsNotUndoneWhileItIsMade)
{
    const Home home;
    roster = ZRRoster::rosterWithDatabaseDirectory(home.path().string());
    ZRHistory own(*roster);
    step([&] {
        add("Ana");
        ASSERT_TRUE(roster->save());
        EXPECT_EQ(own.undo().status, Status::inUse);
    });
    EXPECT_EQ(own.undo().status, Status::done);
}

// ---- what stands in the way

Ref<ZRPerson> anaOf(ZRRoster& roster)
{
    for (const auto& record : roster.people())
        if (record->valueForProperty(kZRFirstNameProperty).asText() == "Ana")
            return platform::refCast<ZRPerson>(record);
    return nullptr;
}

Ref<ZRGroup> onlyGroup(ZRRoster& roster) { return platform::refCast<ZRGroup>(roster.groups().front()); }

using Edit = std::function<void(ZRRoster&)>;

Edit sets(std::string_view property, const Value& value)
{
    return [=](ZRRoster& roster) { EXPECT_TRUE(anaOf(roster)->setValue(value, property)); };
}

const Edit joins = [](ZRRoster& roster) { onlyGroup(roster)->addMember(*anaOf(roster)); };

/// Ana and a group are there at first. A step changes Ana, then somebody else does something.
struct Meddling {
    const char* what;
    Edit step, meddle;
    const char* reason;
};

const Meddling meddlings[] = {
    {"a changed card was changed again", sets(kZRLastNameProperty, "Lima"),
        sets(kZRLastNameProperty, "Porto"), "was changed"},
    {"an entry of a changed card was changed", sets(kZRLastNameProperty, "Lima"),
        sets(kZREmailProperty, multiValue({{"x@y.example", kZRHomeLabel}})), "was changed"},
    {"a changed card was removed", sets(kZRLastNameProperty, "Lima"),
        [](ZRRoster& roster) { roster.removeRecord(anaOf(roster)); }, "is missing"},
    {"somebody else left the group", joins,
        [](ZRRoster& roster) { onlyGroup(roster)->removeMember(*anaOf(roster)); }, "was changed"},
    {"Me was chosen anew", [](ZRRoster& roster) { roster.setMe(anaOf(roster)); },
        [](ZRRoster& roster) { roster.setMe(nullptr); }, "was changed"},
    // What does not count.
    {"another card was added", sets(kZRLastNameProperty, "Lima"),
        [](ZRRoster& roster) {
            person(Ref<ZRRoster>(&roster), {{kZRFirstNameProperty, "Bo"}});
        },
        nullptr},
    {"the card came into a group", sets(kZRNoteProperty, "L"), joins, nullptr},
    {"the mark of the last import was set", sets(kZRNoteProperty, "L"), sets(kZRPersonFlags, 0x80), nullptr},
};

TEST_F(HistoryTest, NamesWhatWasChangedSince)
{
    for (const auto& meddling : meddlings) {
        SCOPED_TRACE(meddling.what);
        roster = ZRRoster::emptyMemoryBackedRoster();
        ZRHistory own(*roster);
        std::string id;
        unnoted([&] {
            id = add("Ana")->uniqueId();
            group(roster, "Friends");
        });
        const Snapshot start = snapshotOf(roster);
        step([&] { meddling.step(*roster); });
        unnoted([&] { meddling.meddle(*roster); });
        const Snapshot meddled = snapshotOf(roster);
        const auto outcome = own.undo();
        if (!meddling.reason) {
            EXPECT_EQ(outcome.status, Status::done);
            EXPECT_TRUE(outcome.conflicts.empty());
            continue;
        }
        EXPECT_EQ(outcome.status, Status::conflict);
        ASSERT_EQ(outcome.conflicts.size(), 1U);
        EXPECT_EQ(outcome.conflicts[0].uniqueId, id);
        EXPECT_TRUE(outcome.conflicts[0].name.starts_with("Ana")) << outcome.conflicts[0].name;
        EXPECT_EQ(outcome.conflicts[0].reason, meddling.reason);
        expectState(meddled);
        EXPECT_EQ(own.undo(ZRHistoryForce::yes).status, Status::done);
        if (std::string_view(meddling.reason) == "was changed")
            expectState(start);
        ASSERT_EQ(own.redo(ZRHistoryForce::yes).status, Status::done);
        expectState(meddled);
    }
}

TEST_F(HistoryTest, GivesMeBackUnlessSomebodyElseIsMe)
{
    std::string ana, bo;
    unnoted([&] {
        ana = add("Ana")->uniqueId();
        bo = add("Bo")->uniqueId();
        roster->setMe(card(ana));
    });
    step([&] { roster->removeRecord(card(ana)); });
    unnoted([&] { roster->setMe(card(bo)); });
    ASSERT_EQ(undo(), Status::done);
    ASSERT_TRUE(card(ana));
    EXPECT_EQ(roster->me()->uniqueId(), bo);
}

TEST_F(HistoryTest, BringsDefinitionsAndGroupsBackThatTheirValuesNeed)
{
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({{"org.example.shoe", Value(static_cast<std::int64_t>(kZRPropertyTypeString))}}),
        roster.get());
    std::string ana;
    unnoted([&] {
        const auto card = add("Ana");
        ana = card->uniqueId();
        card->setValue(Value("42"), "org.example.shoe");
        const auto friends = group(roster, "Friends");
        friends->addMember(*card);
        friends->setDistributionIdentifier(
            card->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->identifierAtIndex(0),
            kZREmailProperty, *card);
    });
    const Snapshot before = snapshotOf(roster);
    step([&] {
        roster->removeRecord(onlyGroup(*roster));
        roster->removeRecord(card(ana));
    });
    ASSERT_EQ(undo(), Status::done);
    expectState(before);
    EXPECT_EQ(card(ana)->valueForProperty("org.example.shoe").asText(), "42");
    EXPECT_EQ(roster->peopleMatchingText("ana").size(), 1U) << "not found by its text";
}

// ---- how much is kept

TEST_F(HistoryTest, KeepsTheLastThousandSteps)
{
    unnoted([&] { add("Ana"); });
    for (int i = 0; i < 1'005; ++i)
        step([&] { anaOf(*roster)->setValue(Value(i), kZRPersonFlags); }, std::to_string(i));
    const auto steps = history.steps();
    ASSERT_EQ(steps->size(), 1'000U);
    EXPECT_EQ(steps->front().title, "1004");
    EXPECT_EQ(steps->back().title, "5");
}

TEST_F(HistoryTest, KeepsSixtyFourMegabytesAndABiggerStepAlone)
{
    const auto note = [&](std::size_t megabytes, char c) {
        step([&] { anaOf(*roster)->setValue(Value(std::string(megabytes << 20, c)), kZRHomePageProperty); });
    };
    unnoted([&] { add("Ana"); });
    note(20, 'a');
    for (const char c : {'b', 'c', 'd', 'e', 'f'})
        note(20, c);
    std::int64_t size = 0;
    const auto steps = history.steps();
    for (const auto& kept : *steps)
        size += kept.size;
    EXPECT_EQ(countOfSteps(), 3U);
    EXPECT_LE(size, 64 << 20);
    note(70, 'g');
    note(1, 'h');
    EXPECT_EQ(countOfSteps(), 1U) << "what keeps 70 MB is alone";
    ASSERT_EQ(undo(), Status::done);
    EXPECT_EQ(anaOf(*roster)->valueForProperty(kZRHomePageProperty).asText().size(), std::size_t{70} << 20);
    ASSERT_TRUE(history.clear());
    EXPECT_EQ(countOfSteps(), 0U);
    EXPECT_EQ(redo(), Status::nothing);
}

} // namespace
