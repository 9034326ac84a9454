// What a store says of itself: how far it is, and in which form.
#pragma once

#include "objectstore/StoreCoordinator.h"

#include <cstdint>
#include <string>

namespace objectstore {

/// What is told of a store to people who look after it.
struct StoreFacts {
    /// The number of the last commit, of any process.
    std::int64_t commitNumber = 0;
    /// The hash of the schema that the file was written with.
    std::string modelHash;
    std::string identifier;
};

/// Reads them in one transaction; changes nothing.
platform::Result<StoreFacts> factsOf(StoreCoordinator& coordinator, PersistentStore& store);

/// The version of the SQLite library that this process runs.
std::string sqliteVersion();

} // namespace objectstore
