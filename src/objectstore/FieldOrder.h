// In which order objects come: the store's order, repeated in memory.
#pragma once

#include "objectstore/ObjectAccess.h"
#include "objectstore/StoreFetch.h"

#include <cstddef>
#include <vector>

namespace objectstore {

/// Orders objects by the sort keys of a fetch as SQLite does: absent, numbers, text by bytes, data; then by
/// key, new objects last. Use it as a comparator.
///
/// Ownership: borrows the fetch's model.
/// Threads:   under the context's lock.
/// Errors:    a sort key without a column throws InvalidKey.
class FieldOrder {
public:
    struct Key {
        const Slot* slot;
        bool ascending;
    };

    explicit FieldOrder(const StoreFetch& fetch);

    const std::vector<Key>& keys() const { return _keys; }
    /// Whether comparing reads fields.
    bool needsRows() const { return !_keys.empty(); }
    bool operator()(const ObjectRef& a, const ObjectRef& b) const;

private:
    std::vector<Key> _keys;
};

} // namespace objectstore
