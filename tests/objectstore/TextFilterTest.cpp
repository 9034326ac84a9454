// Whether the trigram index, as a filter of text tests, ever loses an object or changes an answer.
#include "objectstore/ColumnFetch.h"
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/TestStore.h"
#include "platform/text/Fold.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateRef;
using os::Rows;
using os::StorePredicate;
using os::TextOption;

/// The same slots; of those keys the texts are promised to be in the index.
template <std::size_t count>
std::array<os::SlotDescription, count> feeding(
    std::array<os::SlotDescription, count> slots, std::initializer_list<std::string_view> keys)
{
    for (auto& slot : slots)
        if (std::ranges::find(keys, slot.key) != keys.end())
            slot.flags |= os::kFeedsTextIndex;
    return slots;
}

/// A library that keeps the index: "city" is a plain text in it, "name" one with an index of its own.
const platform::Ref<const os::Model>& feedingModel()
{
    static const auto authors = feeding(library::kAuthor, {"name", "city"});
    static const auto handles = feeding(library::kHandle, {"text"});
    static const auto biographies = feeding(library::kBiography, {"text"});
    static const auto entries = feeding(library::kIndex, {"text"});
    static const auto model = [] {
        const std::pair<std::string_view, std::span<const os::SlotDescription>> fed[]{
            {"Author", authors}, {"Handle", handles}, {"Biography", biographies}, {"Index", entries}};
        auto entities = library::kEntities;
        for (const auto& [name, slots] : fed)
            std::ranges::find(entities, name, &os::EntityDescription::name)->slots = slots;
        return os::Model::make(entities);
    }();
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

/// A few authors with texts of all kinds, the entries of the index kept as the model promises them.
class TextFilterTest : public testing::TestWithParam<int> {
protected:
    TextFilterTest()
    {
        for (int i = 0; i < 25; ++i)
            addAuthor();
        must(context->save());
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

    void set(StoreObject& object, std::string_view key)
    {
        const std::string text = dice.chance(2) ? anyText(4000) : anyText(8);
        texts.push_back(text);
        object.setValueForKey(key, dice.chance(10) ? Value() : Value(text));
    }

    ObjectRef part(std::string_view entity, std::string_view owner, const ObjectRef& author)
    {
        auto made = context->insertObjectOfEntity(entity);
        made->setRelated(made->slot(owner), author.get());
        return made;
    }

    void addAuthor()
    {
        const auto author = context->insertObjectOfEntity("Author");
        authors.push_back(author);
        for (const char* key : {"name", "city", "uniqueId"})
            set(*author, key);
        for (std::size_t i = dice.below(3); i > 0; --i) {
            const auto handle = part("Handle", "owner", author);
            set(*handle, "text");
            set(*handle, "label");
        }
        set(*part("Biography", "author", author), "text");
        author->setRelated(author->slot("friend"), dice.among(authors).get());
        part("Index", "author", author);
        index(author);
    }

    /// What the model promises: every text that feeds the entry is in it, folded.
    static void index(const ObjectRef& author)
    {
        std::string text =
            textOf(*author, "name") + " " + textOf(*author, "city") + " " + textOf(*author, "biography.text");
        for (const auto& handle : author->objects(author->slot("handles")))
            text += " " + textOf(*handle, "text");
        author->setValueForKeyPath("index.text", Value(platform::foldCaseAndDiacritics(text)));
    }

    void edit()
    {
        const auto& author = dice.among(authors);
        set(*author, dice.chance(50) ? "name" : "city");
        if (dice.chance(50))
            set(*author->related(author->slot("biography")), "text");
        index(author);
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
        static constexpr std::string_view paths[]{"city", "name", "uniqueId", "biography.text", "index.text",
            "friend.city", "friend.biography.text"};
        switch (dice.below(depth > 0 ? 7 : 4)) {
        case 0:
            return StorePredicate::rows("handles", dice.chance(70) ? Rows::some : Rows::none,
                textTest(dice.chance(70) ? "text" : "label"));
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

    /// Asks each author in memory, where there is no index.
    ObjectList plainAnswer(const PredicateRef& predicate) const
    {
        ObjectList found;
        for (const auto& author : authors)
            if (os::matches(*predicate, *author))
                found.push_back(author);
        return found;
    }

    using Columns = std::vector<std::pair<std::int64_t, std::string>>;

    /// Keys and texts as they are read without making objects.
    Columns columns(const os::StoreFetch& fetch, std::string_view key)
    {
        Columns read;
        must(os::fetchColumns(
            *context, fetch, {&key, 1}, [&](std::int64_t object, std::span<const os::FieldValue> fields) {
                read.emplace_back(object, fields[0].bytes);
            }));
        return read;
    }

    static Columns columns(const ObjectList& objects, std::string_view key)
    {
        Columns read;
        for (const auto& object : objects)
            read.emplace_back(object->key(), textOf(*object, key));
        return read;
    }

    void check(const PredicateRef& predicate)
    {
        SCOPED_TRACE(os::printed(*predicate));
        os::StoreFetch fetch(*feedingModel()->entity("Author"), predicate);
        const auto all = must(context->runFetch(fetch));
        EXPECT_THAT(all, testing::UnorderedElementsAreArray(plainAnswer(predicate)));
        EXPECT_EQ(must(context->countFetch(fetch)), all.size());
        EXPECT_EQ(columns(fetch, "uniqueId"), columns(all, "uniqueId"));
        EXPECT_EQ(columns(fetch, "city"), columns(all, "city"));
        fetch.offset = dice.below(3);
        fetch.limit = 1 + dice.below(5);
        const auto from = std::min(fetch.offset, all.size()), to = std::min(from + fetch.limit, all.size());
        const ObjectList first(
            all.begin() + static_cast<std::ptrdiff_t>(from), all.begin() + static_cast<std::ptrdiff_t>(to));
        EXPECT_EQ(must(context->runFetch(fetch)), first) << "the first few";
    }

    void checkMany()
    {
        for (int i = 0; i < 80 && !HasFailure(); ++i)
            check(anyTest(2));
    }

    Dice dice{static_cast<std::uint64_t>(GetParam())};
    const Store store{freshPath(), {}, feedingModel()};
    const platform::Ref<os::StoreContext> context = store.makeContext();
    ObjectList authors;
    std::vector<std::string> texts{""};
};

TEST_P(TextFilterTest, AnswersAsMemoryDoesSavedAndUnsaved)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 8 && !HasFailure(); ++round) {
        checkMany();
        for (int i = 0; i < 6; ++i)
            edit();
        addAuthor();
        checkMany();
        must(context->save());
    }
}

// An entry may be missing in a store that others made, or be there without its text.
TEST_P(TextFilterTest, LosesNobodyWhoseEntryIsNotWritten)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
        const auto& author = dice.among(authors);
        if (const auto entry = author->related(author->slot("index")); entry && round % 2 == 0)
            context->deleteObject(*entry);
        else if (entry)
            entry->setValueForKey("text", Value());
        must(context->save());
        checkMany();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TextFilterTest, testing::Values(1, 2, 3, 4));

/// Whether SQL asks the index before it asks the test itself.
bool isFiltered(const PredicateRef& predicate, std::string_view entity = "Author")
{
    const auto condition = os::translate(
        *predicate, *feedingModel()->entity(entity), {.store = 1, .hasEveryEntry = [] { return true; }});
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
        {"city", Comparator::contains, exact, "ana", true},
        {"city", Comparator::equal, ignoringCase, "ana", true},
        {"city", Comparator::beginsWith, ignoringCaseAndDiacritics, "ana", true},
        {"city", Comparator::endsWith, exact, "ana", true},
        {"biography.text", Comparator::contains, ignoringCase, "ana", true},
        {"friend.city", Comparator::contains, exact, "ana", true},
        {"friend.biography.text", Comparator::contains, exact, "ana", true},
        {"index.text", Comparator::contains, exact, "ana", true},
        {"name", Comparator::contains, exact, "ana", true},
        {"city", Comparator::contains, exact, "\u00df\u00df", true},
        {"city", Comparator::contains, exact, "an", false},
        {"city", Comparator::contains, exact, "e\u0301\u0301\u0301", false},
        {"city", Comparator::notEqual, exact, "ana", false},
        {"city", Comparator::less, exact, "ana", false},
        {"name", Comparator::equal, exact, "ana", false},
        {"name", Comparator::beginsWith, exact, "ana", false},
        {"uniqueId", Comparator::contains, exact, "ana", false},
        {"city", Comparator::contains, exact, "ana\x81\x82", false},
    };
    for (const auto& one : cases) {
        const auto test = StorePredicate::compare(one.path, one.comparator, Value(one.text), one.option);
        EXPECT_EQ(isFiltered(test), one.isFiltered) << os::printed(*test);
    }
    const auto number = StorePredicate::compare("text", Comparator::contains, Value("960"));
    EXPECT_TRUE(isFiltered(StorePredicate::rows("handles", Rows::some, number)));
    EXPECT_FALSE(isFiltered(number, "Handle")) << "a row may have no owner";
    EXPECT_FALSE(isFiltered(
        StorePredicate::negation(StorePredicate::compare("city", Comparator::equal, Value("ana")))));
}

} // namespace
