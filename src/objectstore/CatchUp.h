// What others saved, taken into a context.
#pragma once

#include "objectstore/ContextState.h"

namespace objectstore {

/// Brings the context's objects up to the commit that the transaction under way sees: rows that others wrote
/// are exchanged under the unsaved changes, what they deleted is abandoned, and remembered relationships of
/// what changed are forgotten. Does nothing when nothing was committed since.
///
/// Takes time in proportion to what others changed and to the objects here; memory only for the latter.
void catchUp(ContextState& context, PersistentStore& store, StoreState& state);

} // namespace objectstore
