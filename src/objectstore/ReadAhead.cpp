// How the rows of an object come to the processor before they are read.
#include "objectstore/ReadAhead.h"

#include "objectstore/ObjectAccess.h"
#include "objectstore/RelationshipCaches.h"
#include "objectstore/Row.h"

#include <algorithm>

namespace objectstore {

namespace {

constexpr std::size_t kCacheLine = 64;
/// A row of a card has long texts as a rule near its end.
constexpr std::size_t kMostLines = 12;

void fetch(const void* address) { __builtin_prefetch(address); }

void fetchRow(const Row& row, std::size_t lines)
{
    for (std::size_t line = 0; line < lines; ++line)
        fetch(reinterpret_cast<const char*>(&row) + line * kCacheLine);
}

} // namespace

void readAhead(StoreObject& object)
{
    if (const RowRef& row = ObjectAccess::row(object))
        fetchRow(*row, kMostLines);
    RelationshipCaches* const caches = ObjectAccess::caches(object).get();
    if (!caches)
        return;
    // The objects first, since each tells where its row is.
    for (const RelationshipCache& cache : caches->list)
        for (const ObjectRef& part : cache.parts)
            fetch(part.get());
    for (const RelationshipCache& cache : caches->list)
        for (const ObjectRef& part : cache.parts)
            if (const RowRef& row = ObjectAccess::row(*part))
                fetchRow(*row, 3);
}

} // namespace objectstore
