// How somebody sees what saves write to a store, inside their transactions.
#pragma once

#include "objectstore/Row.h"
#include "objectstore/StoreCoordinator.h"

#include <cstdint>
#include <vector>

namespace objectstore {

struct StoreState;

/// A root object that a save touches: itself, its parts, or what ties it to others.
struct SavedRoot {
    enum class Fate : std::uint8_t { inserted, changed, deleted };

    std::int64_t key = 0;
    Fate fate = Fate::changed;
};

/// Sees each save of a store, whichever context of the process makes it, and may write tables of its own in
/// the same transaction.
///
/// It is not told of what other processes save.
///
/// Ownership: borrowed by the store until it is exchanged or the store closes.
/// Threads:   called with the coordinator's lock held, by whichever thread saves.
/// Errors:    what it throws (sqlite::Failure, StoreFailure) fails the save, which is then undone.
class SaveObserver {
public:
    virtual ~SaveObserver() = default;

    /// Whether a change of that attribute of a root counts. Roots with nothing that counts are left out.
    virtual bool counts(const Slot& slot, const FieldValue& before, const FieldValue& after) const = 0;
    /// Before the first row is written: the store still shows what was. Inserted roots have their keys
    /// already.
    virtual void willWrite(StoreState& store, const std::vector<SavedRoot>& roots) = 0;
    /// All is written and nothing is committed. `inserted` are the new rows, if all that belongs to the new
    /// roots is among them; else it is null.
    virtual void didWrite(
        StoreState& store, const std::vector<SavedRoot>& roots, const std::vector<RowRef>* inserted) = 0;
    virtual void didCommit() = 0;
};

/// Exchanges the observer of a store; null for none, as at first, and then saves pay nothing.
void setSaveObserver(StoreCoordinator& coordinator, PersistentStore& store, SaveObserver* observer);
/// The observer of the store, or null.
SaveObserver* saveObserver(StoreCoordinator& coordinator, PersistentStore& store);

} // namespace objectstore
