// How an older store gets what its schema lacks.
#pragma once

#include "objectstore/StoreState.h"

#include <string_view>

namespace objectstore {

/// Whether every line of `stored` is in `wanted`, save for indexes that `wanted` defines in another way: the
/// store is of an earlier form of the model.
bool isEarlierSchema(std::string_view stored, std::string_view wanted);

/// Adds tables, columns and indexes that the stored schema lacks, and fills text tables. Within a write
/// transaction of the caller. Throws StoreFailure of migrationFailed.
void addMissingSchema(StoreState& store, const Model& model, std::string_view stored);

/// Makes everything in an empty database, within a write transaction of the caller.
void createSchema(sqlite::Connection& connection, const Model& model);

} // namespace objectstore
