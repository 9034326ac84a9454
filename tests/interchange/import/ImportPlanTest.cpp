// What becomes of a card whose person is in the roster already, and of cards of one name in one import.
#include "interchange/import/PlanWorld.h"

#include "interchange/import/ValueChange.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreFacts.h"

#include <gmock/gmock.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace {

using namespace test;
using interchange::ValueChange;
using testing::ElementsAreArray;

struct PlanCase {
    const char* what;
    Lines there, imported;
    std::string fates;
    Lines after;
    DuplicateHandling handling = DuplicateHandling::update;
};

const PlanCase cases[] = {
    {"nobody", {}, {"First: Ana"}, "add", {"First: Ana"}},
    {"the same", {"First: Ana | Phone m: 1"}, {"First: Ana | Phone m: 1"}, "same",
        {"First: Ana | Phone m: 1"}},
    {"less than is there", {"First: Ana | Last: Lima | Note: n"}, {"First: Ana | Last: Lima"}, "same",
        {"First: Ana | Last: Lima | Note: n"}},
    {"another case and accent", {"First: Ana | Last: Límá"}, {"First: ANA | Last: Lima"}, "update",
        {"First: ANA | Last: Lima"}},
    {"blanks for a name", {"Organization: x | First:  "}, {"Nickname: y | First:  "}, "add",
        {"First:   | Organization: x", "Nickname: y"}},
    {"a company", {"Organization: Acme | ZRPersonFlags: 1"},
        {"Organization: ACME | ZRPersonFlags: 1 | Note: n"}, "update",
        {"Note: n | Organization: ACME | ZRPersonFlags: 1"}},
    {"a company and a person of its name", {"Organization: Acme | ZRPersonFlags: 1"}, {"First: Acme"}, "add",
        {"First: Acme", "Organization: Acme | ZRPersonFlags: 1"}},
    {"of several the equal one", {"First: Ana | Nickname: a", "First: Ana | Nickname: b", "First: Ana"},
        {"First: Ana | Nickname: b"}, "same",
        {"First: Ana", "First: Ana | Nickname: a", "First: Ana | Nickname: b"}},
    {"of several the one with the e-mail address", {"Email m: a@b.c | First: Ana", "First: Ana"},
        {"Email w: A@B.C | First: Ana | Nickname: b"}, "update",
        {"Email m: a@b.c | First: Ana | Nickname: b", "First: Ana"}},
    {"of several the one with the number", {"First: Ana | Phone m: +1 555", "First: Ana | Phone m: 2"},
        {"First: Ana | Nickname: b | Phone w: +1-555"}, "update",
        {"First: Ana | Nickname: b | Phone m: +1 555 | Phone w: +1-555", "First: Ana | Phone m: 2"}},
    {"two of a name where one is there", {"First: Ana"},
        {"First: Ana | Nickname: a", "First: Ana | Nickname: b"}, "update add",
        {"First: Ana | Nickname: a", "First: Ana | Nickname: b"}},
    {"a second one who has been taken in", {"First: Ana"},
        {"First: Ana | Nickname: a | Note: n", "First: Ana | Note: n"}, "update same",
        {"First: Ana | Nickname: a | Note: n"}},
    {"word for word twice", {}, {"First: Ana | Note: n", "First: Ana | Note: n", "First: Ana"},
        "add same add", {"First: Ana", "First: Ana | Note: n"}},
    {"one of two changed: the other keeps what is hers",
        {"First: Ana | Nickname: a", "First: Ana | Nickname: b"},
        {"First: Ana | Nickname: c", "First: Ana | Nickname: b"}, "update same",
        {"First: Ana | Nickname: b", "First: Ana | Nickname: c"}},
    {"a note that was appended", {"First: Ana | Note: one/two/three | Nickname: a"},
        {"First: Ana | Note: two", "First: Ana | Nickname: b | Note: two"}, "same add",
        {"First: Ana | Nickname: a | Note: one/two/three", "First: Ana | Nickname: b | Note: two"}},
    {"a note that was appended, and more", {"First: Ana | Note: one/two"},
        {"First: Ana | Nickname: b | Note: two"}, "update", {"First: Ana | Nickname: b | Note: one/two"}},
    {"a part of a note only", {"First: Ana | Note: one two"}, {"First: Ana | Note: two"}, "update",
        {"First: Ana | Note: one two/two"}},
    {"entries that replace each other back", {"Email m: b | First: Ana"},
        {"Email m: a | Email m: b | First: Ana"}, "same", {"Email m: b | First: Ana"}},
    {"replaced", {"Email m: a | First: Ana | Note: n", "First: Bo"}, {"First: Ana | Nickname: a"}, "replace",
        {"First: Ana | Nickname: a", "First: Bo"}, DuplicateHandling::replace},
    {"replaced by less", {"First: Ana | Note: n"}, {"First: Ana", "First: Ana | Note: m"}, "replace add",
        {"First: Ana", "First: Ana | Note: m"}, DuplicateHandling::replace},
    {"replaced by the same", {"First: Ana"}, {"First: Ana"}, "same", {"First: Ana"},
        DuplicateHandling::replace},
    {"kept", {"First: Ana"}, {"First: Ana | Note: n", "First: Ana | Note: m", "First: Ana", "First: Bo"},
        "keep keep same add", {"First: Ana", "First: Bo"}, DuplicateHandling::keep},
    {"both", {"First: Ana"}, {"First: Ana", "First: Ana"}, "add add",
        {"First: Ana", "First: Ana", "First: Ana"}, DuplicateHandling::both},
};

std::string written(std::string line)
{
    for (auto at = line.find("/"); at != std::string::npos; at = line.find("/", at))
        line[at] = '\r';
    return line;
}

TEST_F(PlanTest, DecidesAboutEachCard)
{
    for (const auto& [what, there, imported, fates, after, handling] : cases) {
        SCOPED_TRACE(what);
        for (const auto& person : roster->people())
            roster->removeRecord(person);
        for (const auto& line : there)
            card(roster, written(line));
        ASSERT_TRUE(roster->save());
        const std::string data = vCards(imported);
        EXPECT_EQ(plan(data, handling).fates, fates) << "planned";
        EXPECT_EQ(import(data, handling).fates, fates);
        EXPECT_THAT(people(), ElementsAreArray(after));
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

// ---- what a plan tells

std::string textOf(const Value& value) { return value.isAbsent() ? "" : value.description(); }

/// "Email(m) replaced a>b!": "!" for what is lost.
std::string textOf(const ValueChange& change)
{
    constexpr const char* kinds[] = {"added", "extended", "replaced", "removed", "displaced"};
    return fmt::format("{}{} {} {}>{}{}", change.property,
        change.label.empty() ? "" : "(" + change.label + ")", kinds[static_cast<std::size_t>(change.kind)],
        textOf(change.before), textOf(change.after), change.isLoss ? "!" : "");
}

struct ChangesCase {
    const char* what;
    std::string there, imported, updated, replaced;
};

const ChangesCase changesCases[] = {
    {"a single value", "First: Ana | Nickname: a", "First: Ana | Nickname: b", "Nickname replaced a>b!",
        "Nickname replaced a>b!"},
    {"a new value", "First: Ana", "First: Ana | Nickname: b", "Nickname added >b", "Nickname added >b"},
    {"a value that is missing", "First: Ana | JobTitle: j | Nickname: a", "First: Ana | Nickname: b",
        "Nickname replaced a>b!", "JobTitle removed j>!; Nickname replaced a>b!"},
    {"a note", "First: Ana | Note: one", "First: Ana | Note: two", "Note extended one>one\rtwo",
        "Note replaced one>two!"},
    {"the entry of a label", "Email m: a | First: Ana", "Email m: b | First: Ana", "Email(m) replaced a>b!",
        "Email(m) removed a>!; Email(m) added >b"},
    {"a label that two have", "Email m: a | Email m: b | First: Ana", "Email m: c | First: Ana",
        "Email(m) added >c", "Email(m) removed a>!; Email(m) removed b>!; Email(m) added >c"},
    {"an entry that another entry says", "Email m: a | First: Ana", "Email m: b | Email w: a | First: Ana",
        "Email(m) replaced a>b; Email(w) added >a",
        "Email(m) removed a>; Email(m) added >b; Email(w) added >a"},
    {"two entries for one", "Email m: a | First: Ana", "Email m: b | Email m: c | First: Ana",
        "Email(m) replaced a>c!; Email(m) displaced b>!",
        "Email(m) removed a>!; Email(m) added >b; Email(m) added >c"},
};

TEST_F(PlanTest, NamesEachValueThatChangesOrIsLost)
{
    for (const auto& [what, there, imported, updated, replaced] : changesCases)
        for (const auto handling : {DuplicateHandling::update, DuplicateHandling::replace}) {
            SCOPED_TRACE(what);
            const auto existing = saved(there);
            const auto done = plan(vCards({imported}), handling);
            ASSERT_EQ(done.decisions.size(), 1U);
            std::vector<std::string> texts;
            for (const auto& change : done.decisions.front().changes)
                texts.push_back(textOf(change));
            EXPECT_EQ(fmt::format("{}", fmt::join(texts, "; ")),
                handling == DuplicateHandling::update ? updated : replaced);
            EXPECT_EQ(done.decisions.front().existing->uniqueId(), existing->uniqueId());
            roster->removeRecord(existing);
        }
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
