// What a search costs, kind by kind, beside plain SQLite that finds the same in the same store.
#include "core/ZRPerson.h"
#include "core/ZRVocabulary.h"
#include "floor/Database.h"
#include "objectstore/StorePredicate.h"
#include "search/ZRPeopleMatching.h"
#include "search/ZRSearchElement.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"
#include "support/Commands.h"
#include "support/Measure.h"
#include "support/OpenRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using bench::Database;
using bench::Result;
using objectstore::Comparator;
using objectstore::PredicateRef;
using objectstore::Rows;
using objectstore::StoreFetch;
using objectstore::StorePredicate;
using objectstore::TextOption;
using platform::Value;

enum class Answer : std::uint8_t { ids, firstAsRecords, allAsRecords };

/// One kind of question: terms, what we are asked, and what plain SQLite is asked.
struct Kind {
    std::string_view name;
    Answer answer;
    std::vector<std::string> terms;
    std::function<PredicateRef(const std::string&)> predicate;
    /// ?1 is the term, ?2 its trigrams as a full-text query, ?3 the smallest text behind all that begin with
    /// it.
    std::string floor;
    /// The same as programs ask it; then all ids are wanted.
    std::function<platform::Ref<ZRSearchElement>(const std::string&)> element = {};
};

constexpr std::size_t kFirst = 20;
constexpr int kRounds = 3;

/// Terms cut out of the cards' own texts, the same ones every time.
class Terms {
public:
    explicit Terms(Database& store) : _store(store) { }

    std::vector<std::string> of(const char* column, const char* table, std::size_t shortest,
        std::size_t longest, std::size_t count = 30)
    {
        bench::Statement row = _store.prepare(
            fmt::format("SELECT {0} FROM {1} WHERE _key >= ? AND length({0}) > 12 LIMIT 1", column, table));
        const std::int64_t last = _store.integer(fmt::format("SELECT max(_key) FROM {}", table));
        std::vector<std::string> terms;
        while (terms.size() < count) {
            row.bind(1, next(last)).step();
            const std::string text(row.bytes(0));
            row.reset();
            const std::size_t size =
                shortest + static_cast<std::size_t>(next(std::int64_t(longest - shortest + 1)));
            const std::string part = text.size() > size
                ? text.substr(static_cast<std::size_t>(next(std::int64_t(text.size() - size))), size)
                : std::string();
            if (std::ranges::all_of(part, [](char c) { return c > ' ' && c < 127 && c != '"'; })
                && !part.empty())
                terms.push_back(part);
        }
        return terms;
    }

    std::vector<std::string> beginnings(const char* column, const char* table)
    {
        return _store.texts(fmt::format(
            "SELECT DISTINCT substr({0}, 1, 5) FROM {1} WHERE length({0}) > 5 ORDER BY _key % 997 LIMIT 30",
            column, table));
    }

private:
    std::int64_t next(std::int64_t below)
    {
        _state = _state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::int64_t>((_state >> 33) % static_cast<std::uint64_t>(below));
    }

    Database& _store;
    std::uint64_t _state = 1;
};

std::string trigrams(const std::string& term)
{
    std::string query;
    for (std::size_t at = 0; at + 3 <= term.size(); ++at)
        query += fmt::format("{}\"{}\"", query.empty() ? "" : " AND ", term.substr(at, 3));
    return query;
}

PredicateRef contains(const char* path, const std::string& term)
{
    return StorePredicate::compare(path, Comparator::contains, Value(term));
}

PredicateRef wholeCard(const std::string& term) { return contains("contactIndex.stringForIndexing", term); }

platform::Ref<ZRSearchElement> elementOf(
    std::optional<std::string_view> property, const std::string& term, ZRSearchComparison comparison)
{
    return ZRPerson::searchElementForProperty(property, std::nullopt, std::nullopt, Value(term), comparison);
}

PredicateRef inAddress(const std::string& term)
{
    std::vector<PredicateRef> parts;
    for (const char* key : {"street", "city", "state", "zipCode", "countryName", "region", "sama"})
        parts.push_back(StorePredicate::rows("postalAddresses", Rows::some,
            StorePredicate::compare(key, Comparator::contains, Value(term), TextOption::ignoringCase)));
    return StorePredicate::any(std::move(parts));
}

std::vector<Kind> kinds(Database& store)
{
    constexpr const char* byText =
        "FROM contact_index_text f CROSS JOIN contact_index i ON i.contact = f.rowid "
        "CROSS JOIN contact c ON c._key = f.rowid WHERE contact_index_text MATCH ?2 AND "
        "instr(i.stringForIndexing, ?1) > 0";
    constexpr const char* scan = "SELECT c.uniqueId FROM contact c WHERE c._key IN (SELECT contact FROM "
                                 "contact_index WHERE instr(stringForIndexing, ?1) > 0)";
    constexpr const char* text = "stringForIndexing";
    constexpr const char* index = "contact_index";
    Terms terms(store);
    std::vector<Kind> kinds;
    const auto substrings = terms.of(text, index, 3, 6);
    kinds.push_back({"3 to 6 letters, ids", Answer::ids, substrings, wholeCard,
        fmt::format("SELECT c.uniqueId {}", byText)});
    kinds.push_back({"3 to 6 letters, first 20", Answer::firstAsRecords, substrings, wholeCard,
        fmt::format("SELECT c.* {} LIMIT 20", byText)});
    auto shorts = terms.of(text, index, 1, 2);
    kinds.push_back({"1 or 2 letters, ids", Answer::ids, shorts, wholeCard, scan});
    kinds.push_back({"1 or 2 letters, first 20", Answer::firstAsRecords, shorts, wholeCard,
        fmt::format("SELECT c.* FROM contact_index i CROSS JOIN contact c ON c._key = i.contact WHERE "
                    "instr(i.stringForIndexing, ?1) > 0 LIMIT 20")});
    kinds.push_back({"2 letters nobody has, ids", Answer::ids, {"qz", "zq", "#~"}, wholeCard, scan});
    kinds.push_back(
        {"2 letters nobody has, first 20", Answer::firstAsRecords, {"qz", "zq", "#~"}, wholeCard, scan});
    kinds.push_back({"phone contains, ids", Answer::ids, terms.of("fullNumber", "phone_number", 5, 7),
        [](const std::string& term) {
            return StorePredicate::rows("phoneNumbers", Rows::some, contains("fullNumber", term));
        },
        "SELECT uniqueId FROM contact WHERE _key IN (SELECT owner FROM phone_number WHERE instr(fullNumber, "
        "?1) > 0)"});
    kinds.push_back({"note contains, ids", Answer::ids, terms.of("text", "note", 5, 9),
        [](const std::string& term) { return contains("note.text", term); },
        "SELECT uniqueId FROM contact WHERE _key IN (SELECT contact FROM note WHERE instr(text, ?1) > 0)"});
    kinds.push_back({"address contains, ids", Answer::ids, terms.of("street", "postal_address", 4, 8, 5),
        inAddress,
        "SELECT uniqueId FROM contact WHERE _key IN (SELECT owner FROM postal_address WHERE street LIKE "
        "'%'||?1||'%' OR city LIKE '%'||?1||'%' OR state LIKE '%'||?1||'%' OR zipCode LIKE '%'||?1||'%' OR "
        "countryName LIKE '%'||?1||'%' OR region LIKE '%'||?1||'%' OR sama LIKE '%'||?1||'%')"});
    kinds.push_back({"last name is, ignoring case, ids", Answer::ids,
        terms.of("lastName || '             '", "contact", 4, 7),
        [](const std::string& term) {
            return StorePredicate::compare(
                "lastName", Comparator::equal, Value(term), TextOption::ignoringCase);
        },
        "SELECT uniqueId FROM contact WHERE lastName LIKE ?1"});
    kinds.push_back({"note lacks, ids", Answer::ids, terms.of("text", "note", 5, 9, 10),
        [](const std::string& term) { return StorePredicate::negation(contains("note.text", term)); },
        "SELECT uniqueId FROM contact WHERE _key NOT IN (SELECT contact FROM note WHERE instr(text, ?1) > "
        "0)"});
    kinds.push_back({"birthday between, ids", Answer::ids, {"1", "2", "3"},
        [](const std::string& term) {
            const double from = std::stod(term) * 1e8;
            return StorePredicate::all({StorePredicate::compare("birthday", Comparator::greaterOrEqual,
                                            Value(platform::Date{from})),
                StorePredicate::compare("birthday", Comparator::less, Value(platform::Date{from + 3e7}))});
        },
        "SELECT uniqueId FROM contact WHERE birthday >= ?1 * 1e8 AND birthday < ?1 * 1e8 + 3e7"});
    kinds.push_back({"e-mail begins, first 20", Answer::firstAsRecords,
        terms.beginnings("addressNormalized", "email_address"),
        [](const std::string& term) {
            return StorePredicate::rows("emailAddresses", Rows::some,
                StorePredicate::compare("addressNormalized", Comparator::beginsWith, Value(term)));
        },
        "SELECT * FROM contact WHERE _key IN (SELECT owner FROM email_address WHERE addressNormalized >= ?1 "
        "AND "
        "addressNormalized < ?3) LIMIT 20"});
    kinds.push_back({"name begins, first 20", Answer::firstAsRecords, terms.beginnings("lastName", "contact"),
        [](const std::string& term) {
            return StorePredicate::any({StorePredicate::compare("firstName", Comparator::beginsWith,
                                            Value(term), TextOption::ignoringCase),
                StorePredicate::compare(
                    "lastName", Comparator::beginsWith, Value(term), TextOption::ignoringCase)});
        },
        "SELECT * FROM contact WHERE firstName LIKE ?1||'%' OR lastName LIKE ?1||'%' LIMIT 20"});
    const auto asElement = [&](std::string_view name, std::string_view of, auto element) {
        kinds.push_back(*std::ranges::find(kinds, of, &Kind::name));
        kinds.back().name = name;
        kinds.back().element = element;
    };
    const auto anywhere = [](const std::string& term) {
        return elementOf(std::nullopt, term, kZRContainsSubStringCaseInsensitive);
    };
    asElement("3 to 6 letters, by an element", "3 to 6 letters, ids", anywhere);
    asElement("1 or 2 letters, by an element", "1 or 2 letters, ids", anywhere);
    asElement("phone contains, by an element", "phone contains, ids",
        [](const std::string& term) { return elementOf(kZRPhoneProperty, term, kZRContainsSubString); });
    return kinds;
}

std::size_t askRoster(ZRRoster& roster, const Kind& kind, const std::string& term)
{
    if (kind.element)
        return ZRIdsOfPeopleMatching(roster, kind.element(term)).size();
    StoreFetch fetch(contactSlots().entity, kind.predicate(term));
    fetch.includesSubentities = false;
    const auto context = roster.managedObjectContext();
    if (kind.answer == Answer::ids) {
        const auto ids = context->fetchValues(fetch, "uniqueId");
        return ids ? ids->size() : 0;
    }
    if (kind.answer == Answer::firstAsRecords)
        fetch.limit = kFirst;
    const auto found = context->runFetch(fetch);
    return found
        ? ZROSRecord::copyPublicRecordsForClass(ZRPerson::recordClassDescription, *found, roster).size()
        : 0;
}

std::size_t askFloor(bench::Statement& statement, const std::string& term)
{
    const std::string query = trigrams(term);
    std::string behind = term;
    behind.back() = static_cast<char>(behind.back() + 1);
    const std::string_view values[]{term, query, behind};
    for (int i = 0; i < statement.parameters(); ++i)
        statement.bind(i + 1, values[i]);
    std::size_t found = 0, bytes = 0;
    for (; statement.step(); ++found)
        for (int column = 0; column < statement.columns(); ++column)
            bytes += statement.bytes(column).size();
    statement.reset();
    return found + (bytes == SIZE_MAX);
}

/// Both take turns, term by term; the first round warms both.
void run(ZRRoster& roster, Database& store, const std::string& path, std::size_t cards, const Kind& kind)
{
    const std::string job = fmt::format("search: {}", kind.name);
    Result ours(job, "roster", path, cards), floor(job, "floor", path, cards);
    bench::Statement statement = store.prepare(kind.floor);
    double hits = 0;
    for (int round = -1; round < kRounds; ++round)
        for (const auto& term : kind.terms) {
            std::size_t mine = 0, plain = 0;
            const bench::Stopwatch first;
            plain = askFloor(statement, term);
            const double wall = first.wall(), processor = first.processor();
            const bench::Stopwatch second;
            mine = askRoster(roster, kind, term);
            if (round >= 0) {
                ours.add(second.wall(), second.processor());
                floor.add(wall, processor);
                hits += static_cast<double>(mine);
            } else if (mine != plain) {
                bench::fail(
                    fmt::format("{} '{}': {} hits, and {} of plain SQLite", kind.name, term, mine, plain));
            }
        }
    ours.note("hits", hits / static_cast<double>(kRounds * static_cast<int>(kind.terms.size())));
    floor.print();
    ours.print();
}

std::string storeIn(const std::string& directory) { return directory + "/Roster-v22.zrosdb"; }

std::size_t hitsOf(Database& store, const std::string& term)
{
    bench::Statement statement =
        store.prepare("SELECT count(*) FROM contact_index WHERE instr(stringForIndexing, ?1) > 0");
    statement.bind(1, std::string_view(term)).step();
    return static_cast<std::size_t>(statement.integer(0));
}

/// Parts of cards by how many cards have them, in steps of ten times as many.
std::vector<Kind> kindsByHits(Database& store)
{
    constexpr std::string_view names[] = {
        "1 to 9 hits", "10 to 99 hits", "100 to 999 hits", "1,000 to 9,999 hits", "10,000 hits and more"};
    constexpr std::size_t most = 20;
    auto example = kinds(store).front();
    std::vector<Kind> byHits;
    for (const auto name : names)
        byHits.push_back({name, Answer::ids, {}, example.predicate, example.floor});
    Terms terms(store);
    for (const std::size_t length : {3, 4, 5, 6, 8, 10, 12})
        for (const auto& term : terms.of("stringForIndexing", "contact_index", length, length, 40)) {
            std::size_t step = 0;
            for (std::size_t hits = hitsOf(store, term); hits >= 10 && step + 1 < byHits.size(); hits /= 10)
                ++step;
            if (byHits[step].terms.size() < most)
                byHits[step].terms.push_back(term);
        }
    std::erase_if(byHits, [](const Kind& kind) { return kind.terms.empty(); });
    return byHits;
}

template <auto kindsOf>
int ask(const std::string& directory, std::size_t)
{
    const auto roster = bench::openRoster(directory);
    Database store(storeIn(directory));
    const auto cards = static_cast<std::size_t>(store.integer("SELECT count(*) FROM contact"));
    for (const auto& kind : kindsOf(store))
        run(*roster, store, directory, cards, kind);
    return 0;
}

constexpr bench::Command kCommands[] = {{"all", ask<kinds>}, {"curve", ask<kindsByHits>}};

} // namespace

int main(int count, char** arguments)
{
    return bench::runCommand(kCommands, {arguments, static_cast<std::size_t>(count)},
        "all ROSTER 1 | curve ROSTER 1: a line a kind and subject");
}
