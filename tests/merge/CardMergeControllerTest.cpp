// The review of an import: what each decision does, who is told, and what is written at its end.
#include "merge/MergeWorld.h"
#include "merge/ZRCardMergeController.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using Action = ZRCardMergeController::Action;
using Extent = ZRCardMergeController::Extent;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

/// Notes what it is told.
class ReviewHost : public RosterHost {
public:
    using RosterHost::RosterHost;
    void selectGroups(const ZRRecordList& groups) override { selectedGroups = groups; }
    void selectMembers(const ZRRecordList& members) override { selected = MergeTest::linesOf(members); }

    ZRRecordList selectedGroups;
    Lines selected;
};

struct Source : ZRImportSource {
    void didImportPeople(const ZRRecordList& people, const Ref<ZRGroup>&) override
    {
        told.push_back(MergeTest::linesOf(people));
    }
    std::vector<Lines> told;
};

struct Decisions : ZRRecordDecisions {
    void setDecision(int decision, const Ref<ZRPerson>& card) override
    {
        made.push_back(lineOf(*card) + " " + std::to_string(decision));
    }
    void applyDecisions() override { made.emplace_back("applied"); }
    Lines made;
};

class Review : public MergeTest {
protected:
    void SetUp() override
    {
        MergeTest::SetUp();
        host = std::make_shared<ReviewHost>(roster);
        ApplicationHost::install(host);
    }

    /// A review of these cards against the roster as it is saved.
    std::unique_ptr<ZRCardMergeController> review(const Lines& lines, const Ref<ZRGroup>& into = nullptr)
    {
        ZRRecordList cards;
        for (const auto& line : lines)
            cards.push_back(imported(line));
        const auto target = roster->parallelUniverseRoster();
        const auto merger = ZRNewMerger::initWithGroup(into);
        merger->setTargetRoster(target);
        auto controller = std::make_unique<ZRCardMergeController>(
            cards, merger->duplicatesForPeople(cards), into, target, bool(into));
        controller->setTargetSource(&source);
        return controller;
    }

    std::shared_ptr<ReviewHost> host;
    Source source;
};

TEST_F(Review, EachActionDoesWhatItSays)
{
    const struct {
        Action action;
        Lines people, selected;
        int decision;
    } cases[] = {
        {Action::keepOld, {"First: Ana | Nickname: a"}, {}, 2},
        {Action::replaceOld, {"First: Ana | Note: n"}, {"First: Ana | Note: n"}, 1},
        {Action::updateOld, {"First: Ana | Nickname: a | Note: n"}, {"First: Ana | Nickname: a | Note: n"},
            4},
        {Action::keepBoth, {"First: Ana | Nickname: a", "First: Ana | Note: n"}, {"First: Ana | Note: n"}, 3},
    };
    for (const auto& [action, after, selected, decision] : cases) {
        SCOPED_TRACE(static_cast<int>(action));
        removeEverybody();
        saved("First: Ana | Nickname: a");

        Decisions decisions;
        const auto told = review({"First: Ana | Note: n"});
        told->setRecordDelegate(&decisions);
        told->go();
        told->changeAction(action);
        told->ok(Extent::oneCard);
        EXPECT_THAT(
            decisions.made, ElementsAre("First: Ana | Note: n " + std::to_string(decision), "applied"));
        EXPECT_THAT(people(), ElementsAre("First: Ana | Nickname: a")) << "decisions are told only";

        const auto controller = review({"First: Ana | Note: n"});
        controller->go();
        EXPECT_EQ(controller->selectedAction(), Action::updateOld);
        controller->changeAction(action);
        controller->changeAction(7);
        controller->ok(Extent::oneCard);
        EXPECT_TRUE(controller->isDone());
        EXPECT_THAT(people(), ElementsAreArray(after));
        EXPECT_THAT(host->selected, ElementsAreArray(selected));
    }
}

TEST_F(Review, ShowsCardAfterCardAndWritesAtTheEnd)
{
    saved("First: Ana | Nickname: a");
    saved("First: Bo");
    const auto friends = group("Friends");
    const auto controller =
        review({"First: Ana | Nickname: b", "First: Cid", "First: Bo | Note: n"}, friends);
    EXPECT_EQ(controller->mergeCount(), 2U);
    controller->go();
    EXPECT_EQ(lineOf(*controller->originalCard()), "First: Ana | Nickname: a");
    EXPECT_EQ(lineOf(*controller->importedCard()), "First: Ana | Nickname: b");
    EXPECT_EQ(lineOf(*controller->updatedCard()), "First: Ana | Nickname: b");
    EXPECT_THAT(controller->changes(), ElementsAre(testing::Pair("Nickname", ZRPropertyChangedColor)));
    EXPECT_EQ(controller->buttonTitle(Extent::oneCard), "Next");
    EXPECT_EQ(controller->buttonTitle(Extent::allCards), "Import");
    controller->ok(Extent::oneCard);
    EXPECT_EQ(controller->cardsLeft(), 1U);
    EXPECT_EQ(lineOf(*controller->originalCard()), "First: Bo");
    EXPECT_EQ(controller->buttonTitle(Extent::oneCard), "Import");
    EXPECT_THAT(people(), ElementsAre("First: Ana | Nickname: a", "First: Bo")) << "before the last decision";
    controller->ok(Extent::oneCard);
    EXPECT_FALSE(controller->importedCard());
    EXPECT_THAT(people(), ElementsAre("First: Ana | Nickname: b", "First: Bo | Note: n", "First: Cid"));
    EXPECT_THAT(source.told,
        ElementsAre(
            ElementsAre("First: Cid"), ElementsAre("First: Ana | Nickname: b", "First: Bo | Note: n")));
    EXPECT_TRUE(host->showsLastImportGroup());
    EXPECT_EQ(host->selectedGroups, ZRRecordList{friends});
    EXPECT_EQ(reread(*roster->people().front())->parentGroups().size(), 1U);
}

TEST_F(Review, OneAnswerForAllCards)
{
    saved("First: Ana");
    saved("First: Bo");
    const auto controller = review({"First: Ana | Note: n", "First: Bo | Note: n"});
    controller->go();
    controller->changeAction(Action::keepBoth);
    controller->ok(Extent::allCards);
    EXPECT_TRUE(controller->isDone());
    EXPECT_THAT(
        people(), ElementsAre("First: Ana", "First: Ana | Note: n", "First: Bo", "First: Bo | Note: n"));
}

TEST_F(Review, WhoGivesUpChangesNothing)
{
    saved("First: Ana");
    const auto controller = review({"First: Ana | Note: n", "First: Ana | Note: m", "First: Cid"});
    controller->go();
    controller->ok(Extent::oneCard);
    controller->cancel();
    controller->ok(Extent::allCards);
    EXPECT_TRUE(controller->isDone());
    EXPECT_FALSE(controller->originalCard());
    EXPECT_THAT(people(), ElementsAre("First: Ana"));
    EXPECT_TRUE(source.told.empty());
}

TEST_F(Review, NothingToDecideEndsAtOnce)
{
    const auto controller = review({"First: Cid"});
    controller->go();
    EXPECT_TRUE(controller->isDone());
    EXPECT_THAT(people(), ElementsAre("First: Cid"));
}

} // namespace

} // namespace test
