// How the trigram table follows the text that it indexes.
#pragma once

#include "objectstore/RowReader.h"
#include "objectstore/StoreState.h"

#include <cstdint>
#include <string_view>

namespace objectstore {

/// Sets that the full-text table of the entity merges its segments when it is told to.
void configureTextIndex(sqlite::Connection& connection, const Entity& entity);

/// Whether each root that can own an entry of that entity has one, with a text: counted, not looked for, so
/// that asking costs next to nothing.
bool hasEveryEntry(StoreState& store, const Entity& entity);

/// Brings the text table of an entity to what a save writes, within its transaction. The text to take out is
/// read back from the table itself, never from memory.
///
/// Ownership: borrows the store.
/// Threads:   one.
/// Errors:    throws sqlite::Failure.
class TextIndex {
public:
    TextIndex(StoreState& store, const Entity& entity);

    /// Before the row of that owner changes or goes.
    void remove(std::int64_t owner);
    /// Before the rows of all owners in `owners`, a JSON array, go.
    void removeAll(std::string_view owners);
    /// With the row that is written; an owner of 0 or an empty text has no entry. Fast in ascending order.
    void add(std::int64_t owner, std::string_view text);
    /// Behind the last entry of a save: merges a bounded part of the segments that saves have left. Left to
    /// itself the table would do it with every 64th page, twenty times the work of the save that meets that.
    void mergeSegments();
    /// Makes one segment of all: work for the whole table.
    void mergeAllSegments();

private:
    void removeEntry(std::int64_t owner, std::string_view text);

    StoreState& _store;
    std::string _find;
    std::string _findAll;
    std::string _remove;
    std::string _add;
    std::string _merge;
    std::string _mergeAll;
    std::int64_t _written = 0;
};

} // namespace objectstore
