// From a path to an open store: checks, creation, migration.
#pragma once

#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreState.h"

#include <memory>
#include <string>

namespace objectstore {

/// Opens a store, makes it, or migrates it. Throws sqlite::Failure or StoreFailure; then nothing has changed,
/// and no file was made.
std::unique_ptr<StoreState> openStore(
    const Model& model, StoreType type, const std::string& path, const StoreOptions& options);

/// A value of the store's meta table; empty when it is not there.
std::string readMeta(StoreState& store, std::string_view name);
void writeMeta(StoreState& store, std::string_view name, std::string_view value);

inline constexpr char kMetaSchema[] = "schema";
inline constexpr char kMetaModelHash[] = "modelHash";
inline constexpr char kMetaIdentifier[] = "identifier";
/// The caller's metadata, as a binary property list.
inline constexpr char kMetaCaller[] = "metadata";

} // namespace objectstore
