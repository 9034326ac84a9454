// How steps, changes and pictures reach their tables.
#include "history/HistoryTables.h"

#include "objectstore/sqlite/Statement.h"

#include <algorithm>

namespace history {

using objectstore::sqlite::Statement;
using objectstore::sqlite::Use;

namespace {

constexpr char kTables[] =
    "CREATE TABLE history_step(id INTEGER PRIMARY KEY AUTOINCREMENT, title TEXT NOT NULL, date REAL NOT NULL,"
    " isUndone INTEGER NOT NULL, size INTEGER NOT NULL);"
    "CREATE TABLE history_change(step INTEGER NOT NULL, record TEXT NOT NULL, key INTEGER NOT NULL,"
    " name TEXT NOT NULL, beforeThere INTEGER NOT NULL, beforeContent BLOB, beforeTies BLOB,"
    " afterThere INTEGER NOT NULL, afterContent BLOB, afterTies BLOB, leftContent INTEGER, leftTies INTEGER,"
    " leftPicture INTEGER, PRIMARY KEY(step, key), UNIQUE(step, record)) WITHOUT ROWID;"
    "CREATE TABLE history_picture(step INTEGER NOT NULL, record TEXT NOT NULL, kind TEXT NOT NULL,"
    " side INTEGER NOT NULL, data BLOB, PRIMARY KEY(step, record, side, kind));"
    "CREATE INDEX history_picture_side ON history_picture(side);";

constexpr char kChangeColumns[] =
    "SELECT record, key, name, beforeThere, beforeContent, beforeTies, afterThere, afterContent, afterTies,"
    " leftContent, leftTies, leftPicture FROM history_change";

/// What a row takes beside its images, about; as in the statement below.
constexpr std::size_t kSizeOfRow = 120;

constexpr char kSizeOfStep[] =
    "UPDATE history_step SET size = (SELECT total(120 + ifnull(length(beforeContent), 0)"
    " + ifnull(length(beforeTies), 0) + ifnull(length(afterContent), 0) + ifnull(length(afterTies), 0))"
    " FROM history_change WHERE step = ?1) + (SELECT total(120 + ifnull(length(data), 0)) FROM "
    "history_picture"
    " WHERE step = ?1) WHERE id = ?1";

std::optional<std::string> blobAt(const Statement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional<std::string>(row.bytes(column));
}

std::optional<std::int64_t> integerAt(const Statement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional(row.integer(column));
}

Change changeAt(const Statement& row)
{
    Change change;
    change.record = row.text(0);
    change.key = row.integer(1);
    change.name = row.text(2);
    change.before = {row.integer(3) != 0, blobAt(row, 4), blobAt(row, 5)};
    change.after = {row.integer(6) != 0, blobAt(row, 7), blobAt(row, 8)};
    change.left = {integerAt(row, 9), integerAt(row, 10), integerAt(row, 11)};
    return change;
}

void bindBlob(Statement& to, int parameter, const std::optional<std::string>& bytes)
{
    if (bytes)
        to.bindBytes(parameter, *bytes);
    else
        to.bindNull(parameter);
}

void bindInteger(Statement& to, int parameter, const std::optional<std::int64_t>& value)
{
    if (value)
        to.bind(parameter, *value);
    else
        to.bindNull(parameter);
}

} // namespace

bool Tables::exist()
{
    return _store.connection->integer("SELECT count(*) FROM sqlite_schema WHERE name = 'history_step'") > 0;
}

void Tables::create()
{
    if (!exist())
        _store.connection->execute(kTables);
}

// ---- steps

std::int64_t Tables::addStep(std::string_view title, double date)
{
    dropUndone();
    Use add(prepared("INSERT INTO history_step(title, date, isUndone, size) VALUES(?, ?, 0, 0)"));
    add->bindText(1, title).bind(2, date).run();
    return _store.connection->integer("SELECT last_insert_rowid()");
}

bool Tables::hasOpenStep(std::int64_t step)
{
    Use find(prepared("SELECT 1 FROM history_step WHERE id = ? AND isUndone = 0"));
    find->bind(1, step);
    return find->step();
}

std::vector<ZRHistoryEntry> Tables::readSteps(const char* sql, std::int64_t limit)
{
    std::vector<ZRHistoryEntry> steps;
    Use find(prepared(sql));
    find->bind(1, limit);
    while (find->step())
        steps.push_back({.number = find->integer(0),
            .title = std::string(find->text(1)),
            .date = find->real(2),
            .isUndone = find->integer(3) != 0,
            .size = find->integer(4)});
    return steps;
}

std::vector<ZRHistoryEntry> Tables::steps(std::size_t limit)
{
    auto steps =
        readSteps("SELECT id, title, date, isUndone, size FROM history_step ORDER BY id DESC LIMIT ?",
            limit == 0 ? -1 : static_cast<std::int64_t>(limit));
    if (steps.empty())
        return steps;
    Use count(prepared(
        "SELECT step, total(beforeThere = 0), total(beforeThere AND afterThere), total(afterThere = 0)"
        " FROM history_change WHERE step >= ? GROUP BY step ORDER BY step DESC"));
    count->bind(1, steps.back().number);
    for (auto step = steps.begin(); count->step();) {
        step =
            std::find_if(step, steps.end(), [&](const auto& one) { return one.number == count->integer(0); });
        if (step == steps.end())
            break;
        step->added = count->integer(1);
        step->changed = count->integer(2);
        step->removed = count->integer(3);
    }
    return steps;
}

std::optional<ZRHistoryEntry> Tables::nextStep(Side towards)
{
    const auto found =
        readSteps(towards == Side::before ? "SELECT id, title, date, isUndone, size FROM history_step WHERE "
                                            "isUndone = 0 ORDER BY id DESC LIMIT ?"
                                          : "SELECT id, title, date, isUndone, size FROM history_step WHERE "
                                            "isUndone = 1 ORDER BY id LIMIT ?",
            1);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

void Tables::setUndone(std::int64_t step, bool isUndone)
{
    Use mark(prepared("UPDATE history_step SET isUndone = ? WHERE id = ?"));
    mark->bind(1, std::int64_t(isUndone)).bind(2, step).run();
}

void Tables::drop(std::int64_t step)
{
    for (const char* sql : {"DELETE FROM history_change WHERE step = ?",
             "DELETE FROM history_picture WHERE step = ? AND side <> 2",
             "DELETE FROM history_step WHERE id = ?"}) {
        Use remove(prepared(sql));
        remove->bind(1, step).run();
    }
}

void Tables::dropUndone()
{
    for (const ZRHistoryEntry& step :
        readSteps("SELECT id, title, date, isUndone, size FROM history_step WHERE isUndone = 1 LIMIT ?", -1))
        drop(step.number);
}

void Tables::settle(std::int64_t step)
{
    Use find(prepared("SELECT 1 FROM history_change WHERE step = ? LIMIT 1"));
    find->bind(1, step);
    if (!find->step())
        return drop(step);
    find->reset();
    Use measure(prepared(kSizeOfStep));
    measure->bind(1, step).run();
    prune(step);
}

void Tables::grow(std::int64_t step, std::int64_t bytes)
{
    Use add(prepared("UPDATE history_step SET size = size + ? WHERE id = ?"));
    add->bind(1, bytes).bind(2, step).run();
    prune(step);
}

std::int64_t Tables::sizeOf(const Change& change)
{
    std::size_t size = kSizeOfRow;
    for (const ChangeSide* side : {&change.before, &change.after})
        size += side->content.value_or("").size() + side->ties.value_or("").size();
    return static_cast<std::int64_t>(size);
}

std::int64_t Tables::sizeOf(const Pictures& pictures)
{
    std::size_t size = 0;
    for (const auto& [kind, bytes] : pictures)
        size += kSizeOfRow + bytes.size();
    return static_cast<std::int64_t>(size);
}

void Tables::prune(std::int64_t kept)
{
    for (const std::int64_t step : oldestBeyondLimits(kept))
        drop(step);
}

std::vector<std::int64_t> Tables::oldestBeyondLimits(std::int64_t kept)
{
    std::vector<std::int64_t> beyond;
    std::int64_t steps = 0, bytes = 0;
    Use find(prepared("SELECT id, isUndone, size FROM history_step ORDER BY id DESC"));
    while (find->step()) {
        ++steps;
        bytes += find->integer(2);
        const bool mayGo = find->integer(1) == 0 && find->integer(0) != kept;
        if (mayGo && (steps > kMostSteps || bytes > kMostBytes))
            beyond.push_back(find->integer(0));
    }
    return beyond;
}

void Tables::clear()
{
    for (const char* sql : {"DELETE FROM history_change", "DELETE FROM history_picture WHERE side <> 2",
             "DELETE FROM history_step"})
        prepared(sql).run();
}

// ---- changes

std::optional<Change> Tables::change(std::int64_t step, std::string_view record)
{
    Use find(prepared(std::string(kChangeColumns) + " WHERE step = ? AND record = ?"));
    find->bind(1, step).bindText(2, record);
    return find->step() ? std::optional(changeAt(*find)) : std::nullopt;
}

void Tables::put(std::int64_t step, const Change& change)
{
    Use put(prepared("INSERT OR REPLACE INTO history_change VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    put->bind(1, step).bindText(2, change.record).bind(3, change.key).bindText(4, change.name);
    put->bind(5, std::int64_t(change.before.isThere));
    bindBlob(*put, 6, change.before.content);
    bindBlob(*put, 7, change.before.ties);
    put->bind(8, std::int64_t(change.after.isThere));
    bindBlob(*put, 9, change.after.content);
    bindBlob(*put, 10, change.after.ties);
    bindInteger(*put, 11, change.left.content);
    bindInteger(*put, 12, change.left.ties);
    bindInteger(*put, 13, change.left.picture);
    put->run();
}

void Tables::remove(std::int64_t step, std::string_view record)
{
    Use change(prepared("DELETE FROM history_change WHERE step = ? AND record = ?"));
    change->bind(1, step).bindText(2, record).run();
    Use pictures(prepared("DELETE FROM history_picture WHERE step = ? AND record = ? AND side <> 2"));
    pictures->bind(1, step).bindText(2, record).run();
}

std::int64_t Tables::lastKey(std::int64_t step)
{
    Use find(prepared("SELECT ifnull(max(key), 0) FROM history_change WHERE step = ?"));
    find->bind(1, step);
    return find->step() ? find->integer(0) : 0;
}

std::vector<Change> Tables::changesBetween(
    std::int64_t step, std::int64_t after, std::int64_t last, std::size_t count)
{
    std::vector<Change> changes;
    Use find(prepared(
        std::string(kChangeColumns) + " WHERE step = ? AND key > ? AND key <= ? ORDER BY key LIMIT ?"));
    find->bind(1, step).bind(2, after).bind(3, last).bind(4, static_cast<std::int64_t>(count));
    while (find->step())
        changes.push_back(changeAt(*find));
    return changes;
}

// ---- pictures

void Tables::putPictures(std::int64_t step, std::string_view record, Side side, const Pictures& pictures)
{
    for (const auto& [kind, bytes] : pictures) {
        Use put(prepared("INSERT OR REPLACE INTO history_picture VALUES(?, ?, ?, ?, ?)"));
        put->bind(1, step).bindText(2, record).bindText(3, kind);
        put->bind(4, static_cast<std::int64_t>(side)).bindBytes(5, bytes).run();
    }
}

Pictures Tables::pictures(std::int64_t step, std::string_view record, Side side)
{
    Pictures pictures;
    Use find(prepared("SELECT kind, data FROM history_picture WHERE step = ? AND record = ? AND side = ?"));
    find->bind(1, step).bindText(2, record).bind(3, static_cast<std::int64_t>(side));
    while (find->step())
        pictures.emplace(find->text(0), find->bytes(1));
    return pictures;
}

void Tables::removePictures(std::int64_t step, std::string_view record, Side side)
{
    Use remove(prepared("DELETE FROM history_picture WHERE step = ? AND record = ? AND side = ?"));
    remove->bind(1, step).bindText(2, record).bind(3, static_cast<std::int64_t>(side)).run();
}

void Tables::putPending(std::int64_t step, std::string_view record, std::string_view kind,
    const std::optional<std::string>& bytes)
{
    Use put(prepared("INSERT OR REPLACE INTO history_picture VALUES(?, ?, ?, 2, ?)"));
    put->bind(1, step).bindText(2, record).bindText(3, kind);
    bindBlob(*put, 4, bytes);
    put->run();
}

bool Tables::hasPendingPictures()
{
    return exist() && _store.connection->integer("SELECT count(*) FROM history_picture WHERE side = 2") > 0;
}

} // namespace history
