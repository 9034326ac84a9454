// What a save writes to one store.
#pragma once

#include "objectstore/ContextState.h"
#include "objectstore/SaveObserver.h"
#include "objectstore/TextIndex.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace objectstore {

/// An object that a save writes, with what it will be once that is committed.
struct Written {
    ObjectRef object;
    /// Inserted objects: the permanent key.
    std::int64_t key = 0;
    /// Null: read it again when it is asked for.
    RowRef row;
    /// Nothing was written, because the row is gone.
    bool isLost = false;
};

/// The statement that inserts a row of that entity: key, version, the entity's number, then its fields.
const std::string& insertSQL(StoreState& store, const Entity& entity);

/// Writes the unsaved changes of a context to one store, within a write transaction, and changes nothing of
/// the context: that waits for the commit.
///
/// Deletes come first, then updates, then inserts, so that what takes the place of something finds it free.
///
/// Ownership: borrows the context and the store.
/// Threads:   under both locks.
/// Errors:    throws sqlite::Failure; the caller rolls back.
class StoreWrite {
public:
    StoreWrite(ContextState& context, PersistentStore& store);

    void run();

    /// The roots that `run` will touch. Before it.
    std::vector<SavedRoot> touchedRoots(const SaveObserver& observer);
    /// The rows that `run` has inserted, when no other parts can be those of new roots.
    std::optional<std::vector<RowRef>> insertedRows() const;

    PersistentStore& store() const { return _store; }
    std::int64_t version() const { return _version; }
    std::vector<Written>& inserted() { return _inserted; }
    std::vector<Written>& updated() { return _updated; }
    const ObjectList& deleted() const { return _deleted; }
    /// Unchanged themselves; only their version moved.
    std::vector<Written>& bumped() { return _bumped; }

private:
    friend class UnitMerge;

    void collect();
    void assignKeys();
    bool adoptShared(Written& written);
    std::int64_t permanentKey(std::int64_t key) const;

    void writeDeletes();
    void deleteRows(const Entity& entity, const ObjectList& objects);
    void deleteEntry(const Entity& entity, const Row& row);
    void deleteParts(const Slot& slot, std::string_view owners);
    void deleteLarge(const Entity& entity, std::string_view keys);
    void recordDeletions(const ObjectList& objects);

    void writeUpdate(Written& written);
    void writeInserts();
    void writeInsert(Written& written);
    void writeLarge(StoreObject& object, std::int64_t key);
    void writeLinks();
    void bumpOwners();
    void pruneDeletions();
    void writeState();

    std::vector<std::int64_t> rootsTiedTo(const std::vector<std::int64_t>& deleted);
    void noteOwner(std::int64_t key, const Slot& owner);
    FieldValue resolved(StoreObject& object, const Slot& slot) const;
    std::span<const FieldValue> collectFields(StoreObject& object);
    RowRef rowOf(StoreObject& object);
    TextIndex& textIndex(const Entity& entity);
    sqlite::Statement& prepared(const std::string& sql) { return _state.connection->prepared(sql); }

    ContextState& _context;
    PersistentStore& _store;
    StoreState& _state;
    std::int64_t _version;
    std::int64_t _sequence = 0;
    std::vector<std::int64_t> _permanent;
    std::vector<Written> _inserted;
    std::vector<Written> _updated;
    ObjectList _deleted;
    std::vector<Written> _bumped;
    std::map<std::int64_t, const Slot*> _owners;
    std::map<const Entity*, TextIndex> _textIndexes;
    std::vector<FieldValue> _fields;
};

} // namespace objectstore
