// What becomes of a card whose person is in the roster already, and of cards of one name in one import.
#include "interchange/Corpus.h"
#include "interchange/import/PlanWorld.h"

#include "interchange/import/ValueChange.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreFacts.h"

#include <gmock/gmock.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using namespace test;
using interchange::ValueChange;
using testing::ElementsAreArray;

std::string replaced(std::string text, char from, char to)
{
    std::ranges::replace(text, from, to);
    return text;
}

std::string textOf(const Value& value) { return value.isAbsent() ? "" : value.description(); }

/// "Email(m) replaced a>b!": "!" for what is lost.
std::string textOf(const ValueChange& change)
{
    constexpr const char* kinds[] = {"added", "extended", "replaced", "removed", "displaced"};
    return fmt::format("{}{} {} {}>{}{}", change.property,
        change.label.empty() ? "" : "(" + change.label + ")", kinds[static_cast<std::size_t>(change.kind)],
        textOf(change.before), textOf(change.after), change.isLoss ? "!" : "");
}

/// What becomes of each card, a line each.
std::string textOf(const std::vector<ImportDecision>& decisions)
{
    std::string text;
    for (const auto& decision : decisions) {
        std::vector<std::string> changes;
        for (const auto& change : decision.changes)
            changes.push_back(textOf(change));
        text += fmt::format(
            "{}{}{}\n", PlanTest::wordFor(decision), changes.empty() ? "" : ": ", fmt::join(changes, "; "));
    }
    return replaced(text, '\r', '/');
}

const std::map<std::string, DuplicateHandling> kHandlings{{"replace", DuplicateHandling::replace},
    {"keep", DuplicateHandling::keep}, {"both", DuplicateHandling::both}};

TEST_F(PlanTest, DecidesAboutEachCardAndNamesEachValueThatChangesOrIsLost)
{
    for (const auto& plan : casesIn(kTestsOfCards / "import/plan.txt")) {
        for (const auto& person : roster->people())
            roster->removeRecord(person);
        auto handling = DuplicateHandling::update;
        Lines coming;
        std::istringstream lines(plan.input);
        for (std::string word, rest; lines >> word && std::getline(lines >> std::ws, rest);)
            if (word == "there:")
                card(roster, replaced(rest, '/', '\r'));
            else if (word == "comes:")
                coming.push_back(rest);
            else
                handling = kHandlings.at(rest);
        ASSERT_TRUE(roster->save());
        const std::string data = vCards(coming), planned = textOf(this->plan(data, handling).decisions);
        std::string done = textOf(import(data, handling).decisions);
        EXPECT_EQ(planned, done) << plan.message();
        for (const auto& line : people())
            done += "there: " + line + "\n";
        EXPECT_EQ(done, plan.expected) << plan.message();
    }
}

TEST_F(PlanTest, ACardWithoutANameIsNobodysDuplicate)
{
    const std::string data = "BEGIN:VCARD\r\nVERSION:3.0\r\nEMAIL:a@b.c\r\nEND:VCARD\r\n";
    EXPECT_EQ(import(data + data).fates, "add add");
    EXPECT_EQ(import(data).fates, "add");
}

TEST_F(PlanTest, OfSeveralWithNothingElseInCommonTheOneIsMeantWhomTheMergerNames)
{
    for (const char* nickname : {"a", "b", "c", "d"})
        saved(fmt::format("First: Ana | Nickname: {}", nickname));
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    const auto card = imported("First: Ana | Nickname: e");
    merger->setTargetRoster(roster->parallelUniverseRoster());
    const auto named = merger->duplicatesForPeople({card}).at(card->uniqueId())->uniqueId();
    const auto done = import(vCard(*card));
    EXPECT_EQ(done.fates, "update");
    EXPECT_EQ(done.decisions.front().existing->uniqueId(), named);
}

// What is decided must not depend on where a transaction ends, as far as cards can be known by then.
TEST_F(PlanTest, ALongImportTwiceChangesNothing)
{
    std::string data;
    for (int i = 0; i < 2300; ++i)
        data += vCard(*imported(fmt::format("First: Ana | Last: L{} | Phone m: {}", i % 2200, i)));
    data += vCard(*imported("First: Ana | Last: L0 | Phone m: 0"));
    const auto first = import(data).result, second = import(data).result;
    EXPECT_EQ(first.added, 2300U);
    EXPECT_EQ(first.same, 1U);
    EXPECT_EQ(second.added + second.updated, 0U);
    EXPECT_EQ(second.same, 2301U);
}

std::int64_t commitsOf(ZRRoster& roster)
{
    const auto context = roster.parallelUniverseRoster()->managedObjectContext();
    EXPECT_TRUE(context->catchUp());
    return context->lastSeenCommit();
}

// A messaging service that the store does not know is written when a card that names it is read into the
// roster.
TEST_F(PlanTest, APlanWritesNothing)
{
    saved("First: Ana | AIMInstant m: a");
    const std::string data =
        vCards({"First: Ana | JabberInstant m: b | ICQInstant m: c", "First: Bo | MSNInstant m: d"});
    const std::int64_t before = commitsOf(*roster);
    EXPECT_EQ(plan(data).fates, "update add");
    EXPECT_EQ(commitsOf(*roster), before);
    EXPECT_THAT(people(), ElementsAreArray({"AIMInstant m: a | First: Ana"}));
}

} // namespace
