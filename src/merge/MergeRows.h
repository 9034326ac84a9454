// How the rows of one card's entries become those of another's.
#pragma once

#include "objectstore/StoreObject.h"

class ZROSContact;

namespace merge {

/// Whether the slot leads to rows that are entries of a multi-value, or values of custom properties.
bool holdsEntries(const objectstore::Slot& slot);

/// Makes the rows of `slot` in `target` say what those in `source` say; answers whether anything changed.
bool mergeRows(const objectstore::Slot& slot, ZROSContact& target, ZROSContact& source);

/// Copies a stored attribute unless both say the same; answers whether anything changed.
bool copyAttribute(
    const objectstore::Slot& slot, objectstore::StoreObject& target, objectstore::StoreObject& source);

} // namespace merge
