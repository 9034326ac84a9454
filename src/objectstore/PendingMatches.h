// Whom a fetch must ask in memory, because the store does not know how they are now.
#pragma once

#include "objectstore/ContextState.h"
#include "objectstore/StoreFetch.h"

#include <cstdint>
#include <string>
#include <vector>

namespace objectstore {

/// The objects of one store that a fetch's SQL must leave out, and those of them that match as they are now.
///
/// Ownership: borrows the context and the fetch.
/// Threads:   under the context's lock, within a Reading.
/// Errors:    as `matches`.
class PendingMatches {
public:
    PendingMatches(ContextState& context, PersistentStore& store, const StoreFetch& fetch);

    /// Whether an unsaved change elsewhere may alter the answer for any object.
    bool needsMemory() const { return _needsMemory; }

    /// Whether the store alone answers: nothing is left out of the SQL, or comes to it.
    bool isEmpty() const { return !_needsMemory && !hasKeys() && !hasDeletedOwners() && _candidates.empty(); }

    /// Keys to leave out, as a JSON array.
    bool hasKeys() const { return _keys.size() > 2; }
    const std::string& keys() const { return _keys; }
    /// Owners whose parts go with them, as a JSON array; only when parts are fetched.
    bool hasDeletedOwners() const { return _deletedOwners.size() > 2; }
    const std::string& deletedOwners() const { return _deletedOwners; }

    /// Whether few rows can fit: then no keys are left out of the SQL, and its rows are looked at with
    /// `skips`.
    bool isPointQuery() const { return _isPointQuery; }
    bool skips(const StoreObject& object) const { return _isPointQuery && object.hasChanges(); }

    ObjectList matches() const;

private:
    bool considerPoint();
    bool isWanted(const StoreObject& object) const;
    void consider(StoreObject& object, std::vector<std::int64_t>& keys);
    void considerTouchedIds(std::vector<std::int64_t>& keys);
    bool changesBehind() const;

    ContextState& _context;
    PersistentStore& _store;
    const StoreFetch& _fetch;
    PersistentStore* _unassigned = nullptr;
    bool _needsMemory = false;
    bool _isPointQuery = false;
    std::string _keys;
    std::string _deletedOwners;
    ObjectList _candidates;
};

} // namespace objectstore
