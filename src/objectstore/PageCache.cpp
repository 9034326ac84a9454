// How the memory for pages is set, and set back.
#include "objectstore/PageCache.h"

#include <fmt/format.h>

namespace objectstore {

PageCache::PageCache(StoreState& store, int kilobytes)
    : _store(store), _before(store.connection->integer("PRAGMA cache_size"))
{
    _store.connection->execute(fmt::format("PRAGMA cache_size = -{}", kilobytes).c_str());
}

PageCache::~PageCache()
{
    try {
        _store.connection->execute(fmt::format("PRAGMA cache_size = {}", _before).c_str());
    } catch (const sqlite::Failure&) {
    }
}

} // namespace objectstore
