// Do SQL, memory and a fetch give the answer that plain code gives, for every form of predicate?
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/PredicateWorld.h"
#include "objectstore/sqlite/Connection.h"
#include "platform/text/Fold.h"

#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateRef;
using os::Rows;
using os::StorePredicate;
using os::TextOption;

/// A predicate, and what plain code answers in its place.
struct Question {
    PredicateRef predicate;
    std::function<bool(const Thing&)> answer;
};

template <class T>
bool inOrder(const T& left, Comparator comparator, const T& right)
{
    switch (comparator) {
    case Comparator::equal:
        return left == right;
    case Comparator::notEqual:
        return left != right;
    case Comparator::less:
        return left < right;
    case Comparator::lessOrEqual:
        return left <= right;
    case Comparator::greater:
        return left > right;
    case Comparator::greaterOrEqual:
        return left >= right;
    default:
        return false;
    }
}

bool textsCompare(std::string_view left, Comparator comparator, std::string_view right, TextOption option)
{
    const auto seen = [option](std::string_view text) {
        if (option == TextOption::exact)
            return std::string(text);
        return option == TextOption::ignoringCase ? platform::foldCase(text)
                                                  : platform::foldCaseAndDiacritics(text);
    };
    const std::string a = seen(left), b = seen(right);
    if (comparator == Comparator::contains)
        return a.find(b) != std::string::npos;
    if (comparator == Comparator::beginsWith)
        return a.starts_with(b);
    if (comparator == Comparator::endsWith)
        return a.ends_with(b);
    return inOrder(a, comparator, b);
}

/// 64 bits of mantissa: exact for every number here.
long double amountOf(const Value& value)
{
    if (value.isDate())
        return value.asDate().seconds;
    return value.isReal() ? static_cast<long double>(value.asReal())
                          : static_cast<long double>(value.asInteger());
}

bool compares(const Value& left, Comparator comparator, const Value& right, TextOption option)
{
    if (right.isNothing())
        return left.isNothing() ? comparator == Comparator::equal : comparator == Comparator::notEqual;
    if (left.isNothing())
        return false;
    if (left.isString() != right.isString())
        return comparator == Comparator::notEqual;
    if (left.isString())
        return textsCompare(left.asText(), comparator, right.asText(), option);
    if (left.isData())
        return inOrder(left.asBytes(), comparator, right.asBytes());
    return inOrder(amountOf(left), comparator, amountOf(right));
}

/// What can be asked of things of an entity: comparisons of key paths, and tests of rows behind them.
struct Subject {
    std::vector<std::pair<const char*, const Pool*>> paths;
    std::vector<std::pair<const char*, const Subject*>> rows;
};

const Pool kNumbers = [] {
    Pool pool = kWholes;
    for (const auto* more : {&kReals, &kTruths})
        pool.insert(pool.end(), more->begin(), more->end());
    pool.insert(pool.end(), {3, "7"}); // no number is equal to a text
    return pool;
}();

const Subject kHandle{{{"text", &kTexts}, {"label", &kTexts}, {"site.name", &kTexts}}, {}};
const Subject kVolume{{{"genre", &kTexts}}, {}};
const Subject kBook{{{"genre", &kTexts}}, {{"volumes", &kVolume}}};
const Subject kAuthor{
    {{"name", &kTexts}, {"self.city", &kTexts}, {"uniqueId", &kTexts}, {"biography.text", &kTexts},
        {"index.text", &kTexts}, {"index.text", &kTexts}, {"friend.index.text", &kTexts},
        {"site.name", &kTexts}, {"friend.site.name", &kTexts}, {"friend.name", &kTexts},
        {"friend.biography.text", &kTexts}, {"visits", &kNumbers}, {"rating", &kNumbers},
        {"isLiving", &kNumbers}, {"nameLength", &kNumbers}, {"friend.visits", &kNumbers}, {"born", &kDates},
        {"seal", &kBytes}, {"portrait", &kBytes}},
    {{"handles", &kHandle}, {"books", &kBook}}};

/// Makes questions about a world.
class Asker {
public:
    Asker(Dice& dice, PredicateWorld& world) : _dice(dice), _world(world) { }

    Question question(int depth = 3)
    {
        switch (depth ? _dice.below(15) : 3 + _dice.below(12)) {
        case 0:
            return negation(question(depth - 1));
        case 1:
        case 2:
            return compound([&] { return question(depth - 1); });
        case 3:
            return bits();
        case 4:
            return list();
        case 5:
            return object();
        case 6:
            return membership();
        case 7:
        case 8:
            return rows(kAuthor);
        case 9:
            return _dice.chance(80) ? comparison(kAuthor) : constant();
        default:
            return comparison(kAuthor);
        }
    }

private:
    static Question negation(const Question& part)
    {
        return {StorePredicate::negation(part.predicate), [=](const Thing& t) { return !part.answer(t); }};
    }

    Question compound(const std::function<Question()>& next)
    {
        std::vector<Question> parts;
        std::vector<PredicateRef> predicates;
        for (std::size_t i = _dice.below(4); i > 0; --i) {
            parts.push_back(next());
            predicates.push_back(parts.back().predicate);
        }
        const bool isAll = _dice.chance(50);
        return {
            isAll ? StorePredicate::all(predicates) : StorePredicate::any(predicates), [=](const Thing& t) {
                const auto holds = [&](const Question& part) { return part.answer(t); };
                return isAll ? std::ranges::all_of(parts, holds) : std::ranges::any_of(parts, holds);
            }};
    }

    Question constant()
    {
        const bool value = _dice.chance(50);
        return {value ? StorePredicate::always() : StorePredicate::never(), [=](auto&) { return value; }};
    }

    Comparator anyComparator()
    {
        const auto comparator = static_cast<Comparator>(_dice.below(9));
        return comparator < Comparator::in ? comparator
                                           : static_cast<Comparator>(static_cast<int>(comparator) + 1);
    }
    TextOption anyOption() { return static_cast<TextOption>(_dice.below(3)); }

    Question comparison(const Subject& subject)
    {
        const auto& [path, pool] = _dice.among(subject.paths);
        const auto comparator = anyComparator();
        const auto option = anyOption();
        const Value right = _world.any(*pool);
        return {StorePredicate::compare(path, comparator, right, option),
            [=, path = path](const Thing& t) { return compares(t.at(path), comparator, right, option); }};
    }

    Question bits()
    {
        const std::int64_t mask = _dice.among(kWholes).asInteger();
        const auto comparator = anyComparator();
        const Value right = _world.any(_dice.chance(50) ? kWholes : kReals);
        return {StorePredicate::compareBits("visits", mask, comparator, right), [=](const Thing& t) {
                    const Value visits = t.at("visits");
                    const Value masked = visits.isNothing() ? Value() : Value(visits.asInteger() & mask);
                    return compares(masked, comparator, right, TextOption::exact);
                }};
    }

    Question list()
    {
        std::vector<Value> elements;
        for (std::size_t i = _dice.below(14); i > 0; --i)
            elements.push_back(_world.any(_dice.chance(70) ? kTexts : kNumbers));
        static const char* const keys[]{"name", "name", "visits", "rating"};
        const std::string key = _dice.among(keys);
        const auto option = anyOption();
        return {StorePredicate::compare(key, Comparator::in, Value::array(elements), option),
            [=](const Thing& t) {
                return std::ranges::any_of(elements, [&](const Value& element) {
                    return !element.isNothing() && compares(t.at(key), Comparator::equal, element, option);
                });
            }};
    }

    /// Now and then it is an object that is not there.
    Question object()
    {
        const Thing* const wanted = _dice.chance(15) ? nullptr : &_world.anyOf(_world.authors);
        const Value value(wanted ? wanted->object : ObjectRef());
        const bool isEqual = _dice.chance(50);
        const auto comparator = isEqual ? Comparator::equal : Comparator::notEqual;
        switch (_dice.below(4)) {
        case 0:
            return {StorePredicate::compare(os::kSelf, comparator, value),
                [=](const Thing& t) { return wanted ? (&t == wanted) == isEqual : !isEqual; }};
        case 1:
            return {StorePredicate::compare("friend", comparator, value), [=](const Thing& t) {
                        const auto& friends = t.behind("friend");
                        if (!wanted)
                            return friends.empty() == isEqual;
                        return !friends.empty() && (friends.front() == wanted) == isEqual;
                    }};
        case 2:
            return {StorePredicate::compare("biography", comparator, Value()),
                [=](const Thing& t) { return t.behind("biography").empty() == isEqual; }};
        default: {
            const Thing* const other = &_world.anyOf(_world.authors);
            return {StorePredicate::isOneOf(Value::array({value, Value(other->object), Value(1)})),
                [=](const Thing& t) { return &t == wanted || &t == other; }};
        }
        }
    }

    Question ofRow(const Subject& subject)
    {
        if (!subject.rows.empty() && _dice.chance(30))
            return rows(subject);
        if (_dice.chance(60))
            return comparison(subject);
        return _dice.chance(30) ? negation(comparison(subject))
                                : compound([&] { return comparison(subject); });
    }

    Question rows(const Subject& subject)
    {
        const auto& [key, row] = _dice.among(subject.rows);
        const bool some = _dice.chance(50), isCount = _dice.chance(20);
        const auto wanted = some ? Rows::some : Rows::none;
        const auto condition = ofRow(*row);
        return {isCount ? StorePredicate::rows(key, wanted)
                        : StorePredicate::rows(key, wanted, condition.predicate),
            [=, key = key](const Thing& t) {
                const auto fits = [&](const Thing* one) { return isCount || condition.answer(*one); };
                return std::ranges::any_of(t.behind(key), fits) == some;
            }};
    }

    static void gather(const Thing& book, std::set<const Thing*>& found)
    {
        if (found.insert(&book).second)
            for (const auto* volume : book.behind("volumes"))
                gather(*volume, found);
    }

    Question membership()
    {
        const Thing* const book = &_world.anyOf(_world.books);
        return {StorePredicate::memberOfGroupOrBelow(Value(book->object), "authors", "volumes"),
            [=](const Thing& t) {
                std::set<const Thing*> below;
                gather(*book, below);
                return std::ranges::any_of(
                    t.behind("books"), [&](const Thing* one) { return below.contains(one); });
            }};
    }

    Dice& _dice;
    PredicateWorld& _world;
};

/// Runs translated conditions on a connection of its own.
class RawStore {
public:
    explicit RawStore(const std::string& path)
        : _connection(path, os::sqlite::Connection::Access::readWrite, "", 1)
    {
        os::registerPredicateFunctions(_connection.native());
    }

    std::set<std::int64_t> keys(const os::SQLCondition& condition)
    {
        os::sqlite::Statement statement(
            _connection.native(), "SELECT _key FROM author WHERE " + condition.sql, false);
        for (std::size_t i = 0; i < condition.arguments.size(); ++i)
            bind(statement, static_cast<int>(i + 1), condition.arguments[i]);
        std::set<std::int64_t> keys;
        while (statement.step())
            keys.insert(statement.integer(0));
        return keys;
    }

private:
    static void bind(os::sqlite::Statement& statement, int at, const Value& value)
    {
        if (value.isString())
            statement.bindText(at, value.asText());
        else if (value.isData())
            statement.bindBytes(at, value.asBytes());
        else if (value.isReal())
            statement.bind(at, value.asReal());
        else
            statement.bind(at, value.asInteger());
    }

    os::sqlite::Connection _connection;
};

class PredicateAgreement : public testing::TestWithParam<int> {
protected:
    std::set<std::int64_t> expectedKeys(const Question& question) const
    {
        std::set<std::int64_t> keys;
        for (const auto& author : world.authors)
            if (question.answer(*author))
                keys.insert(author->object->key());
        return keys;
    }

    /// Whether the saved state answers right, with the text index and without it.
    void checkSQL(const Question& question)
    {
        SCOPED_TRACE(os::printed(*question.predicate));
        for (const bool usesTextIndex : {true, false}) {
            const auto condition = os::translate(
                *question.predicate, entityNamed("Author"), {store.store->number(), usesTextIndex});
            translated += condition.has_value();
            if (condition) {
                SCOPED_TRACE(condition->sql);
                EXPECT_EQ(raw.keys(*condition), expectedKeys(question));
            }
        }
    }

    /// Whether each object in memory does, and a fetch with what is not saved.
    void check(const Question& question)
    {
        SCOPED_TRACE(os::printed(*question.predicate));
        for (const auto& author : world.authors)
            EXPECT_EQ(os::matches(*question.predicate, *author->object), question.answer(*author))
                << author->object->description();
        const os::StoreFetch fetch(entityNamed("Author"), question.predicate);
        std::set<std::int64_t> keys;
        for (const auto& object : must(world.context->runFetch(fetch)))
            keys.insert(object->key());
        EXPECT_EQ(keys, expectedKeys(question));
        EXPECT_EQ(must(world.context->countFetch(fetch)), keys.size());
    }

    Dice dice{static_cast<std::uint64_t>(GetParam())};
    const std::string path = freshPath();
    const Store store{path};
    PredicateWorld world{dice, store};
    Asker asker{dice, world};
    RawStore raw{path};
    int translated = 0;
};

TEST_P(PredicateAgreement, OfPlainCodeMemorySQLAndFetchesThroughEditsAndSaves)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 12 && !HasFailure(); ++round) {
        for (int i = 0; i < 60 && !HasFailure(); ++i)
            check(asker.question());
        must(world.context->save());
        for (int i = 0; i < 120 && !HasFailure(); ++i)
            checkSQL(asker.question());
        for (int i = 0; i < 25; ++i)
            world.edit();
    }
    EXPECT_GT(translated, 12 * 120) << "SQL answered too few of the questions to tell anything";
}

INSTANTIATE_TEST_SUITE_P(Seeds, PredicateAgreement, testing::Values(1, 2, 3));

} // namespace
