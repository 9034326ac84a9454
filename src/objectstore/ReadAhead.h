// How the rows of an object come to the processor before they are read.
#pragma once

#include "objectstore/StoreObject.h"

namespace objectstore {

/// Has the processor fetch the object's row and the rows of those of its parts that are in memory: they lie
/// far from each other, so that reading many objects in a row is mostly waiting for one row after the other.
/// Changes nothing, and reads nothing from the store.
///
/// The caller holds the context's lock, as for a read.
void readAhead(StoreObject& object);

} // namespace objectstore
