// One row as the store showed it: immutable, shared, and one block of memory.
#pragma once

#include "objectstore/Model.h"
#include "platform/value/Value.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

namespace objectstore {

class RowTable;

/// How a field is stored; the kinds SQLite has.
enum class FieldKind : std::uint8_t { absent, integer, real, text, bytes };

/// What goes into a field of a new row. Text and bytes are borrowed until the row is built.
struct FieldValue {
    FieldKind kind = FieldKind::absent;
    std::int64_t integer = 0;
    double real = 0;
    std::string_view bytes = {};
};

/// The fields of one object at one commit.
///
/// It is not what a context sees: unsaved changes lie over it.
///
/// Ownership: counted inside the block; see RowRef. The table that shares rows holds it weakly.
/// Threads:   never changes; any thread may read it and let go of it.
/// Errors:    none.
class Row {
public:
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    std::int64_t key() const { return _key; }
    std::int64_t version() const { return _version; }
    const Entity& entity() const { return *_entity; }

    FieldKind kind(std::size_t field) const { return static_cast<FieldKind>(fields()[field] >> kKindShift); }
    bool isAbsent(std::size_t field) const { return kind(field) == FieldKind::absent; }
    /// Of a number; 0 of anything else.
    std::int64_t integer(std::size_t field) const;
    double real(std::size_t field) const;
    /// Of text and bytes; empty of anything else. Alive as long as the row.
    std::string_view bytes(std::size_t field) const;
    FieldValue value(std::size_t field) const;
    /// The size of the whole block.
    std::size_t size() const;

private:
    friend class RowRef;
    friend class RowTable;
    friend class RowBuilder;

    static constexpr unsigned kKindShift = 29;
    static constexpr std::uint32_t kOffsetMask = (1u << kKindShift) - 1;

    Row() = default;
    ~Row() = default;

    void retain() const noexcept { _owners.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept
    {
        if (_owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            lastOwnerGone();
    }
    bool retainIfOwned() const noexcept;
    void lastOwnerGone() const noexcept;

    /// One word a field: its kind above, where its bytes end below.
    const std::uint32_t* fields() const { return reinterpret_cast<const std::uint32_t*>(this + 1); }
    const char* payload() const { return reinterpret_cast<const char*>(fields() + _count); }
    std::string_view stored(std::size_t field) const
    {
        const std::uint32_t from = field ? fields()[field - 1] & kOffsetMask : 0;
        return {payload() + from, (fields()[field] & kOffsetMask) - from};
    }

    mutable std::atomic<std::uint32_t> _owners{1};
    std::uint32_t _count = 0;
    std::int64_t _key = 0;
    std::int64_t _version = 0;
    const Entity* _entity = nullptr;
    RowTable* _table = nullptr;
};

/// The owning pointer to a Row. An empty one is "no row".
class RowRef {
public:
    RowRef() = default;
    RowRef(std::nullptr_t) { }
    RowRef(const RowRef& other) : _row(other._row)
    {
        if (_row)
            _row->retain();
    }
    RowRef(RowRef&& other) noexcept : _row(std::exchange(other._row, nullptr)) { }
    ~RowRef()
    {
        if (_row)
            _row->release();
    }
    RowRef& operator=(RowRef other) noexcept
    {
        std::swap(_row, other._row);
        return *this;
    }
    /// Takes over an ownership that the caller already has.
    static RowRef adopt(const Row* row)
    {
        RowRef ref;
        ref._row = row;
        return ref;
    }

    const Row* get() const { return _row; }
    const Row* operator->() const { return _row; }
    const Row& operator*() const { return *_row; }
    explicit operator bool() const { return _row != nullptr; }

private:
    const Row* _row = nullptr;
};

/// Builds one row after the other, reusing its buffer.
///
/// Ownership: borrows what is set until `build`.
/// Threads:   one.
/// Errors:    a row of more than 512 MB throws std::length_error.
class RowBuilder {
public:
    /// `fields` in the order of the entity's fields.
    static RowRef build(const Entity& entity, std::int64_t key, std::int64_t version,
        std::span<const FieldValue> fields, RowTable* table);
    /// The same row with another version.
    static RowRef withVersion(const Row& row, std::int64_t version);
};

} // namespace objectstore
