// The tables of the history beside those of the records, and what they may hold.
#pragma once

#include "history/HistoryPictures.h"
#include "history/ZRHistory.h"
#include "objectstore/StoreState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace history {

/// As many steps are kept, and as many bytes; a bigger step is kept alone.
inline constexpr std::int64_t kMostSteps = 1'000;
inline constexpr std::int64_t kMostBytes = std::int64_t(64) << 20;

/// The side of a step that the store does not show is kept; the other stands in the store.
enum class Side : std::int64_t {
    before = 0,
    after = 1,
    /// Of pictures: decided, and on the way to its file.
    pending = 2,
};

/// One side of a change: whether the record is there, and the sections of its image that the step changed.
struct ChangeSide {
    bool isThere = false;
    std::optional<std::string> content;
    std::optional<std::string> ties;
};

/// What the step has left in the store: hashes of the sections that it changed.
struct LeftBehind {
    std::optional<std::int64_t> content;
    std::optional<std::int64_t> ties;
    std::optional<std::int64_t> picture;
};

/// What a step did to one record.
struct Change {
    std::string record;
    std::int64_t key = 0;
    std::string name;
    ChangeSide before;
    ChangeSide after;
    LeftBehind left;
};

/// Reads and writes the tables, which a store has from the first step on:
///
/// - `history_step`: a row a step, numbered in the order in which they were begun;
/// - `history_change`: what a step did to a record;
/// - `history_picture`: picture files of a side of a change.
///
/// Ownership: borrows the store.
/// Threads:   one, within a transaction of the caller.
/// Errors:    throws sqlite::Failure.
class Tables {
public:
    /// What a change takes in the tables, about.
    static std::int64_t sizeOf(const Change& change);
    static std::int64_t sizeOf(const Pictures& pictures);

    explicit Tables(objectstore::StoreState& store) : _store(store) { }

    bool exist();
    void create();

    /// A new step, which drops those that were undone.
    std::int64_t addStep(std::string_view title, double date);
    bool hasOpenStep(std::int64_t step);
    /// The newest first; 0: all.
    std::vector<ZRHistoryEntry> steps(std::size_t limit);
    /// The next one to undo, or to redo; what it changed is not counted.
    std::optional<ZRHistoryEntry> nextStep(Side towards);
    void setUndone(std::int64_t step, bool isUndone);
    /// Writes down how big the step is now, and drops the oldest ones that are too many. What was undone is
    /// kept as long as it can be redone. A step without changes goes.
    void settle(std::int64_t step);
    /// The same, where so many bytes came to it and nothing else changed: the step is not walked.
    void grow(std::int64_t step, std::int64_t bytes);
    void clear();

    std::optional<Change> change(std::int64_t step, std::string_view record);
    void put(std::int64_t step, const Change& change);
    void remove(std::int64_t step, std::string_view record);
    /// The highest key of a record of the step.
    std::int64_t lastKey(std::int64_t step);
    /// Changes of the step with keys above `after` and up to `last`, in the order of the keys, at most so
    /// many: tables and the text index take rows in that order fastest.
    std::vector<Change> changesBetween(
        std::int64_t step, std::int64_t after, std::int64_t last, std::size_t count);

    void putPictures(std::int64_t step, std::string_view record, Side side, const Pictures& pictures);
    Pictures pictures(std::int64_t step, std::string_view record, Side side);
    void removePictures(std::int64_t step, std::string_view record, Side side);
    /// The file is to hold `bytes`, or to go, once all is committed.
    void putPending(std::int64_t step, std::string_view record, std::string_view kind,
        const std::optional<std::string>& bytes);
    /// Calls `settle(record, kind, bytes)` for each that is pending and forgets it; absent bytes: it goes.
    template <class Settle>
    void settlePictures(Settle settlePicture);
    bool hasPendingPictures();

private:
    void drop(std::int64_t step);
    void dropUndone();
    void prune(std::int64_t kept);
    std::vector<std::int64_t> oldestBeyondLimits(std::int64_t kept);
    std::vector<ZRHistoryEntry> readSteps(const char* sql, std::int64_t limit);
    objectstore::sqlite::Statement& prepared(std::string_view sql)
    {
        return _store.connection->prepared(sql);
    }

    objectstore::StoreState& _store;
};

template <class Settle>
void Tables::settlePictures(Settle settlePicture)
{
    objectstore::sqlite::Use find(prepared("SELECT record, kind, data FROM history_picture WHERE side = 2"));
    while (find->step())
        settlePicture(find->text(0), find->text(1),
            find->isNull(2) ? std::optional<std::string_view>() : find->bytes(2));
}

} // namespace history
