// How much memory SQLite keeps the pages of a store in, for a while.
#pragma once

#include "objectstore/StoreState.h"

#include <cstdint>

namespace objectstore {

/// A transaction that writes many tables and indexes in turn comes back to their pages, and wants them kept.
/// A walk past all rows comes to each page once: read into little memory, again and again the same, which the
/// processor holds near itself, it takes a quarter less time.
inline constexpr int kKilobytesOfManyWrites = 64000, kKilobytesOfAWalk = 2000;

/// Sets the memory while it lives.
///
/// Ownership: borrows the store, whose coordinator the caller has locked.
/// Threads:   one.
/// Errors:    the constructor throws sqlite::Failure. What cannot be set back stays, which harms nobody.
class PageCache {
public:
    PageCache(StoreState& store, int kilobytes);
    ~PageCache();
    PageCache(const PageCache&) = delete;
    PageCache& operator=(const PageCache&) = delete;

private:
    StoreState& _store;
    const std::int64_t _before;
};

} // namespace objectstore
