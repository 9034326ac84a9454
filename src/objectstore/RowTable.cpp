// How rows are shared, and how the last owner's leaving is told apart from a new finder's coming.
#include "objectstore/RowTable.h"

namespace objectstore {

RowRef RowTable::find(std::int64_t key, std::int64_t version)
{
    platform::Lock lock(_mutex);
    const Row* row = _rows.find(key);
    if (!row || row->version() != version || !row->retainIfOwned())
        return nullptr;
    return RowRef::adopt(row);
}

void RowTable::add(const Row& row)
{
    platform::Lock lock(_mutex);
    _rows.put(row);
}

void RowTable::remove(const Row& row) noexcept
{
    platform::Lock lock(_mutex);
    _rows.remove(row);
}

std::size_t RowTable::count() const
{
    platform::Lock lock(_mutex);
    return _rows.count();
}

} // namespace objectstore
