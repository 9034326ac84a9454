// How a predicate is asked of one object in memory.
#pragma once

#include "objectstore/StoreObject.h"
#include "objectstore/StorePredicate.h"

namespace objectstore {

/// Whether the object as its context sees it, unsaved changes included, fulfils the predicate.
///
/// It reads by the public way, so computed and lazy keys count. What stands behind a row that is gone is
/// absent. Throws std::invalid_argument for an unknown key or a variable without a value, and what reading
/// throws.
bool matches(const StorePredicate& predicate, StoreObject& object);

} // namespace objectstore
