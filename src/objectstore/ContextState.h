// What a context keeps: its objects, and what of them is not saved.
#pragma once

#include "objectstore/KeyTable.h"
#include "objectstore/Links.h"
#include "objectstore/ObjectAccess.h"
#include "objectstore/PendingIndex.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreState.h"
#include "objectstore/Transaction.h"

#include <atomic>
#include <cstdint>
#include <unordered_set>
#include <vector>

namespace objectstore {

/// What objects hold of their context: it outlives the context, so that a last release on any thread finds
/// where to go.
///
/// Ownership: counted; every object of the context and the context itself own it.
/// Threads:   any.
/// Errors:    none.
struct ContextAnchor {
    std::atomic<std::uint32_t> owners{1};
    /// Null once the context is going.
    std::atomic<StoreContext*> context{nullptr};
    /// Objects without owners that wait for the next holder of the context's lock.
    std::atomic<StoreObject*> gone{nullptr};

    void retain() noexcept { owners.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept
    {
        if (owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }
    void push(StoreObject& object) noexcept;
    /// Ends every waiting object. Only for the holder of the lock, or after the context has gone.
    template <class Forget>
    void drain(Forget forget)
    {
        while (StoreObject* object = gone.exchange(nullptr)) {
            while (object) {
                StoreObject* next = ObjectAccess::nextGone(*object);
                forget(*object);
                ObjectAccess::destroy(object);
                object = next;
            }
        }
    }
};

inline std::int64_t keyOfObject(const StoreObject& object) { return object.key(); }
using ObjectTable = KeyTable<StoreObject, keyOfObject>;

/// One store as one context has seen it.
struct SeenStore {
    PersistentStore* store = nullptr;
    ObjectTable objects;
    /// The last commit whose changes were taken in; -1 before the first look.
    std::int64_t seen = -1;
};

/// The private state of a StoreContext. Its operations stand in the engine's files, each by its subject.
///
/// Ownership: owned by its context.
/// Threads:   under the context's lock.
/// Errors:    what reads the store throws sqlite::Failure, or StoreFailure.
struct ContextState {
    explicit ContextState(StoreContext& owner, platform::Ref<StoreCoordinator> chosen);
    ~ContextState();

    StoreContext& context;
    platform::Ref<StoreCoordinator> coordinator;
    UndoManager* undoManager = nullptr;
    ContextAnchor* anchor = new ContextAnchor;
    int operationDepth = 0;

    std::vector<std::unique_ptr<SeenStore>> stores;
    ObjectTable temporary;
    std::int64_t lastTemporaryKey = 0;
    /// What it was after the last save: everything new has a key below it.
    std::int64_t savedTemporaryKey = 0;

    /// Whatever has, or had, unsaved changes since the last save.
    ObjectList changed;
    std::size_t insertedCount = 0;
    std::size_t updatedCount = 0;
    std::size_t deletedCount = 0;
    /// Unchanged themselves, but with changed parts or links.
    ObjectList touched;
    /// Ends of links to something deleted, by store and key: the objects need not be here.
    std::unordered_set<StoreId> touchedIds;
    Links links;
    /// Made by the first fetch that asks for one text of an indexed key while much is unsaved.
    std::vector<PendingIndex> pendingIndexes;
    /// Deleted, with the delete rules still to be applied.
    ObjectList toPropagate;
    /// Grows whenever remembered keys of relationships may be outdated.
    std::uint64_t linkEpoch = 1;
    /// Others changed rows while this context had unsaved changes: the commit it had seen before the first of
    /// them. -1 otherwise.
    std::int64_t mergeBase = -1;
    /// Shared objects that were looked up: few, and asked for again and again.
    ObjectList sharedObjects;
    /// What the end of the operation under way will post.
    platform::Ref<StoreChanges> saved;
    platform::Ref<StoreChanges> caughtUp;
    bool hasLostStore = false;

    // Objects: ContextState.cpp
    SeenStore& seen(PersistentStore& store);
    ObjectTable& tableOf(StoreObject& object);
    void drain();
    ObjectRef registered(PersistentStore* store, std::int64_t key);
    ObjectRef makeObject(const Entity& entity, PersistentStore* store, std::int64_t key, RowRef row);
    /// The object of that row: the registered one, brought to that row, or a new one.
    ObjectRef objectForRow(PersistentStore& store, RowRef row);
    /// The object of that key below `destination`; null when there is none.
    ObjectRef resolve(const Entity& destination, PersistentStore* store, std::int64_t key);
    void exchangeRow(StoreObject& object, RowRef row);
    void fill(StoreObject& object);
    void unregister(StoreObject& object);
    /// The object is no more: its context is gone, its unsaved changes forgotten.
    void abandon(StoreObject& object);
    /// Of an error that says that a file was replaced, observers hear at the end of the operation.
    void noteLoss(const platform::Error& error);
    /// That store, or the first one for null; throws StoreFailure when it is not open.
    PersistentStore& requireStore(PersistentStore* store);

    // Changes: ContextState.cpp
    void list(StoreObject& object);
    void markChanged(StoreObject& object);
    void touch(StoreObject& object);
    void touchOwner(StoreObject& object);
    /// Tells the pending indexes that a slot was set.
    void noteText(StoreObject& object, const Slot& slot);
    void setPending(StoreObject& object, std::uint32_t bit);
    void clearPending(StoreObject& object);
    void forgetChanges();
    bool hasChanges() const { return insertedCount + updatedCount + deletedCount > 0 || !links.isEmpty(); }

    // Relationships: RelationshipReads.cpp
    void load(StoreObject& object, const Slot& slot, RelationshipCache& cache);
    ObjectList far(StoreObject& object, const Slot& slot);
    /// The first of them, or null.
    ObjectRef firstFar(StoreObject& object, const Slot& slot);

    // Delete rules: DeleteRules.cpp
    void markDeleted(StoreObject& object);
    void propagateDeletes();
};

/// The scope of one public operation: holds the context's lock, ends waiting objects, and posts at the end
/// what was caught up with meanwhile.
class Operation {
public:
    explicit Operation(const StoreContext& context);
    ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    ContextState& operator*() const { return _state; }
    ContextState* operator->() const { return &_state; }

private:
    const StoreContext& _context;
    ContextState& _state;
};

/// Opens a store for reading: the coordinator's lock, a read transaction, and the context brought up to date.
class Reading {
public:
    Reading(ContextState& context, PersistentStore& store);
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    StoreState& operator*() const { return _state; }
    StoreState* operator->() const { return &_state; }

private:
    platform::Lock<platform::RecursiveMutex> _lock;
    StoreState& _state;
    ReadTransaction _transaction;
};

/// Runs `body`, which reads `store` on behalf of an object. What SQLite refuses becomes a StoreFailure; where
/// another file stands in the store's place, the object was in the one that is gone: ObjectOfReplacedStore.
template <class Body>
auto readForObject(const PersistentStore& store, Body body) -> decltype(body())
{
    try {
        return body();
    } catch (const sqlite::Failure& failure) {
        throw StoreFailure(errorOf(failure, store.path()));
    } catch (const StoreFailure& failure) {
        if (isFault(failure.error(), StoreFault::replaced))
            throw ObjectOfReplacedStore(failure.error());
        throw;
    }
}

/// The relationships of `target` that are found through the to-one `slot` of an object of entity `part`.
template <class Visitor>
void forEachInverse(const Entity& target, const Slot& slot, const Entity& part, Visitor visit)
{
    if (!slot.isInverted)
        return;
    for (const Slot* candidate : target.slots())
        if (candidate->inverse == &slot && candidate->isThroughInverse()
            && part.isKindOf(*candidate->destination))
            visit(*candidate);
}

} // namespace objectstore
