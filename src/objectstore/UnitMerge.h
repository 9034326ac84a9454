// Multi-values that two contexts changed: merged entry by entry.
#pragma once

#include "objectstore/StoreWrite.h"

#include <unordered_set>

namespace objectstore {

/// Settles, before a save writes, what becomes of entries whose unit others may have changed.
///
/// Of each unit with unsaved changes here: the entries are theirs, plus those added here, less those removed
/// here. An entry that both changed is written as it is here; one that was only rewritten here, with nothing
/// changed, stays as theirs. Theirs keep their order, those added follow; one entry is primary.
///
/// Ownership: borrows the context and the write.
/// Threads:   under both locks.
/// Errors:    throws sqlite::Failure.
class UnitMerge {
public:
    UnitMerge(ContextState& context, StoreWrite& write) : _context(context), _write(write) { }

    /// Before the write: takes out of it what is not to be written.
    void plan();
    /// After the write: brings order and primary of the merged units into line.
    void finishWriting();
    /// Whether the inserted object was left out, because the entry is gone or theirs stayed.
    bool isDropped(const StoreObject& object) const { return _dropped.contains(&object); }

private:
    ContextState& _context;
    StoreWrite& _write;
    std::unordered_set<const StoreObject*> _dropped;
};

} // namespace objectstore
