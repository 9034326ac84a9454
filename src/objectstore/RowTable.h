// The rows of one store that some object holds.
#pragma once

#include "objectstore/KeyTable.h"
#include "objectstore/Row.h"
#include "platform/run/Mutex.h"

#include <atomic>
#include <cstdint>

namespace objectstore {

/// Shares rows between the contexts of a process: the same key at the same version is one row.
///
/// Keys are unique within a store, whatever their table, so the key alone finds a row.
///
/// Ownership: counted; rows keep their table alive, the table holds rows weakly.
/// Threads:   any.
/// Errors:    none.
class RowTable {
public:
    static RowTable* make() { return new RowTable; }
    void retain() noexcept { _owners.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept
    {
        if (_owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    /// The row of that key and version, or none.
    RowRef find(std::int64_t key, std::int64_t version);
    /// Hands `row` to later `find`s; an older row of its key goes on for those who hold it.
    void add(const Row& row);
    std::size_t count() const;

private:
    friend class Row;
    static std::int64_t keyOf(const Row& row) { return row.key(); }

    RowTable() = default;
    ~RowTable() = default;
    void remove(const Row& row) noexcept;

    std::atomic<std::uint32_t> _owners{1};
    mutable platform::Mutex _mutex{platform::LockRank::leaf};
    KeyTable<const Row, keyOf> _rows ZR_GUARDED_BY(_mutex);
};

} // namespace objectstore
