// How a fetch is answered for a context as it stands.
#pragma once

#include "objectstore/ColumnFetch.h"
#include "objectstore/ContextState.h"
#include "objectstore/StoreFetch.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace objectstore {

/// The objects, in order. Throws sqlite::Failure or StoreFailure, and for a key that the entity lacks or a
/// variable without a value std::invalid_argument.
ObjectList fetchObjects(ContextState& context, const StoreFetch& fetch);
/// One attribute of each. Throws InvalidKey also for a key without a column of its own.
std::vector<platform::Value> fetchAttribute(
    ContextState& context, const StoreFetch& fetch, std::string_view key);
/// See fetchColumns. Throws InvalidKey for a key that has no column of its own.
void visitColumns(ContextState& context, const StoreFetch& fetch, std::span<const std::string_view> keys,
    const ColumnVisitor& visit);
std::size_t countObjects(ContextState& context, const StoreFetch& fetch);
/// See StoreContext::explainFetch.
std::vector<FetchPlan> explainObjects(ContextState& context, const StoreFetch& fetch);

} // namespace objectstore
