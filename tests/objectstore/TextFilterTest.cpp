// Whether the trigram index, as a filter of text tests, ever loses an object or changes an answer.
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/TortureModel.h"
#include "platform/text/Fold.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateRef;
using os::Rows;
using os::SlotDescription;
using os::StorePredicate;
using os::TextOption;
using platform::Value;
using enum os::SlotKind;
using enum os::AttributeType;
using enum os::DeleteRule;

constexpr std::array kCard{
    SlotDescription{.key = "name", .type = string, .flags = os::kFeedsTextIndex},
    SlotDescription{.key = "code", .type = string, .flags = os::kFeedsTextIndex | os::kIndexed},
    SlotDescription{.key = "secret", .type = string},
    SlotDescription{.key = "friend", .kind = toOne, .destination = "Card"},
    SlotDescription{
        .key = "phones", .kind = toMany, .destination = "Line", .inverse = "owner", .deleteRule = cascade},
    SlotDescription{
        .key = "note", .kind = toOneInverse, .destination = "Memo", .inverse = "card", .deleteRule = cascade},
    SlotDescription{.key = "index",
        .kind = toOneInverse,
        .destination = "Entry",
        .inverse = "card",
        .deleteRule = cascade},
};
constexpr std::array kLine{
    SlotDescription{.key = "owner", .kind = toOne, .destination = "Card", .inverse = "phones"},
    SlotDescription{.key = "number", .type = string, .flags = os::kFeedsTextIndex},
    SlotDescription{.key = "label", .type = string},
};
constexpr std::array kMemo{
    SlotDescription{.key = "card", .kind = toOne, .destination = "Card", .inverse = "note"},
    SlotDescription{.key = "text", .type = string, .flags = os::kFeedsTextIndex},
};
constexpr std::array kEntry{
    SlotDescription{.key = "card", .kind = toOne, .destination = "Card", .inverse = "index"},
    SlotDescription{.key = "text", .type = string, .flags = os::kTextIndex | os::kFeedsTextIndex},
};
constexpr std::array kEntities{
    os::EntityDescription{.name = "Card", .table = "card", .slots = kCard},
    os::EntityDescription{.name = "Line", .table = "line", .slots = kLine, .owner = "owner"},
    os::EntityDescription{.name = "Memo", .table = "memo", .slots = kMemo, .owner = "card"},
    os::EntityDescription{.name = "Entry", .table = "entry", .slots = kEntry, .owner = "card"},
};

platform::Ref<const os::Model> cardModel()
{
    static const auto model = os::Model::make(kEntities);
    return model;
}

/// Pieces whose folds grow, shrink, vanish, meet their neighbours or are no text at all.
const std::vector<std::string>& pieces()
{
    static const std::vector<std::string> pool{"a", "bc", "Ana", "STRASSE", "stra\u00dfe", "\u1e9e", "\u0301",
        "e\u0301", "\u00e9", "\ufb01n", "FI", "\ufb03", "\u03a3", "\u03c2", "\u03c3", "\u304b\u3099",
        "\u304c", "\u3099", "\u30cf\u309a", "\uff76\uff9e", "\ud55c\uae00", "\u1112\u1161\u11ab", "\u0130",
        "\u0131", "I", "i\u0307", "\u0345", "\u03b1\u0345", "\u1f80", "\u1fbc", "\u01c5", "\u2122", "\ufdfa",
        "\uffff", "\ufffe", "\ufffd", "\U0001f600", "\u0149", "\"", "'", "*", "%", "x\u0308\u0323y", "123 45",
        "+1(2)", " ", std::string(1, '\0'), "\1", "\xff", "\xe3\x81", "\xc3", "\x81", "\xf0\x9f"};
    return pool;
}

/// A few cards with texts of all kinds, the entries of the index kept as the model promises them.
class TextFilterTest : public testing::TestWithParam<int> {
protected:
    TextFilterTest()
    {
        for (int i = 0; i < 25; ++i)
            addCard();
        expected(context->save());
    }

    std::string anyText(std::size_t most)
    {
        std::string text;
        for (std::size_t i = dice.below(most + 1); i > 0; --i)
            text += dice.among(pieces());
        return text;
    }

    /// Often one that is found: a part of some text, cut where characters begin or anywhere, in another case.
    std::string anyNeedle()
    {
        if (dice.chance(30))
            return anyText(4);
        const std::string& text = dice.among(texts);
        std::string part = text.substr(dice.below(text.size() + 1), 1 + dice.below(24));
        if (dice.chance(30))
            std::ranges::transform(
                part, part.begin(), [](char c) { return c >= 'a' && c <= 'z' ? c ^ 32 : c; });
        return dice.chance(20) ? platform::foldCase(part) : part;
    }

    void set(os::StoreObject& object, std::string_view key)
    {
        const std::string text = dice.chance(2) ? anyText(4000) : anyText(8);
        texts.push_back(text);
        object.setValueForKey(key, dice.chance(10) ? Value() : Value(text));
    }

    os::ObjectRef part(std::string_view entity, std::string_view owner, const os::ObjectRef& card)
    {
        const auto made = context->insertObjectOfEntity(entity);
        made->setRelated(made->slot(owner), card.get());
        return made;
    }

    void addCard()
    {
        const auto card = context->insertObjectOfEntity("Card");
        cards.push_back(card);
        for (const char* key : {"name", "code", "secret"})
            set(*card, key);
        for (std::size_t i = dice.below(3); i > 0; --i) {
            const auto line = part("Line", "owner", card);
            set(*line, "number");
            set(*line, "label");
        }
        set(*part("Memo", "card", card), "text");
        card->setRelated(card->slot("friend"), dice.among(cards).get());
        part("Entry", "card", card);
        index(card);
    }

    /// What the model promises: every text that feeds the entry is in it, folded.
    static void index(const os::ObjectRef& card)
    {
        std::string text;
        const auto add = [&](os::StoreObject& object, std::string_view key) {
            text.append(object.text(object.slot(key))).append(" ");
        };
        add(*card, "name");
        add(*card, "code");
        add(*card->related(card->slot("note")), "text");
        for (const auto& line : card->objects(card->slot("phones")))
            add(*line, "number");
        card->setValueForKeyPath("index.text", Value(platform::foldCaseAndDiacritics(text)));
    }

    void edit()
    {
        const auto& card = dice.among(cards);
        set(*card, dice.chance(50) ? "name" : "code");
        if (dice.chance(50))
            set(*card->related(card->slot("note")), "text");
        index(card);
    }

    PredicateRef textTest(std::string_view path)
    {
        static constexpr Comparator comparators[]{Comparator::equal, Comparator::contains,
            Comparator::contains, Comparator::beginsWith, Comparator::endsWith, Comparator::notEqual};
        return StorePredicate::compare(
            path, dice.among(comparators), Value(anyNeedle()), static_cast<TextOption>(dice.below(3)));
    }

    PredicateRef anyTest(int depth)
    {
        static constexpr std::string_view paths[]{
            "name", "code", "secret", "note.text", "index.text", "friend.name", "friend.note.text"};
        switch (dice.below(depth > 0 ? 7 : 4)) {
        case 0:
            return StorePredicate::rows("phones", dice.chance(70) ? Rows::some : Rows::none,
                textTest(dice.chance(70) ? "number" : "label"));
        case 1:
            return StorePredicate::compare(
                "index.text", Comparator::contains, Value(platform::foldCaseAndDiacritics(anyNeedle())));
        case 4:
            return StorePredicate::negation(anyTest(depth - 1));
        case 5:
            return StorePredicate::all({anyTest(depth - 1), anyTest(depth - 1)});
        case 6:
            return StorePredicate::any({anyTest(depth - 1), anyTest(depth - 1)});
        default:
            return textTest(dice.among(paths));
        }
    }

    /// Asks each card in memory, where there is no index.
    os::ObjectList plainAnswer(const PredicateRef& predicate) const
    {
        os::ObjectList found;
        for (const auto& card : cards)
            if (os::matches(*predicate, *card))
                found.push_back(card);
        return found;
    }

    static std::vector<const os::StoreObject*> sorted(const os::ObjectList& objects)
    {
        std::vector<const os::StoreObject*> pointers;
        for (const auto& object : objects)
            pointers.push_back(object.get());
        std::ranges::sort(pointers);
        return pointers;
    }

    void check(const PredicateRef& predicate)
    {
        SCOPED_TRACE(os::printed(*predicate));
        os::StoreFetch fetch(*cardModel()->entity("Card"), predicate);
        const auto all = expected(context->runFetch(fetch));
        EXPECT_EQ(sorted(all), sorted(plainAnswer(predicate)));
        EXPECT_EQ(expected(context->countFetch(fetch)), all.size());
        fetch.offset = dice.below(3);
        fetch.limit = 1 + dice.below(5);
        const auto from = std::min(fetch.offset, all.size()), to = std::min(from + fetch.limit, all.size());
        const os::ObjectList first(
            all.begin() + static_cast<std::ptrdiff_t>(from), all.begin() + static_cast<std::ptrdiff_t>(to));
        EXPECT_EQ(expected(context->runFetch(fetch)), first) << "the first few";
    }

    void checkMany()
    {
        for (int i = 0; i < 80 && !HasFailure(); ++i)
            check(anyTest(2));
    }

    Dice dice{Dice::chosenSeed(static_cast<std::uint64_t>(GetParam()))};
    const platform::Ref<os::StoreCoordinator> coordinator = os::StoreCoordinator::make(cardModel());
    os::PersistentStore* const store =
        expected(coordinator->addStore(os::StoreType::sqlite, freshStorePath(), {}));
    const platform::Ref<os::StoreContext> context = platform::makeRef<os::StoreContext>(coordinator);
    os::ObjectList cards;
    std::vector<std::string> texts{""};
};

TEST_P(TextFilterTest, AnswersAsMemoryDoesSavedAndUnsaved)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 8 && !HasFailure(); ++round) {
        checkMany();
        for (int i = 0; i < 6; ++i)
            edit();
        addCard();
        checkMany();
        expected(context->save());
    }
}

// An entry may be missing in a store that others made, or be there without its text.
TEST_P(TextFilterTest, LosesNoCardWhoseEntryIsNotWritten)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
        const auto& card = dice.among(cards);
        if (const auto entry = card->related(card->slot("index")); entry && round % 2 == 0)
            context->deleteObject(*entry);
        else if (entry)
            entry->setValueForKey("text", Value());
        expected(context->save());
        checkMany();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TextFilterTest, testing::Values(1, 2, 3, 4));

/// Whether SQL asks the index before it asks the test itself.
bool isFiltered(const PredicateRef& predicate, std::string_view entity = "Card")
{
    const auto condition = os::translate(
        *predicate, *cardModel()->entity(entity), {.store = 1, .hasEveryEntry = [] { return true; }});
    return condition && condition->sql.find("MATCH") != std::string::npos;
}

TEST(TextFilterUseTest, IsForPositiveTestsOfThreeFoldedCharactersOfWhatFeedsIt)
{
    struct Case {
        const char* path;
        Comparator comparator;
        TextOption option;
        std::string text;
        bool isFiltered;
    };
    using enum TextOption;
    const Case cases[]{
        {"name", Comparator::contains, exact, "ana", true},
        {"name", Comparator::equal, ignoringCase, "ana", true},
        {"name", Comparator::beginsWith, ignoringCaseAndDiacritics, "ana", true},
        {"name", Comparator::endsWith, exact, "ana", true},
        {"note.text", Comparator::contains, ignoringCase, "ana", true},
        {"friend.name", Comparator::contains, exact, "ana", true},
        {"friend.note.text", Comparator::contains, exact, "ana", true},
        {"index.text", Comparator::contains, exact, "ana", true},
        {"code", Comparator::contains, exact, "ana", true},
        {"name", Comparator::contains, exact, "\u00df\u00df", true},
        {"name", Comparator::contains, exact, "an", false},
        {"name", Comparator::contains, exact, "e\u0301\u0301\u0301", false},
        {"name", Comparator::notEqual, exact, "ana", false},
        {"name", Comparator::less, exact, "ana", false},
        {"code", Comparator::equal, exact, "ana", false},
        {"code", Comparator::beginsWith, exact, "ana", false},
        {"secret", Comparator::contains, exact, "ana", false},
        {"name", Comparator::contains, exact, "ana\x81\x82", false},
    };
    for (const auto& one : cases) {
        const auto test = StorePredicate::compare(one.path, one.comparator, Value(one.text), one.option);
        EXPECT_EQ(isFiltered(test), one.isFiltered) << os::printed(*test);
    }
    const auto number = StorePredicate::compare("number", Comparator::contains, Value("960"));
    EXPECT_TRUE(isFiltered(StorePredicate::rows("phones", Rows::some, number)));
    EXPECT_FALSE(isFiltered(number, "Line")) << "a row may have no owner";
    EXPECT_FALSE(isFiltered(
        StorePredicate::negation(StorePredicate::compare("name", Comparator::equal, Value("ana")))));
}

} // namespace
