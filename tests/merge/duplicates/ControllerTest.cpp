// The clean-up of a roster: its phases, what it counts, what it merges, and what a cancelled one leaves.
#include "merge/MergeWorld.h"

#include "commands/ZRUndoManager.h"
#include "merge/DuplicateMerge.h"
#include "merge/ZRNewDuplicateCardsController.h"
#include "platform/run/Dispatch.h"

#include <gmock/gmock.h>

namespace test {
namespace {

using Controller = ZRNewDuplicateCardsController;
using testing::ElementsAre;
using testing::HasSubstr;

/// Goes on at the warning, or not, and waits for the end on the test's own thread.
class User : public ZRDuplicateCardsDelegate {
public:
    enum class Answer { merge, mergeSimilar, cancel };
    explicit User(Answer answer) : _answer(answer) { }

    void run(Controller& controller)
    {
        platform::MainQueue::shared().fileDescriptor();
        controller.start();
        while (ends.empty())
            platform::MainQueue::shared().runOnce(30);
    }
    void duplicateCardsController(Controller&, bool didFinish) override { ends.push_back(didFinish); }
    void updateProgress(Controller& controller) override
    {
        EXPECT_LE(controller.complete(), controller.limit());
        if (controller.phase() != Controller::kWarn || !warning.major.empty())
            return;
        warning = controller.warning();
        controller.setMergesSimilarCards(_answer == Answer::mergeSimilar);
        _answer == Answer::cancel ? controller.cancelCurrentPhase() : controller.advanceToNextPhase();
    }

    std::vector<bool> ends;
    Controller::Warning warning;

private:
    const Answer _answer;
};

class DuplicateCardsTest : public MergeTest {
protected:
    void save(const std::vector<std::string_view>& cards)
    {
        for (const auto line : cards)
            saved(line);
    }
    Ref<Controller> run(User& user)
    {
        const auto controller = Controller::initWithDelegate(&user);
        user.run(*controller);
        return controller;
    }
};

const std::vector<std::string_view> kRoster = {
    "First: Ana | Last: Ek | Note: one",
    "First: Ana | Last: Ek | Note: one",
    "First: ANA | Last: Ek | Note: two",
    "First: Bo | Last: Ek | Phone work: 555-1 | Phone home: 5551",
    "First: Cy | Last: Ek",
};

struct Case {
    std::string name;
    std::vector<std::string_view> cards;
    User::Answer answer;
    /// Identical, similar, inner.
    std::vector<std::int64_t> counts;
    std::string major, minor, checkBox;
    std::vector<std::string> left;
};

TEST_F(DuplicateCardsTest, LooksWarnsAndMergesWhatTheUserWants)
{
    const Case cases[] = {
        {"nothing to find", {"First: Ana", "First: Bo"}, User::Answer::merge, {0, 0, 0}, "No duplicates",
            "nothing to merge", "", {"First: Ana", "First: Bo"}},
        {"identical alone", kRoster, User::Answer::merge, {1, 2, 1},
            "one duplicate card, one card that says something twice and cards of the same name", "stay apart",
            "Also merge the card",
            {"First: ANA | Last: Ek | Note: two", "First: Ana | Last: Ek | Note: one",
                "First: Bo | Last: Ek | Phone work: 555-1", "First: Cy | Last: Ek"}},
        {"similar too", kRoster, User::Answer::mergeSimilar, {1, 2, 1}, "one duplicate card", "stay apart",
            "Also merge",
            {"First: ANA | Last: Ek | Note: one/two", "First: Bo | Last: Ek | Phone work: 555-1",
                "First: Cy | Last: Ek"}},
        {"similar ones alone are merged unasked",
            {"First: Ana | JobTitle: old", "First: ana | JobTitle: new", "First: ANA | JobTitle: last"},
            User::Answer::merge, {0, 2, 0}, "Found: cards of the same name.", "become one", "",
            {"First: ANA | JobTitle: last"}},
        {"three of a kind", {"First: Ana", "First: Ana", "First: Ana"}, User::Answer::merge, {2, 2, 0},
            "2 duplicate cards", "", "", {"First: Ana"}},
        {"cancelled at the warning", kRoster, User::Answer::cancel, {1, 2, 1}, "one duplicate card", "", "",
            {"First: ANA | Last: Ek | Note: two", "First: Ana | Last: Ek | Note: one",
                "First: Ana | Last: Ek | Note: one",
                "First: Bo | Last: Ek | Phone work: 555-1 | Phone home: 5551", "First: Cy | Last: Ek"}},
    };
    for (const auto& [name, cards, answer, counts, major, minor, checkBox, left] : cases) {
        SCOPED_TRACE(name);
        removeEverybody();
        save(cards);
        User user(answer);
        const auto controller = run(user);
        EXPECT_THAT(user.ends, ElementsAre(answer != User::Answer::cancel));
        EXPECT_EQ(
            (std::vector{controller->identicalDupes(), controller->similarDupes(), controller->innerDupes()}),
            counts);
        EXPECT_THAT(user.warning.major, HasSubstr(major));
        EXPECT_THAT(user.warning.minor, HasSubstr(minor));
        EXPECT_THAT(user.warning.checkBox, HasSubstr(checkBox));
        EXPECT_EQ(people(), left);
        EXPECT_FALSE(roster->hasUnsavedChanges());
    }
}

TEST_F(DuplicateCardsTest, PassesMeOnKeepsGroupsAndIsUndoneAsOneStep)
{
    const auto manager = std::make_shared<ZRUndoManager>();
    roster->managedObjectContext()->setUndoManager(manager.get());
    const auto first = saved("First: Ana"), second = saved("First: Ana"), third = saved("First: Ana");
    group("Choir", {first});
    group("Crew", {second, third});
    roster->setMe(third);
    ASSERT_TRUE(roster->save());
    const auto before = people();
    User user(User::Answer::merge);
    run(user);
    EXPECT_THAT(people(), ElementsAre("First: Ana"));
    EXPECT_EQ(roster->me(), first);
    EXPECT_EQ(groupsOf(*reread(*first)), "Choir,Crew");
    EXPECT_EQ(manager->undoActionName(), "Merge Cards");
    manager->undo();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(people(), before);
    EXPECT_EQ(groupsOf(*reread(*first)), "Choir");
    EXPECT_EQ(groupsOf(*reread(*third)), "Crew");
    EXPECT_EQ(roster->me()->uniqueId(), third->uniqueId());
    roster->managedObjectContext()->setUndoManager(nullptr);
}

// What is left of a search that was cancelled while it looked: nothing but the news.
TEST_F(DuplicateCardsTest, ACancelledLookEndsOnceAndChangesNothing)
{
    save(kRoster);
    const auto before = people();
    User user(User::Answer::merge);
    platform::MainQueue::shared().fileDescriptor();
    const auto controller = Controller::initWithDelegate(&user);
    controller->start();
    controller->cancelCurrentPhase();
    while (user.ends.empty())
        platform::MainQueue::shared().runOnce(30);
    controller->cancelCurrentPhase();
    EXPECT_THAT(user.ends, ElementsAre(false));
    EXPECT_EQ(people(), before);
}

TEST_F(DuplicateCardsTest, KeepsOneMergerForEachRoster)
{
    const auto controller = Controller::initWithDelegate(nullptr);
    save({"First: Ana", "First: Bo"});
    const auto sources = Controller::contactsBySource(*roster->managedObjectContext());
    ASSERT_EQ(sources.size(), 1U);
    const auto& [place, ids] = sources.front();
    EXPECT_EQ(ids.size(), 2U);
    EXPECT_EQ(controller->mergerForRoster(*place), nullptr);
    controller->ensureMergerExistsForRoster(place);
    const auto merger = controller->mergerForRoster(*place);
    ASSERT_TRUE(merger);
    controller->ensureMergerExistsForRoster(place);
    EXPECT_EQ(
        controller->mergerForPerson(*platform::refCast<ZRPerson>(place->recordForUniqueId(ids[0]))), merger);
}

// Ana and Bo share an address, Bo and Cy a number: they are one person, the first of them.
TEST_F(DuplicateCardsTest, BucketsWithACardInCommonBecomeOneCard)
{
    const auto dee = saved("First: Dee"), ana = saved("First: Ana"), bo = saved("First: Bo"),
               cy = saved("First: Cy"), eve = saved("First: Eve");
    const auto bucket = [](std::initializer_list<Ref<ZRPerson>> people) {
        ZRDuplicateBucket made;
        for (const auto& person : people)
            made.uniqueIds.push_back(person->uniqueId());
        return made;
    };
    const auto done =
        zrMergeDuplicates({bucket({dee, eve}), bucket({ana, bo}), bucket({bo, cy}), bucket({eve, dee})},
            ZRMergeKind::wholeCards);
    EXPECT_EQ(done.failure.domain, "");
    ASSERT_EQ(done.merged.size(), 2U);
    EXPECT_EQ(done.merged[0].survivor, dee->uniqueId());
    EXPECT_EQ(done.merged[1].survivor, ana->uniqueId());
    EXPECT_THAT(done.merged[1].dropped, ElementsAre(bo->uniqueId(), cy->uniqueId()));
    EXPECT_THAT(people(), ElementsAre("First: Cy", "First: Eve"));
}

} // namespace
} // namespace test
