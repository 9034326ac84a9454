// Where stored objects are worked with: found, changed, and saved in one transaction.
#pragma once

#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/StoreFetch.h"
#include "objectstore/StoreObject.h"
#include "platform/run/Mutex.h"
#include "platform/value/Error.h"
#include "platform/value/Object.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

class StoreContext;
struct ContextState;

/// Posted in platform::NotificationCenter, on the saving thread, about the context; the user info is a
/// StoreChanges: `notification.userInfo.as<StoreChanges>()`.
///
/// Before the save, with the context's lock held; what an observer changes is saved too.
inline constexpr char kStoreContextWillSave[] = "StoreContextWillSave";
/// After a save that wrote something, outside the transaction and the coordinator's lock.
inline constexpr char kStoreContextDidSave[] = "StoreContextDidSave";
/// Objects of this context were brought up to date with what others saved: `updated` have new rows or parts,
/// `deleted` are gone.
inline constexpr char kStoreContextDidCatchUp[] = "StoreContextDidCatchUp";
/// An operation found that the file of a store was removed, or another put in its place. Nothing is read or
/// written there any more until the host resets the contexts and opens the path again.
inline constexpr char kStoreContextDidLoseStore[] = "StoreContextDidLoseStore";

/// Three sets of objects, as a notification carries them.
class StoreChanges final : public platform::Object {
public:
    ObjectList inserted;
    ObjectList updated;
    ObjectList deleted;
    bool isEmpty() const { return inserted.empty() && updated.empty() && deleted.empty(); }
};

/// What a host's undo manager must answer. The engine records no undo: it asks whether one is going on, and
/// keeps registration off while it refreshes.
class UndoManager {
public:
    virtual ~UndoManager() = default;
    virtual bool isUndoing() const = 0;
    virtual bool isRedoing() const = 0;
    virtual void disableUndoRegistration() = 0;
    virtual void enableUndoRegistration() = 0;
};

/// How a save settles a row that another context changed too.
enum class MergePolicy : std::uint8_t {
    /// Property by property: what changed here is written, the rest stays as the other left it.
    memoryWins,
};

/// A set of objects with unsaved changes, over the stores of a coordinator.
///
/// It is not a copy of the store: objects are registered weakly and leave with their last owner. What others
/// save is noticed at the next fetch, fault or save, and by `catchUp`; then rows are exchanged and unsaved
/// changes stay.
///
/// Ownership: shared; shares ownership of the coordinator, borrows the undo manager. It holds objects only
///            while they have unsaved changes. An object that outlives its context reads as absent.
/// Threads:   any, one at a time: operations take the context's recursive lock themselves; whoever works with
///            objects holds it meanwhile. Before that of the coordinator.
/// Errors:    an Error with a StoreFault. After a failed save every unsaved change is still there.
class StoreContext : public platform::Object {
public:
    explicit StoreContext(platform::Ref<StoreCoordinator> coordinator = nullptr);

    /// Only while no object is registered.
    void setCoordinator(platform::Ref<StoreCoordinator> coordinator);
    platform::Ref<StoreCoordinator> coordinator() const;
    MergePolicy mergePolicy() const { return MergePolicy::memoryWins; }
    void setMergePolicy(MergePolicy) { }
    /// Null for none, as at first.
    void setUndoManager(UndoManager* manager);
    UndoManager* undoManager() const;

    void lock() const ZR_ACQUIRE(_mutex);
    void unlock() const ZR_RELEASE(_mutex);
    bool tryLock() const ZR_TRY_ACQUIRE(true, _mutex);
    platform::RecursiveMutex& mutex() const ZR_RETURN_CAPABILITY(_mutex) { return _mutex; }

    /// A new object under a temporary id, after its `awakeFromInsert`. It goes to the store that it is
    /// assigned to, else to the first one. Throws InvalidKey for an abstract or unknown entity.
    ObjectRef insertObjectOfEntity(const Entity& entity);
    ObjectRef insertObjectOfEntity(std::string_view entity);
    /// The one object of a shared entity that has those values in the keys that name it, in the order of
    /// `sharedBy`. Where it is not in the store yet it is written there at once, in a transaction of its own:
    /// two processes that ask for the same get the same. Null `store`: the first.
    platform::Result<ObjectRef> sharedObject(
        const Entity& entity, const std::vector<platform::Value>& values, PersistentStore* store = nullptr);
    /// Deletes at the next save; the delete rules are applied by `flushPendingChanges`. An object that was
    /// never saved just leaves.
    void deleteObject(StoreObject& object);
    /// Only for inserted objects.
    void assignObjectToStore(StoreObject& object, PersistentStore* store);

    /// The objects that the fetch asks for, unsaved changes included.
    platform::Result<ObjectList> runFetch(const StoreFetch& fetch);
    /// What one attribute says for each object that `runFetch` would find, in the same order; absent where it
    /// is absent. No object is made, no other column read: with `uniqueId` this is the answer to a search.
    /// The key must be an attribute with a column that is never computed late, else it answers InvalidKey's
    /// Error.
    platform::Result<std::vector<platform::Value>> fetchValues(const StoreFetch& fetch, std::string_view key);
    /// How many `runFetch` would find.
    platform::Result<std::size_t> countFetch(const StoreFetch& fetch);
    /// How `runFetch` would go about it, a plan a table that is read. For people who ask why; it runs
    /// nothing.
    platform::Result<std::vector<FetchPlan>> explainFetch(const StoreFetch& fetch);

    /// Brings the object up to date with the store. Keeping changes: they stay over the new row. Otherwise
    /// they are dropped, and the object becomes a fault.
    void refreshObject(StoreObject& object, bool keepingChanges);
    /// The object of that id: the registered one, or a fault that is not looked up before it is read. Null
    /// for an id of no store here, or a temporary one that is not registered.
    ObjectRef objectForStoreId(const StoreId& id);
    /// The registered object, or null.
    ObjectRef objectRegisteredForID(const StoreId& id) const;
    ObjectList registeredObjects() const;
    /// Those of them for which `wanted` answers true.
    ObjectList registeredObjects(const std::function<bool(StoreObject&)>& wanted) const;

    /// Looks whether the files of the stores are those that were opened. An Error with StoreFault::replaced,
    /// or nothing.
    platform::Result<void> checkFiles();

    /// Brings the text index of the first store into one piece, as an import of very many records does at its
    /// end: else the hundreds of saves behind it do that work, a little each. Takes a second for a hundred
    /// thousand records; readers go on meanwhile, and nothing that is saved changes.
    platform::Result<void> mergeTextIndex();

    /// Whether a save would write something.
    bool hasChanges() const;
    /// Applies the delete rules of what was deleted since the last time.
    void flushPendingChanges();
    /// In order of insertion; the others in order of their keys. They flush first.
    ObjectList insertedObjects();
    ObjectList updatedObjects();
    ObjectList deletedObjects();

    /// Writes all changes, one transaction a store; durable when it answers. Without changes it does nothing
    /// and posts nothing. Rows that others changed meanwhile are merged: see MergePolicy and UnitDescription;
    /// what others deleted stays deleted, and is logged. With changes in several stores all are written
    /// before the first commit, but a crash between two commits leaves the first.
    ///
    /// `beforeCommit` is called once all is written and before anything is committed, with all locks held;
    /// its error undoes the writing and is the answer. Without changes it is not called.
    using BeforeCommit = std::function<platform::Result<void>()>;
    platform::Result<void> save(const BeforeCommit& beforeCommit = {});
    /// Forgets every object and every unsaved change. Objects that are still owned read as absent.
    void reset();

    /// Takes in what other contexts and processes have saved. Fetches and faults do so by themselves.
    platform::Result<void> catchUp();
    /// The same, for observers of another context's did-save notice.
    platform::Result<void> mergeChangesFromContextDidSave(const platform::Value& notice);
    /// The number of the last commit of the first store that was taken in: right after a save its own, -1
    /// before the first look. While it equals `StoreFacts::commitNumber`, nothing here is out of date.
    std::int64_t lastSeenCommit() const;

    /// Reads those relationships of all these objects along, one query a path. Paths as in StoreFetch.
    platform::Result<void> prefetch(const ObjectList& objects, const std::vector<std::string>& keyPaths);
    /// The objects that a relationship of any of these leads to, each once and with its row, by a few queries
    /// for all together. While they are held, following it reads nothing.
    platform::Result<ObjectList> relatedObjects(const ObjectList& objects, std::string_view key);

protected:
    ~StoreContext() override;

private:
    friend struct ObjectAccess;

    mutable platform::RecursiveMutex _mutex{platform::LockRank::context};
    const std::unique_ptr<ContextState> _state;
};

} // namespace objectstore
