// How a predicate is made, read and refused.
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/TortureModel.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateOperand;
using os::PredicateRef;
using os::Rows;
using os::StorePredicate;
using os::TextOption;
using platform::Value;

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
    const auto number = contains("number", "x");
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
        {StorePredicate::compare("age", Comparator::in, Value::array({Value(1), Value(2.5), Value(true)})),
            "age IN {1, 2.5, true}"},
        {StorePredicate::negation(contains("index.text", "x")), "NOT (index.text CONTAINS \"x\")"},
        {StorePredicate::any({StorePredicate::always(), StorePredicate::never()}), "(TRUE) OR (FALSE)"},
        {StorePredicate::rows("phones", Rows::some, StorePredicate::all({number, is("label", "y")})),
            "0 != SUBQUERY(phones, $rmo, ($rmo.number CONTAINS \"x\") AND ($rmo.label == \"y\")).@count"},
        {StorePredicate::rows("phones", Rows::none, is("kind.code", "y")),
            "0 == SUBQUERY(phones, $rmo, ($rmo.kind.code == \"y\")).@count"},
        {StorePredicate::rows("teams", Rows::some), "teams.@count > 0"},
        {StorePredicate::rows("teams", Rows::none), "teams.@count == 0"},
        {StorePredicate::compareBits("age", 128, Comparator::notEqual, 0), "bitwiseAnd:with:(age, 128) != 0"},
        {StorePredicate::isOneOf(PredicateOperand::named("ALL")), "self IN $ALL"},
        {StorePredicate::memberOfGroupOrBelow(PredicateOperand::named("TEAM"), "members", "children"),
            "self IN RECURSIVE($TEAM, members, children)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(os::printed(*row.predicate), row.text);
}

TEST(StorePredicate, SubstitutesNamedVariablesEverywhereAndSharesTheRest)
{
    const auto shared = is("name", "x");
    const auto variable = is("number", PredicateOperand::named("N"));
    const auto open = StorePredicate::all(
        {shared, StorePredicate::negation(StorePredicate::rows("phones", Rows::some, variable)),
            StorePredicate::compareBits("age", 1, Comparator::equal, PredicateOperand::named("M"))});
    const auto closed = open->substituting({{"N", Value("7")}, {"unused", Value(1)}});
    EXPECT_EQ(os::printed(*closed),
        "(name == \"x\") AND (NOT (0 != SUBQUERY(phones, $rmo, ($rmo.number == \"7\")).@count))"
        " AND (bitwiseAnd:with:(age, 1) == $M)");
    EXPECT_EQ(std::get<StorePredicate::Compound>(closed->form()).parts.front(), shared);
    EXPECT_EQ(os::printed(*open->substituting({{"N", platform::NullMarker()}, {"M", Value(2)}})),
        "(name == \"x\") AND (NOT (0 != SUBQUERY(phones, $rmo, ($rmo.number == null)).@count))"
        " AND (bitwiseAnd:with:(age, 1) == 2)");
}

TEST(StorePredicate, RefusesWhatTheEntityCannotBeAsked)
{
    const Store store(freshStorePath());
    const auto context = store.makeContext();
    const auto person = context->insertObjectOfEntity("Person");
    const auto phone = context->insertObjectOfEntity("Phone");
    phone->setValueForKey("uniqueId", "1");
    phone->setRelated(phone->slot("owner"), person.get());
    expected(context->save());
    const PredicateRef rows[]{is("nothing", 1), is("phones.number", "x"), is("phones", Value()),
        is("name.length", 1), is("name", PredicateOperand::named("X")),
        StorePredicate::rows("note", Rows::some), StorePredicate::rows("phones", Rows::some, is("name", 1)),
        StorePredicate::memberOfGroupOrBelow(Value(person), "members", "children")};
    for (const auto& predicate : rows) {
        SCOPED_TRACE(os::printed(*predicate));
        EXPECT_THROW(os::matches(*predicate, *person), std::invalid_argument);
        EXPECT_THROW(
            os::translate(*predicate, person->entity(), {store.store->number()}), std::invalid_argument);
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
            const auto back = StorePredicate::rows("members", Rows::none, inner);
            return StorePredicate::rows("teams", Rows::some, StorePredicate::all({is("name", "a"), back}));
        }},
    {"NOT rows OR",
        [](PredicateRef inner) {
            const auto back = StorePredicate::negation(StorePredicate::rows("members", Rows::none, inner));
            return StorePredicate::any({is("name", "a"), StorePredicate::rows("teams", Rows::some, back)});
        }},
};

// SQLite's parser has a small fixed stack: what goes beyond it must be left to memory, never fail.
TEST(StorePredicate, TranslatesNoDeeperThanSQLiteParses)
{
    const std::string path = freshStorePath();
    const Store store(path);
    const auto context = store.makeContext();
    const auto person = context->insertObjectOfEntity("Person");
    person->setValueForKey("name", "a");
    expected(context->save());
    for (const auto& [name, wrap] : kWraps) {
        auto predicate = is("name", "a");
        bool wasTranslated = true;
        for (int depth = 1; depth <= 60; ++depth) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(depth));
            predicate = wrap(predicate);
            const bool isTranslated =
                os::translate(*predicate, person->entity(), {store.store->number()}).has_value();
            EXPECT_TRUE(wasTranslated || !isTranslated);
            wasTranslated = isTranslated;
            const os::StoreFetch fetch(person->entity(), predicate);
            EXPECT_EQ(expected(context->countFetch(fetch)), os::matches(*predicate, *person) ? 1u : 0u);
        }
        EXPECT_FALSE(wasTranslated) << name;
    }
}

TEST(StorePredicate, AnswersLongListsAndLongChains)
{
    const Store store(freshStorePath());
    const auto context = store.makeContext();
    for (int i = 0; i < 50; ++i)
        context->insertObjectOfEntity("Person")->setValueForKey("name", "n" + std::to_string(i));
    expected(context->save());
    std::vector<PredicateRef> parts;
    std::vector<Value> names;
    for (int i = 0; i < 3000; ++i) {
        names.emplace_back("n" + std::to_string(i * 2));
        parts.push_back(is("name", names.back()));
    }
    const auto count = [&](const PredicateRef& predicate) {
        const auto& entity = *tortureModel()->entity("Person");
        EXPECT_TRUE(os::translate(*predicate, entity, {store.store->number()}));
        return expected(context->countFetch(os::StoreFetch(entity, predicate)));
    };
    EXPECT_EQ(count(StorePredicate::any(parts)), 25u);
    EXPECT_EQ(count(StorePredicate::negation(StorePredicate::any(parts))), 25u);
    EXPECT_EQ(count(StorePredicate::compare("name", Comparator::in, Value::array(names))), 25u);
}

TEST(StorePredicate, NamesWhatElseAnAnswerHangsOn)
{
    const auto team =
        platform::Ref<const os::StorePredicate>(StorePredicate::rows("teams", Rows::some, is("name", "x")));
    const struct {
        PredicateRef predicate;
        std::vector<std::string> entities;
    } rows[]{
        {is("name", "x"), {}},
        {is("note.text", "x"), {}},
        {StorePredicate::rows("phones", Rows::some, is("number", "x")), {}},
        {StorePredicate::rows("teams", Rows::some), {}},
        {StorePredicate::rows("phones", Rows::some, is("kind.code", "x")), {"Kind"}},
        {is("friend.note.text", "x"), {"Person", "Note"}},
        {StorePredicate::negation(team), {"Team"}},
    };
    for (const auto& row : rows) {
        std::vector<std::string> names;
        for (const auto* entity : os::entitiesBehind(*row.predicate, *tortureModel()->entity("Person")))
            names.push_back(entity->name());
        EXPECT_EQ(names, row.entities) << os::printed(*row.predicate);
    }
}

} // namespace
