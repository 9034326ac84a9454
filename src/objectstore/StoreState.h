// The engine's side of a store: connection, shared rows, and what its tables mean.
#pragma once

#include "objectstore/PersistentStore.h"
#include "objectstore/RowTable.h"
#include "objectstore/sqlite/Connection.h"
#include "platform/run/ProcessMark.h"

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace objectstore {

class SaveObserver;

/// Which file stands at a path.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// False when nothing is there.
bool identityOf(const std::string& path, FileIdentity& identity);

/// An open store, as the engine's files work on it.
///
/// Ownership: owned by its PersistentStore; shares the rows with their holders.
/// Threads:   under the coordinator's lock.
/// Errors:    `connection` throws sqlite::Failure.
struct StoreState {
    explicit StoreState(std::unique_ptr<sqlite::Connection> opened) : connection(std::move(opened)) { }
    /// Closing a store whose file was replaced leaves alone what stands at its path now.
    ~StoreState();
    StoreState(const StoreState&) = delete;
    StoreState& operator=(const StoreState&) = delete;

    /// Reads which numbers stand for which entities, and gives numbers to new ones when `mayWrite`.
    void loadEntityNumbers(const Model& model, bool mayWrite);
    std::int64_t numberOf(const Entity& entity) const { return entityNumbers[entity.index()]; }
    /// Null for a number that no entity of the model has.
    const Entity* entityNumbered(std::int64_t number) const;
    /// Whether the file that was opened is no longer the one at the path.
    bool isReplaced() const;

    std::unique_ptr<sqlite::Connection> connection;
    RowTable* rows = RowTable::make();
    std::string path;
    FileIdentity identity;
    bool isInMemory = false;
    bool isReadOnly = false;
    /// How often was read, until SQLite keeps as many pages as those want who stay: negative then.
    int readings = 0;
    /// How often a transaction was begun that writes.
    unsigned writings = 0;
    platform::ProcessMark mark;

    /// How deep transactions are nested, and whether the outermost one writes.
    int transactionDepth = 0;
    bool isWriting = false;
    /// The number of the last commit, as the transaction under way sees it.
    std::int64_t commitNumber = 0;

    /// Sees what saves write; null for nobody.
    SaveObserver* saveObserver = nullptr;

    /// What `readRow` collects fields in.
    std::array<FieldValue, 128> scratch;
    /// By family: the statement that finds a row by its key.
    std::vector<std::string> findSQL;
    /// By entity: the statement that inserts a row.
    std::vector<std::string> insertSQL;
    std::vector<std::int64_t> entityNumbers;
    std::vector<const Entity*> entitiesByNumber;
};

} // namespace objectstore
