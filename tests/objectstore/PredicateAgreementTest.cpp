// Do SQL, memory and a fetch give the answer that plain code gives, for every form of predicate?
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicatePrinter.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/PredicateWorld.h"
#include "platform/text/Fold.h"

#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace {

using namespace test;
using os::Comparator;
using os::PredicateRef;
using os::Rows;
using os::StorePredicate;
using os::TextOption;
using platform::Value;

/// A predicate, and what plain code answers in its place.
template <class Subject>
struct Question {
    PredicateRef predicate;
    std::function<bool(const Subject&)> answer;
};
using PersonQuestion = Question<PlainPerson>;
using PhoneQuestion = Question<PlainPhone>;

bool inOrder(auto left, Comparator comparator, auto right)
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
    default:
        return left >= right;
    }
}

std::string seen(const std::string& text, TextOption option)
{
    return platform::transformed(text,
        option == TextOption::exact              ? 0
            : option == TextOption::ignoringCase ? 1
                                                 : 3);
}

bool plainText(const Text& left, Comparator comparator, TextOption option, const Text& right)
{
    if (!right)
        return comparator == Comparator::equal ? !left : comparator == Comparator::notEqual && left;
    if (!left)
        return false;
    const bool isExact = option == TextOption::exact;
    const std::string a = isExact ? *left : seen(*left, option), b = isExact ? *right : seen(*right, option);
    if (comparator == Comparator::contains)
        return a.find(b) != std::string::npos;
    if (comparator == Comparator::beginsWith)
        return a.starts_with(b);
    if (comparator == Comparator::endsWith)
        return a.ends_with(b);
    return inOrder(a, comparator, b);
}

using Number = std::optional<long double>; // 64 bits of mantissa: exact for every number here
Number number(auto value) { return value ? Number(static_cast<long double>(*value)) : Number(); }

bool plainNumber(Number left, Comparator comparator, Number right)
{
    if (!right)
        return comparator == Comparator::equal ? !left : comparator == Comparator::notEqual && left;
    return left && comparator <= Comparator::greaterOrEqual && inOrder(*left, comparator, *right);
}

Value valueOf(const Text& text) { return text ? Value(*text) : Value(); }

/// Makes questions about a world.
class Asker {
public:
    Asker(Dice& dice, PredicateWorld& world) : _dice(dice), _world(world) { }

    PersonQuestion question(int depth = 3)
    {
        switch (depth ? _dice.below(14) : 3 + _dice.below(11)) {
        case 0:
            return negation(question(depth - 1));
        case 1:
        case 2:
            return compound<PlainPerson>([&] { return question(depth - 1); });
        case 3:
        case 4:
        case 5:
            return text();
        case 6:
            return wholeOrReal();
        case 7:
            return bits();
        case 8:
            return list();
        case 9:
            return object();
        case 10:
            return bytesOrDate();
        case 11:
            return _dice.chance(50) ? phoneRows() : membership();
        case 12:
            return otherRows();
        default:
            return _dice.chance(90) ? text() : constant();
        }
    }

    PhoneQuestion phoneQuestion(int depth = 1)
    {
        if (depth && _dice.chance(40))
            return _dice.chance(30) ? negation(phoneQuestion(0))
                                    : compound<PlainPhone>([&] { return phoneQuestion(0); });
        const auto comparator = anyComparator();
        const auto option = anyOption();
        const Text right = _world.anyText();
        switch (_dice.below(3)) {
        case 0:
            return {StorePredicate::compare("number", comparator, valueOf(right), option),
                [=](const PlainPhone& p) { return plainText(p.number, comparator, option, right); }};
        case 1:
            return {StorePredicate::compare("label", comparator, valueOf(right), option),
                [=](const PlainPhone& p) { return plainText(p.label, comparator, option, right); }};
        default:
            return {StorePredicate::compare("kind.code", comparator, valueOf(right), option),
                [=, this](const PlainPhone& p) {
                    return plainText(_world.codeOf(p.kind), comparator, option, right);
                }};
        }
    }

private:
    template <class Subject>
    static Question<Subject> negation(Question<Subject> part)
    {
        return {StorePredicate::negation(part.predicate), [=](const Subject& s) { return !part.answer(s); }};
    }

    template <class Subject>
    Question<Subject> compound(const std::function<Question<Subject>()>& next)
    {
        std::vector<Question<Subject>> parts;
        std::vector<PredicateRef> predicates;
        for (std::size_t i = _dice.below(4); i > 0; --i) {
            parts.push_back(next());
            predicates.push_back(parts.back().predicate);
        }
        const bool isAll = _dice.chance(50);
        return {
            isAll ? StorePredicate::all(predicates) : StorePredicate::any(predicates), [=](const Subject& s) {
                for (const auto& part : parts)
                    if (part.answer(s) != isAll)
                        return !isAll;
                return isAll;
            }};
    }

    PersonQuestion constant()
    {
        const bool value = _dice.chance(50);
        return {value ? StorePredicate::always() : StorePredicate::never(),
            [=](const PlainPerson&) { return value; }};
    }

    const PlainPerson* friendOf(const PlainPerson& person) const
    {
        return person.friendOf ? &_world.people[*person.friendOf] : nullptr;
    }

    struct TextPath {
        const char* path;
        std::function<Text(const PlainPerson&)> read;
    };

    TextPath textPath() const
    {
        const auto ofFriend = [this](auto read) {
            return [this, read](const PlainPerson& p) { return friendOf(p) ? read(*friendOf(p)) : Text(); };
        };
        const auto code = [this](const PlainPerson& p) { return _world.codeOf(p.kind); };
        const auto indexText = [](const PlainPerson& p) { return p.indexText; };
        const TextPath paths[]{{"name", [](const PlainPerson& p) { return p.name; }},
            {"self.city", [](const PlainPerson& p) { return p.city; }},
            {"uniqueId", [](const PlainPerson& p) { return p.uniqueId; }},
            {"note.text", [](const PlainPerson& p) { return p.noteText; }}, {"index.text", indexText},
            {"index.text", indexText}, {"friend.index.text", ofFriend(indexText)}, {"kind.code", code},
            {"friend.kind.code", ofFriend(code)},
            {"friend.name", ofFriend([](const PlainPerson& p) { return p.name; })},
            {"friend.note.text", ofFriend([](const PlainPerson& p) { return p.noteText; })}};
        return _dice.among(paths);
    }

    Comparator anyComparator()
    {
        const auto comparator = static_cast<Comparator>(_dice.below(9));
        return comparator < Comparator::in ? comparator
                                           : static_cast<Comparator>(static_cast<int>(comparator) + 1);
    }
    TextOption anyOption() { return static_cast<TextOption>(_dice.below(3)); }

    PersonQuestion text()
    {
        const auto path = textPath();
        const auto comparator = anyComparator();
        const auto option = anyOption();
        const Text right = _world.anyText();
        return {StorePredicate::compare(path.path, comparator, valueOf(right), option),
            [=](const PlainPerson& p) { return plainText(path.read(p), comparator, option, right); }};
    }

    /// A whole, floating or boolean constant, no value, or a text, which no number is equal to.
    Value anyNumber()
    {
        const auto whole = _world.anyWhole();
        const auto real = _world.anyReal();
        switch (_dice.below(4)) {
        case 0:
            return whole ? Value(*whole) : Value();
        case 1:
            return real ? Value(*real) : Value();
        case 2:
            return Value(_dice.chance(50));
        default:
            return Value(_dice.below(4));
        }
    }

    static Number numberOf(const Value& value)
    {
        if (value.isNothing())
            return {};
        return value.isReal() ? Number(value.asReal()) : Number(value.asInteger());
    }

    PersonQuestion wholeOrReal()
    {
        struct Path {
            const char* path;
            std::function<Number(const PlainPerson&)> read;
        };
        const Path paths[]{{"age", [](const PlainPerson& p) { return number(p.age); }},
            {"height", [](const PlainPerson& p) { return number(p.height); }},
            {"isMember", [](const PlainPerson& p) { return number(p.isMember); }},
            {"nameLength", [](const PlainPerson& p) { return p.name ? Number(p.name->size()) : Number(); }},
            {"friend.age",
                [this](const PlainPerson& p) { return friendOf(p) ? number(friendOf(p)->age) : Number(); }}};
        const auto path = _dice.among(paths);
        const auto comparator = anyComparator();
        if (_dice.chance(15))
            return {StorePredicate::compare(path.path, comparator, Value("7")),
                [=](const PlainPerson& p) { return comparator == Comparator::notEqual && path.read(p); }};
        const Value right = anyNumber();
        return {StorePredicate::compare(path.path, comparator, right),
            [=](const PlainPerson& p) { return plainNumber(path.read(p), comparator, numberOf(right)); }};
    }

    PersonQuestion bits()
    {
        const std::int64_t mask = _world.anyWhole().value_or(128);
        const auto comparator = anyComparator();
        const Value right = anyNumber();
        return {StorePredicate::compareBits("age", mask, comparator, right), [=](const PlainPerson& p) {
                    const auto masked = p.age ? std::optional(*p.age & mask) : std::nullopt;
                    return plainNumber(number(masked), comparator, numberOf(right));
                }};
    }

    PersonQuestion bytesOrDate()
    {
        const auto comparator = anyComparator();
        if (_dice.chance(50)) {
            const auto right = _world.anyReal();
            return {
                StorePredicate::compare("born", comparator, right ? Value(platform::Date{*right}) : Value()),
                [=](const PlainPerson& p) { return plainNumber(number(p.born), comparator, number(right)); }};
        }
        const bool isPicture = _dice.chance(50);
        const Text right = _world.anyText();
        return {StorePredicate::compare(
                    isPicture ? "picture" : "token", comparator, right ? Value::data(*right) : Value()),
            [=](const PlainPerson& p) {
                return comparator <= Comparator::greaterOrEqual
                    && plainText(isPicture ? p.picture : p.token, comparator, TextOption::exact, right);
            }};
    }

    PersonQuestion list()
    {
        std::vector<Value> elements;
        for (std::size_t i = _dice.below(14); i > 0; --i)
            elements.push_back(_dice.chance(70) ? valueOf(_world.anyText()) : anyNumber());
        if (_dice.chance(50)) {
            const auto option = anyOption();
            return {StorePredicate::compare("name", Comparator::in, Value::array(elements), option),
                [=](const PlainPerson& p) {
                    for (const auto& element : elements)
                        if (element.isString()
                            && plainText(p.name, Comparator::equal, option, std::string(element.asText())))
                            return true;
                    return false;
                }};
        }
        const bool isAge = _dice.chance(50);
        return {StorePredicate::compare(isAge ? "age" : "height", Comparator::in, Value::array(elements)),
            [=](const PlainPerson& p) {
                for (const auto& element : elements)
                    if (element.isNumber()
                        && plainNumber(
                            isAge ? number(p.age) : number(p.height), Comparator::equal, numberOf(element)))
                        return true;
                return false;
            }};
    }

    PersonQuestion object()
    {
        const std::size_t at = _dice.below(_world.people.size());
        const os::ObjectRef wanted = _world.people[at].object;
        const bool isEqual = _dice.chance(50);
        const auto comparator = isEqual ? Comparator::equal : Comparator::notEqual;
        const bool exists = wanted != nullptr;
        switch (_dice.below(4)) {
        case 0:
            return {StorePredicate::compare(os::kSelf, comparator, Value(wanted)),
                [=](const PlainPerson& p) { return exists ? (p.object == wanted) == isEqual : !isEqual; }};
        case 1:
            return {StorePredicate::compare("friend", comparator, Value(wanted)), [=](const PlainPerson& p) {
                        if (!exists)
                            return p.friendOf.has_value() != isEqual;
                        return p.friendOf && (p.friendOf == at) == isEqual;
                    }};
        case 2:
            return {StorePredicate::compare("note", comparator, Value()),
                [=](const PlainPerson& p) { return (p.note == nullptr) == isEqual; }};
        default: {
            const os::ObjectRef other = _dice.among(_world.people).object;
            return {StorePredicate::isOneOf(Value::array({Value(wanted), Value(other), Value(1)})),
                [=](const PlainPerson& p) { return p.object == wanted || p.object == other; }};
        }
        }
    }

    PersonQuestion phoneRows()
    {
        const auto condition = phoneQuestion();
        const bool some = _dice.chance(50);
        const bool isCount = _dice.chance(20);
        const auto wanted = some ? Rows::some : Rows::none;
        return {isCount ? StorePredicate::rows("phones", wanted)
                        : StorePredicate::rows("phones", wanted, condition.predicate),
            [=](const PlainPerson& p) {
                const auto fits = [&](const PlainPhone& phone) { return isCount || condition.answer(phone); };
                return std::any_of(p.phones.begin(), p.phones.end(), fits) == some;
            }};
    }

    PersonQuestion otherRows()
    {
        const auto comparator = anyComparator();
        const Text right = _world.anyText();
        const bool some = _dice.chance(50);
        const auto wanted = some ? Rows::some : Rows::none;
        const auto fits = [=](const Text& text) {
            return plainText(text, comparator, TextOption::exact, right);
        };
        const auto compare = [&](const char* key) {
            return StorePredicate::compare(key, comparator, valueOf(right));
        };
        switch (_dice.below(4)) {
        case 0:
            return {StorePredicate::rows("tags", wanted, compare("word")), [=](const PlainPerson& p) {
                        return std::any_of(p.tags.begin(), p.tags.end(), fits) == some;
                    }};
        case 1:
            return {StorePredicate::rows("teams", wanted),
                [=](const PlainPerson& p) { return !p.teams.empty() == some; }};
        case 2:
            return {StorePredicate::rows("teams", wanted, compare("name")), [=, this](const PlainPerson& p) {
                        return std::any_of(p.teams.begin(), p.teams.end(), [&](auto team) {
                            return fits(_world.teams[team].name);
                        }) == some;
                    }};
        default:
            return {StorePredicate::rows(
                        "teams", wanted, StorePredicate::rows("children", Rows::some, compare("name"))),
                [=, this](const PlainPerson& p) {
                    for (const auto team : p.teams)
                        for (const auto child : _world.teams[team].children)
                            if (fits(_world.teams[child].name))
                                return some;
                    return !some;
                }};
        }
    }

    PersonQuestion membership()
    {
        const std::size_t team = _dice.below(_world.teams.size());
        return {StorePredicate::memberOfGroupOrBelow(Value(_world.teams[team].object), "members", "children"),
            [=, this](const PlainPerson& p) {
                for (const auto below : _world.below(team))
                    if (p.teams.contains(below))
                        return true;
                return false;
            }};
    }

    Dice& _dice;
    PredicateWorld& _world;
};

/// Runs translated conditions on a connection of its own.
class RawStore {
public:
    explicit RawStore(const std::string& path)
    {
        sqlite3_open_v2(path.c_str(), &_connection, SQLITE_OPEN_READWRITE, nullptr);
        os::registerPredicateFunctions(_connection);
    }
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;
    ~RawStore() { sqlite3_close(_connection); }

    std::set<std::int64_t> keys(const char* table, const os::SQLCondition& condition)
    {
        sqlite3_stmt* statement = nullptr;
        const std::string sql = std::string("SELECT _key FROM ") + table + " WHERE " + condition.sql;
        if (sqlite3_prepare_v2(_connection, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            ADD_FAILURE() << sqlite3_errmsg(_connection) << "\n" << sql;
        for (std::size_t i = 0; i < condition.arguments.size(); ++i)
            bind(statement, static_cast<int>(i + 1), condition.arguments[i]);
        std::set<std::int64_t> keys;
        while (sqlite3_step(statement) == SQLITE_ROW)
            keys.insert(sqlite3_column_int64(statement, 0));
        EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK) << sqlite3_errmsg(_connection) << "\n" << sql;
        return keys;
    }

private:
    static void bind(sqlite3_stmt* statement, int at, const Value& value)
    {
        if (value.isString())
            sqlite3_bind_text(statement, at, value.asText().data(), static_cast<int>(value.asText().size()),
                SQLITE_TRANSIENT);
        else if (value.isData())
            sqlite3_bind_blob(statement, at, value.asBytes().data(), static_cast<int>(value.asBytes().size()),
                SQLITE_TRANSIENT);
        else if (value.isReal())
            sqlite3_bind_double(statement, at, value.asReal());
        else
            sqlite3_bind_int64(statement, at, value.asInteger());
    }

    sqlite3* _connection = nullptr;
};

class PredicateAgreement : public testing::TestWithParam<int> {
protected:
    PredicateAgreement()
    {
        for (int i = 0; i < 6; ++i)
            world.addTeam();
        for (int i = 0; i < 30; ++i)
            world.addPerson();
    }

    std::set<std::int64_t> expectedKeys(const PersonQuestion& question) const
    {
        std::set<std::int64_t> keys;
        for (const auto& person : world.people)
            if (person.object && question.answer(person))
                keys.insert(person.object->key());
        return keys;
    }

    /// Whether the saved state answers right, with the text index and without it.
    void checkSQL(const PersonQuestion& question)
    {
        const auto& entity = *tortureModel()->entity("Person");
        for (const bool usesTextIndex : {true, false}) {
            const auto condition =
                os::translate(*question.predicate, entity, {store.store->number(), usesTextIndex});
            translated += condition.has_value();
            if (condition) {
                EXPECT_EQ(raw.keys("person", *condition), expectedKeys(question)) << os::printed(
                    *question.predicate) << "\n" << condition->sql;
            }
        }
    }

    void checkMemory(const PersonQuestion& question)
    {
        for (const auto& person : world.people)
            if (person.object) {
                EXPECT_EQ(os::matches(*question.predicate, *person.object), question.answer(person))
                    << os::printed(*question.predicate) << " of " << person.object->description();
            }
    }

    void checkFetch(const PersonQuestion& question)
    {
        const os::StoreFetch fetch(*tortureModel()->entity("Person"), question.predicate);
        std::set<std::int64_t> keys;
        for (const auto& object : expected(world.context->runFetch(fetch)))
            keys.insert(object->key());
        EXPECT_EQ(keys, expectedKeys(question)) << os::printed(*question.predicate);
        EXPECT_EQ(expected(world.context->countFetch(fetch)), keys.size())
            << os::printed(*question.predicate);
    }

    Dice dice{Dice::chosenSeed(static_cast<std::uint64_t>(GetParam()))};
    const std::string path = freshStorePath();
    Store store{path};
    PredicateWorld world{dice, store};
    Asker asker{dice, world};
    RawStore raw{path};
    int translated = 0;
};

TEST_P(PredicateAgreement, OfPlainCodeMemorySQLAndFetchesThroughEditsAndSaves)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int round = 0; round < 12 && !HasFailure(); ++round) {
        for (int i = 0; i < 60 && !HasFailure(); ++i) {
            const auto question = asker.question();
            checkMemory(question);
            checkFetch(question);
        }
        expected(world.context->save());
        for (int i = 0; i < 120 && !HasFailure(); ++i)
            checkSQL(asker.question());
        for (int i = 0; i < 25; ++i)
            world.edit();
    }
    EXPECT_GT(translated, 12 * 120) << "SQL answered too few of the questions to tell anything";
}

INSTANTIATE_TEST_SUITE_P(Seeds, PredicateAgreement, testing::Values(1, 2, 3));

} // namespace
