// How a row is laid out in its block.
#include "objectstore/Row.h"

#include "objectstore/RowTable.h"

#include <new>
#include <stdexcept>

namespace objectstore {

namespace {

std::size_t storedSize(const FieldValue& value)
{
    switch (value.kind) {
    case FieldKind::absent:
        return 0;
    case FieldKind::integer:
    case FieldKind::real:
        return 8;
    default:
        return value.bytes.size();
    }
}

template <class T>
T loaded(std::string_view bytes)
{
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

} // namespace

std::int64_t Row::integer(std::size_t field) const
{
    switch (kind(field)) {
    case FieldKind::integer:
        return loaded<std::int64_t>(stored(field));
    case FieldKind::real:
        return static_cast<std::int64_t>(loaded<double>(stored(field)));
    default:
        return 0;
    }
}

double Row::real(std::size_t field) const
{
    switch (kind(field)) {
    case FieldKind::integer:
        return static_cast<double>(loaded<std::int64_t>(stored(field)));
    case FieldKind::real:
        return loaded<double>(stored(field));
    default:
        return 0;
    }
}

std::string_view Row::bytes(std::size_t field) const
{
    return kind(field) >= FieldKind::text ? stored(field) : std::string_view();
}

FieldValue Row::value(std::size_t field) const
{
    FieldValue value;
    value.kind = kind(field);
    if (value.kind == FieldKind::integer)
        value.integer = loaded<std::int64_t>(stored(field));
    else if (value.kind == FieldKind::real)
        value.real = loaded<double>(stored(field));
    else
        value.bytes = stored(field);
    return value;
}

std::size_t Row::size() const
{
    const std::size_t payload = _count ? fields()[_count - 1] & kOffsetMask : 0;
    return sizeof(Row) + _count * sizeof(std::uint32_t) + payload;
}

bool Row::retainIfOwned() const noexcept
{
    auto owners = _owners.load(std::memory_order_relaxed);
    while (owners != 0)
        if (_owners.compare_exchange_weak(owners, owners + 1, std::memory_order_acquire))
            return true;
    return false;
}

void Row::lastOwnerGone() const noexcept
{
    if (_table) {
        _table->remove(*this);
        _table->release();
    }
    Row* block = const_cast<Row*>(this);
    block->~Row();
    ::operator delete(block);
}

RowRef RowBuilder::build(const Entity& entity, std::int64_t key, std::int64_t version,
    std::span<const FieldValue> fields, RowTable* table)
{
    std::size_t payload = 0;
    for (const auto& field : fields)
        payload += storedSize(field);
    if (payload > Row::kOffsetMask)
        throw std::length_error("a row of more than 512 MB");
    void* block = ::operator new(sizeof(Row) + fields.size() * sizeof(std::uint32_t) + payload);
    Row* row = new (block) Row;
    row->_count = static_cast<std::uint32_t>(fields.size());
    row->_key = key;
    row->_version = version;
    row->_entity = &entity;
    auto* words = const_cast<std::uint32_t*>(row->fields());
    char* to = const_cast<char*>(row->payload());
    std::uint32_t end = 0;
    for (const auto& field : fields) {
        const std::size_t size = storedSize(field);
        const void* from = field.kind == FieldKind::integer ? static_cast<const void*>(&field.integer)
            : field.kind == FieldKind::real                 ? static_cast<const void*>(&field.real)
                                                            : static_cast<const void*>(field.bytes.data());
        if (size)
            std::memcpy(to + end, from, size);
        end += static_cast<std::uint32_t>(size);
        *words++ = end | static_cast<std::uint32_t>(field.kind) << Row::kKindShift;
    }
    if (table) {
        row->_table = table;
        table->retain();
        table->add(*row);
    }
    return RowRef::adopt(row);
}

RowRef RowBuilder::withVersion(const Row& row, std::int64_t version)
{
    const std::size_t size = row.size();
    void* block = ::operator new(size);
    Row* copy = new (block) Row;
    copy->_count = row._count;
    copy->_key = row._key;
    copy->_version = version;
    copy->_entity = row._entity;
    std::memcpy(static_cast<char*>(block) + sizeof(Row), reinterpret_cast<const char*>(&row) + sizeof(Row),
        size - sizeof(Row));
    if (row._table) {
        copy->_table = row._table;
        row._table->retain();
        row._table->add(*copy);
    }
    return RowRef::adopt(copy);
}

} // namespace objectstore
