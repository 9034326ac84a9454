// What is asked of a context: which objects, in which order, how many, and what to bring along.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace objectstore {

class PersistentStore;

/// One key to sort by. Absent values come first, then numbers, then text by its bytes.
struct SortKey {
    /// An attribute or to-one of the fetched entity, that has a column.
    std::string key;
    bool ascending = true;
};

/// A question to a context: fill in what matters and hand it to `runFetch` or `countFetch`.
///
/// The answer is that of the context as it stands, unsaved changes included. Objects that sort equal come in
/// the order of their keys, unsaved ones last, in the order of their insertion.
///
/// Ownership: a plain copyable struct; the entity's model and the stores must live.
/// Threads:   like any plain value.
/// Errors:    none.
struct StoreFetch {
    StoreFetch() = default;
    explicit StoreFetch(const Entity& fetched, PredicateRef condition = nullptr)
        : entity(&fetched), predicate(std::move(condition))
    {
    }

    const Entity* entity = nullptr;
    /// Absent: every object.
    PredicateRef predicate;
    std::vector<SortKey> sortKeys;
    std::size_t limit = std::numeric_limits<std::size_t>::max();
    std::size_t offset = 0;
    /// False: objects of exactly this entity.
    bool includesSubentities = true;
    /// True, or property values left out: objects that are not here yet come without rows.
    bool returnsObjectsAsFaults = false;
    bool includesPropertyValues = true;
    /// Relationships to read along, as key paths such as "addresses.service": one query each.
    std::vector<std::string> prefetchKeyPaths;
    /// Empty: all stores of the coordinator.
    std::vector<PersistentStore*> affectedStores;
};

/// How a fetch would be answered.
struct FetchPlan {
    /// The statement with its values in their places; empty when every object is asked in memory.
    std::string sql;
    /// What SQLite says of the way it goes, a line a step.
    std::vector<std::string> steps;
};

} // namespace objectstore
