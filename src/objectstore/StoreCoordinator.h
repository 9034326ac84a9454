// The stores of a model and the one door to each: who opens, adds, removes and moves store files.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Mutex.h"
#include "platform/value/Error.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

class PersistentStore;
class RowTable;

enum class StoreType : std::uint8_t { sqlite, inMemory };

struct StoreOptions {
    /// How long to wait for a lock that another process holds.
    double busyTimeout = 60;
    /// Whether the columns and tables that an older model lacks are added. Otherwise such a store is refused
    /// as of an unknown model.
    bool migratesAutomatically = true;
    /// Opens without ever writing; a store that needs a migration is refused.
    bool isReadOnly = false;
    /// The SQLite VFS to use; empty: the default one.
    std::string vfs;
};

/// The stores that share a model, each with one connection for the whole process.
///
/// It knows no objects: contexts do. It alone begins transactions.
///
/// A store file is opened by SQLite and by nobody else, is private to its user (mode octal 600), and is
/// compared with the path before each write: one that was removed or replaced is never written.
///
/// Ownership: shared; owns its stores and the model. A context shares ownership of it.
/// Threads:   any; each operation takes the coordinator's lock, which is recursive.
/// Errors:    operations answer an Error of the domain "ObjectStore" with a StoreFault and a text that names
///            the path; a failed one has changed nothing.
class StoreCoordinator final : public platform::Object {
public:
    static platform::Ref<StoreCoordinator> make(platform::Ref<const Model> model);

    const Model& model() const { return *_model; }

    /// Opens the store at `path`, or makes it, with its tables, where no file is (or one of zero length that
    /// has no write-ahead log: what a crash while making it leaves). An in-memory store ignores the path.
    /// An older store whose schema is part of ours gets what it lacks, in one transaction.
    platform::Result<PersistentStore*> addStore(
        StoreType type, std::string_view path, const StoreOptions& options = {});
    /// Closes it. Objects of the store can no longer be read.
    platform::Result<void> removeStore(PersistentStore* store);
    /// Copies everything, commit numbers included, into a new store and puts that in the place of `store`,
    /// which is removed; its file stays. Objects in contexts keep their keys and belong to the new store. A
    /// file that is at `path` already is refused. The path "/dev/null" means an in-memory store.
    platform::Result<PersistentStore*> migrateStore(
        PersistentStore* store, std::string_view path, StoreType type, const StoreOptions& options = {});
    /// Writes a consistent copy to a new file while the store is in use.
    platform::Result<void> copyStore(PersistentStore* store, std::string_view path);
    /// The same of a database that no coordinator has open, whatever its model: it is only read.
    static platform::Result<void> copyDatabase(const std::string& from, const std::string& path);
    /// Looks whether the store is sound: the file, what rows refer to, the text indexes. Answers what is
    /// wrong, a line each; nothing when it is sound. Changes nothing, and keeps writers out meanwhile.
    platform::Result<std::vector<std::string>> checkStore(PersistentStore* store);

    std::vector<PersistentStore*> stores() const;
    /// The one that was opened first, or null.
    PersistentStore* firstStore() const;
    /// Whether one of them lives in memory only.
    bool hasStoreInMemory() const;
    /// By the number in a StoreId; null when it was removed.
    PersistentStore* storeNumbered(std::uint32_t number) const;
    /// The store at that path, or null.
    PersistentStore* storeAtPath(std::string_view path) const;

    /// What callers keep beside the data: a dictionary of property-list values, empty at first.
    platform::Result<platform::Value> metadata(PersistentStore* store) const;
    /// Replaces it in a transaction of its own.
    platform::Result<void> setMetadata(PersistentStore* store, const platform::Value& dictionary);

    /// Keeps every other thread away from all stores. Re-entrant.
    void lock() const ZR_ACQUIRE(_mutex) { _mutex.lock(); }
    void unlock() const ZR_RELEASE(_mutex) { _mutex.unlock(); }
    bool tryLock() const ZR_TRY_ACQUIRE(true, _mutex) { return _mutex.tryLock(); }
    platform::RecursiveMutex& mutex() const ZR_RETURN_CAPABILITY(_mutex) { return _mutex; }

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    explicit StoreCoordinator(platform::Ref<const Model> model);
    ~StoreCoordinator() override;

    const platform::Ref<const Model> _model;
    mutable platform::RecursiveMutex _mutex{platform::LockRank::coordinator};
    std::vector<std::unique_ptr<PersistentStore>> _stores ZR_GUARDED_BY(_mutex);
};

} // namespace objectstore
