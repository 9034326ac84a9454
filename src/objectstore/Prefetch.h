// Relationships of many objects at once.
#pragma once

#include "objectstore/ContextState.h"

#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

/// Reads what that relationship leads to from all of `objects`, in one query a table, unless it was read
/// before. Answers the objects found there.
ObjectList prefetchSlot(ContextState& context, const ObjectList& objects, const Slot& slot);

/// The same for key paths; throws InvalidKey for one that the entity of the first object does not have.
void prefetchPaths(ContextState& context, const ObjectList& objects, const std::vector<std::string>& paths);

/// Where the relationship of that key leads from any of `objects`, each object once.
ObjectList relatedOf(ContextState& context, const ObjectList& objects, std::string_view key);

} // namespace objectstore
