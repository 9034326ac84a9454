// What a few columns say of many objects, without making any.
#pragma once

#include "objectstore/Row.h"
#include "objectstore/StoreContext.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace objectstore {

/// Gets the key of an object (negative for one that was never saved) and its fields, in the order in which
/// their keys were given. Text and bytes are alive during the call. It must not use the context.
using ColumnVisitor = std::function<void(std::int64_t key, std::span<const FieldValue> fields)>;

/// Tells `visit` what those keys say of each object that `runFetch` would find, in the same order. For work
/// that looks at all objects to find a few: nothing is made and nothing kept, unless the context has unsaved
/// changes that the fetch must follow.
///
/// The keys are attributes that are never computed late, and to-ones, which come as the key of the object
/// that they lead to. Any other key answers InvalidKey's Error.
platform::Result<void> fetchColumns(StoreContext& context, const StoreFetch& fetch,
    std::span<const std::string_view> keys, const ColumnVisitor& visit);

} // namespace objectstore
