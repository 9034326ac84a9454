// How a predicate is made, read and refused.
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/TestStore.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateOperand;
using os::PredicateRef;
using os::Rows;
using os::StorePredicate;
using os::TextOption;

PredicateRef is(std::string_view key, PredicateOperand value)
{
    return StorePredicate::compare(key, Comparator::equal, std::move(value));
}

PredicateRef contains(std::string_view key, PredicateOperand value, TextOption option = TextOption::exact)
{
    return StorePredicate::compare(key, Comparator::contains, std::move(value), option);
}

TEST(StorePredicate, PrintsInTheSyntaxThatPeopleWrite)
{
    const auto text = contains("text", "x");
    const struct {
        PredicateRef predicate;
        const char* text;
    } rows[]{
        {is("uniqueId", PredicateOperand::named("UNIQUE_ID")), "uniqueId == $UNIQUE_ID"},
        {StorePredicate::all({is("uniqueId", "a"), is("owner", PredicateOperand::named("OWNER"))}),
            "(uniqueId == \"a\") AND (owner == $OWNER)"},
        {StorePredicate::isAbsent("name"), "name == null"},
        {StorePredicate::isPresent("name"), "name != null"},
        {StorePredicate::compare("name", Comparator::equal, "a\"\\\n", TextOption::ignoringCaseAndDiacritics),
            "name ==[cd] \"a\\\"\\\\\\u000a\""},
        {StorePredicate::compare("name", Comparator::endsWith, "a", TextOption::ignoringCase),
            "name ENDSWITH[c] \"a\""},
        {StorePredicate::compare("visits", Comparator::in, Value::array({Value(1), Value(2.5), Value(true)})),
            "visits IN {1, 2.5, true}"},
        {StorePredicate::negation(contains("index.text", "x")), "NOT (index.text CONTAINS \"x\")"},
        {StorePredicate::any({StorePredicate::always(), StorePredicate::never()}), "(TRUE) OR (FALSE)"},
        {StorePredicate::rows("handles", Rows::some, StorePredicate::all({text, is("label", "y")})),
            "0 != SUBQUERY(handles, $rmo, ($rmo.text CONTAINS \"x\") AND ($rmo.label == \"y\")).@count"},
        {StorePredicate::rows("handles", Rows::none, is("site.name", "y")),
            "0 == SUBQUERY(handles, $rmo, ($rmo.site.name == \"y\")).@count"},
        {StorePredicate::rows("books", Rows::some), "books.@count > 0"},
        {StorePredicate::rows("books", Rows::none), "books.@count == 0"},
        {StorePredicate::compareBits("visits", 128, Comparator::notEqual, 0),
            "bitwiseAnd:with:(visits, 128) != 0"},
        {StorePredicate::isOneOf(PredicateOperand::named("ALL")), "self IN $ALL"},
        {StorePredicate::memberOfGroupOrBelow(PredicateOperand::named("BOOK"), "authors", "volumes"),
            "self IN RECURSIVE($BOOK, authors, volumes)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(os::printed(*row.predicate), row.text);
}

TEST(StorePredicate, SubstitutesNamedVariablesEverywhereAndSharesTheRest)
{
    const auto shared = is("name", "x");
    const auto variable = is("text", PredicateOperand::named("N"));
    const auto open = StorePredicate::all(
        {shared, StorePredicate::negation(StorePredicate::rows("handles", Rows::some, variable)),
            StorePredicate::compareBits("visits", 1, Comparator::equal, PredicateOperand::named("M"))});
    const auto closed = open->substituting({{"N", Value("7")}, {"unused", Value(1)}});
    EXPECT_EQ(os::printed(*closed),
        "(name == \"x\") AND (NOT (0 != SUBQUERY(handles, $rmo, ($rmo.text == \"7\")).@count))"
        " AND (bitwiseAnd:with:(visits, 1) == $M)");
    EXPECT_EQ(std::get<StorePredicate::Compound>(closed->form()).parts.front(), shared);
    EXPECT_EQ(os::printed(*open->substituting({{"N", platform::NullMarker()}, {"M", Value(2)}})),
        "(name == \"x\") AND (NOT (0 != SUBQUERY(handles, $rmo, ($rmo.text == null)).@count))"
        " AND (bitwiseAnd:with:(visits, 1) == 2)");
}

TEST(StorePredicate, RefusesWhatTheEntityCannotBeAsked)
{
    const Store store;
    const auto context = store.makeContext();
    const auto author = context->insertObjectOfEntity("Author");
    const auto handle = context->insertObjectOfEntity("Handle");
    handle->setValueForKey("uniqueId", "1");
    handle->setRelated(handle->slot("owner"), author.get());
    must(context->save());
    const PredicateRef rows[]{is("nothing", 1), is("handles.text", "x"), is("handles", Value()),
        is("name.length", 1), is("name", PredicateOperand::named("X")),
        StorePredicate::rows("biography", Rows::some),
        StorePredicate::rows("handles", Rows::some, is("name", 1)),
        StorePredicate::memberOfGroupOrBelow(Value(author), "authors", "volumes")};
    for (const auto& predicate : rows) {
        SCOPED_TRACE(os::printed(*predicate));
        EXPECT_THROW(os::matches(*predicate, *author), std::invalid_argument);
        EXPECT_THROW(
            os::translate(*predicate, author->entity(), {store.store->number()}), std::invalid_argument);
    }
    EXPECT_THROW(StorePredicate::compare("name", Comparator::in, "no list"), std::invalid_argument);
}

TEST(StorePredicate, RefusesATreeThatWouldExhaustTheStack)
{
    auto predicate = StorePredicate::always();
    for (int i = 1; i < StorePredicate::kMaximumDepth; ++i)
        predicate = StorePredicate::negation(predicate);
    EXPECT_THROW(StorePredicate::negation(predicate), std::invalid_argument);
    EXPECT_EQ(os::printed(*predicate).size(), 4 + 6u * (StorePredicate::kMaximumDepth - 1));
}

/// Every way to nest, each wrapped around what it is given.
using Wrap = PredicateRef (*)(PredicateRef);
const struct {
    const char* name;
    Wrap wrap;
} kWraps[]{
    {"NOT", [](PredicateRef inner) { return StorePredicate::negation(inner); }},
    {"NOT AND",
        [](PredicateRef inner) {
            return StorePredicate::negation(StorePredicate::all({is("name", "a"), inner, is("city", "b")}));
        }},
    {"rows",
        [](PredicateRef inner) {
            const auto back = StorePredicate::rows("authors", Rows::none, inner);
            return StorePredicate::rows("books", Rows::some, StorePredicate::all({is("genre", "a"), back}));
        }},
    {"NOT rows OR",
        [](PredicateRef inner) {
            const auto back = StorePredicate::negation(StorePredicate::rows("authors", Rows::none, inner));
            return StorePredicate::any({is("name", "a"), StorePredicate::rows("books", Rows::some, back)});
        }},
};

// SQLite's parser has a small fixed stack: what goes beyond it must be left to memory, never fail.
TEST(StorePredicate, TranslatesNoDeeperThanSQLiteParses)
{
    const Store store;
    const auto context = store.makeContext();
    const auto author = context->insertObjectOfEntity("Author");
    author->setValueForKey("name", "a");
    must(context->save());
    for (const auto& [name, wrap] : kWraps) {
        auto predicate = is("name", "a");
        bool wasTranslated = true;
        for (int depth = 1; depth <= 60; ++depth) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(depth));
            predicate = wrap(predicate);
            const bool isTranslated =
                os::translate(*predicate, author->entity(), {store.store->number()}).has_value();
            EXPECT_TRUE(wasTranslated || !isTranslated);
            wasTranslated = isTranslated;
            const os::StoreFetch fetch(author->entity(), predicate);
            EXPECT_EQ(must(context->countFetch(fetch)), os::matches(*predicate, *author) ? 1u : 0u);
        }
        EXPECT_FALSE(wasTranslated) << name;
    }
}

TEST(StorePredicate, AnswersLongListsAndLongChains)
{
    const Store store;
    const auto context = store.makeContext();
    for (int i = 0; i < 50; ++i)
        context->insertObjectOfEntity("Author")->setValueForKey("name", "n" + std::to_string(i));
    must(context->save());
    std::vector<PredicateRef> parts;
    std::vector<Value> names;
    for (int i = 0; i < 3000; ++i) {
        names.emplace_back("n" + std::to_string(i * 2));
        parts.push_back(is("name", names.back()));
    }
    const auto count = [&](const PredicateRef& predicate) {
        const auto& entity = entityNamed("Author");
        EXPECT_TRUE(os::translate(*predicate, entity, {store.store->number()}));
        return must(context->countFetch(os::StoreFetch(entity, predicate)));
    };
    EXPECT_EQ(count(StorePredicate::any(parts)), 25u);
    EXPECT_EQ(count(StorePredicate::negation(StorePredicate::any(parts))), 25u);
    EXPECT_EQ(count(StorePredicate::compare("name", Comparator::in, Value::array(names))), 25u);
}

TEST(StorePredicate, NamesWhatElseAnAnswerHangsOn)
{
    const auto book = StorePredicate::rows("books", Rows::some, is("genre", "x"));
    const struct {
        PredicateRef predicate;
        std::vector<std::string> entities;
    } rows[]{
        {is("name", "x"), {}},
        {is("biography.text", "x"), {}},
        {StorePredicate::rows("handles", Rows::some, is("text", "x")), {}},
        {StorePredicate::rows("books", Rows::some), {}},
        {StorePredicate::rows("handles", Rows::some, is("site.name", "x")), {"Site"}},
        {is("friend.biography.text", "x"), {"Author", "Biography"}},
        {StorePredicate::negation(book), {"Book"}},
    };
    for (const auto& row : rows) {
        std::vector<std::string> names;
        for (const auto* entity : os::entitiesBehind(*row.predicate, entityNamed("Author")))
            names.push_back(entity->name());
        EXPECT_EQ(names, row.entities) << os::printed(*row.predicate);
    }
}

} // namespace
