// The system's context: a store context that knows its roster, and reads and refreshes records many at a
// time.
#pragma once

#include "objectstore/StoreContext.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

class ZROSContact;
class ZRRoster;

/// A context on a roster's store.
///
/// Ownership, Threads, Errors: as StoreContext; the roster is borrowed. What cannot be fetched is logged and
/// answered as nothing.
class ZRManagedObjectContext : public objectstore::StoreContext {
public:
    using objectstore::StoreContext::StoreContext;

    void setOwningRoster(ZRRoster* roster) { _owningRoster = roster; }
    ZRRoster* owningRoster() const { return _owningRoster; }

    /// Whether the collation keys of this store are of this process's locale and ICU version. Otherwise names
    /// are sorted in memory, and what is saved here leaves the keys absent, for all to see.
    void setWritesCollationKeys(bool writes) { _writesCollationKeys = writes; }
    bool writesCollationKeys() const { return _writesCollationKeys; }
    /// Whether SQL can sort people by name: every card has keys that this process understands.
    bool hasCollationKeys();
    /// Whether a store of it lives in memory.
    bool isMemoryBacked() const;
    /// The card of the first source that has a Me, or null.
    objectstore::ObjectRef myContact();
    /// The objects of messaging services that were asked for, by store and name.
    using Services = std::map<std::pair<objectstore::PersistentStore*, std::string>, objectstore::ObjectRef>;
    Services& services() { return _services; }

    // ---- reading many at a time

    /// Brings the values of all these cards in one fetch a relationship.
    void preheatContacts(const objectstore::ObjectList& contacts);
    void preheatContacts(const objectstore::ObjectList& contacts, std::vector<std::string> keyPaths);
    void preheatGroups(const objectstore::ObjectList& groups);
    void preheatGroups(const objectstore::ObjectList& groups, const std::vector<std::string>& keyPaths);
    /// Brings the objects, which are of the entity of the first, up to date; unsaved changes stay.
    void refreshRecords(const objectstore::ObjectList& objects);

    // ---- queries

    objectstore::ObjectList zrObjectsForPredicate(const objectstore::PredicateRef& predicate,
        std::string_view entityName, std::vector<objectstore::PersistentStore*> affectedStores = {},
        bool asFaults = true);
    objectstore::ObjectList zrContactsForPredicate(const objectstore::PredicateRef& predicate,
        std::vector<objectstore::PersistentStore*> affectedStores = {});
    objectstore::ObjectList zrContactsForUniqueIDs(const std::vector<std::string>& uniqueIds);
    objectstore::ObjectList zrGroupsForPredicate(const objectstore::PredicateRef& predicate);
    objectstore::ObjectList zrGroupsForUniqueIDs(const std::vector<std::string>& uniqueIds);

    // ---- updates

    /// Deletes the changed values that say nothing.
    void zrPruneEmptyRelationships();
    /// Deletes every record, and saves.
    void zrPurgeManagedObjectContext();
    /// Notes in the log that a record is being deleted; one without an id is passed over.
    void zrMarkRecordForDeletion(objectstore::StoreObject& record);
    /// A new object with a fresh unique id.
    objectstore::ObjectRef zrCreateObjectWithEntityName(std::string_view entityName);
    /// Takes every card out of the last import.
    void zrClearLastImportGroup();
    objectstore::ObjectList zrUpdatedContacts();
    static objectstore::ObjectList _zrObjectsInSet(
        const objectstore::ObjectList& objects, std::string_view entityName);
    bool zrUsesStoreWithURL(std::string_view path) const;
    bool zrHasCommonStoreWithContext(const ZRManagedObjectContext& other) const;
    /// Takes in what another context saved, on whatever coordinator it is.
    void zrSuperMergeChangesFromContextDidSaveNotification(
        ZRManagedObjectContext* saver, const platform::Value& changes);

protected:
    ~ZRManagedObjectContext() override;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    ZRRoster* _owningRoster = nullptr;
    bool _writesCollationKeys = false;
    Services _services;
};
