// How the trigram table is written.
#include "objectstore/TextIndex.h"

#include "objectstore/PredicateLiterals.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace objectstore {

namespace {

/// So many segments of about one size become a larger one.
constexpr int kSegmentsToMerge = 16;

/// What a save merges: it keeps pace with saves of one entry each, and with those of thousands, of which many
/// share a page.
constexpr std::int64_t kPagesPerSave = 16, kEntriesPerPage = 4;

/// Runs a statement on an entry. A NUL gets its stand-in on the way in and on the way out.
void runOn(sqlite::Statement& statement, std::int64_t owner, std::string_view text)
{
    if (text.find('\0') == std::string_view::npos)
        return statement.bind(1, owner).bindText(2, text).run();
    std::string whole(text);
    std::ranges::replace(whole, '\0', kIndexedForNul);
    statement.bind(1, owner).bindText(2, whole).run();
}

} // namespace

void configureTextIndex(sqlite::Connection& connection, const Entity& entity)
{
    const auto set = [&](const char* option, std::int64_t value) {
        connection.execute(
            fmt::format("INSERT INTO {0}({0}, rank) VALUES('{1}', {2})", entity.textTable(), option, value)
                .c_str());
    };
    set("automerge", 0);
    set("usermerge", kSegmentsToMerge);
    set("crisismerge", 16 * kSegmentsToMerge);
}

bool hasEveryEntry(StoreState& store, const Entity& entity)
{
    const std::string &entries = entity.family()->table, &owner = entity.owner()->column;
    sqlite::Use query(store.connection->prepared(fmt::format(
        "SELECT (SELECT count(*) FROM {0}) = (SELECT count(*) FROM {1})"
        " AND NOT EXISTS(SELECT 1 FROM {1} WHERE {2} IS NULL)"
        " AND NOT EXISTS(SELECT 1 FROM {1} WHERE {3} IS NULL)",
        entity.owner()->destination->families().front()->table, entries, owner, entity.textIndex()->column)));
    return query->step() && query->integer(0) != 0;
}

TextIndex::TextIndex(StoreState& store, const Entity& entity) : _store(store)
{
    const std::string& table = entity.textTable();
    const std::string& column = entity.textIndex()->column;
    const std::string& owner = entity.owner()->column;
    const std::string& content = entity.family()->table;
    _find = fmt::format("SELECT {} FROM {} WHERE {} = ?", column, content, owner);
    _findAll =
        fmt::format("SELECT {1}, {0} FROM {2} WHERE {1} IN (SELECT value FROM json_each(?)) ORDER BY {1}",
            column, owner, content);
    _remove = fmt::format("INSERT INTO {0}({0}, rowid, {1}) VALUES('delete', ?, ?)", table, column);
    _add = fmt::format("INSERT INTO {}(rowid, {}) VALUES(?, ?)", table, column);
    _merge = fmt::format("INSERT INTO {0}({0}, rank) VALUES('merge', ?)", table);
    _mergeAll = fmt::format("INSERT INTO {0}({0}) VALUES('optimize')", table);
}

void TextIndex::removeEntry(std::int64_t owner, std::string_view text)
{
    if (text.empty())
        return;
    sqlite::Use remove(_store.connection->prepared(_remove));
    runOn(*remove, owner, text);
    ++_written;
}

void TextIndex::remove(std::int64_t owner)
{
    std::string text;
    {
        sqlite::Use find(_store.connection->prepared(_find));
        find->bind(1, owner);
        if (!find->step())
            return;
        text = find->text(0);
    }
    removeEntry(owner, text);
}

void TextIndex::removeAll(std::string_view owners)
{
    sqlite::Use find(_store.connection->prepared(_findAll));
    find->bindText(1, owners);
    while (find->step())
        removeEntry(find->integer(0), find->text(1));
}

void TextIndex::add(std::int64_t owner, std::string_view text)
{
    if (owner <= 0 || text.empty())
        return;
    sqlite::Use add(_store.connection->prepared(_add));
    runOn(*add, owner, text);
    ++_written;
}

void TextIndex::mergeSegments()
{
    const std::int64_t written = std::exchange(_written, 0);
    if (written == 0)
        return;
    sqlite::Use merge(_store.connection->prepared(_merge));
    merge->bind(1, kPagesPerSave + written / kEntriesPerPage).run();
}

void TextIndex::mergeAllSegments() { _store.connection->execute(_mergeAll.c_str()); }

} // namespace objectstore
