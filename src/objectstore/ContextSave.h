// How a context's changes become one transaction.
#pragma once

#include "objectstore/ContextState.h"

namespace objectstore {

/// See StoreContext::save.
platform::Result<void> saveContext(ContextState& context, const StoreContext::BeforeCommit& beforeCommit);

} // namespace objectstore
