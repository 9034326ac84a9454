// Reading, refreshing and pruning records many at a time.
#include "store/ZRManagedObjectContext.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "objectstore/PersistentStore.h"
#include "platform/run/Log.h"
#include "store/ZRModelSlots.h"
#include "store/ZRModelTable.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>

using objectstore::Comparator;
using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::PredicateRef;
using objectstore::Slot;
using objectstore::SlotKind;
using objectstore::StoreFetch;
using objectstore::StoreObject;
using objectstore::StorePredicate;
using platform::Value;

namespace {

Value valuesOf(const std::vector<std::string>& texts) { return Value::array({texts.begin(), texts.end()}); }

std::vector<std::string> relationshipNames(const objectstore::Entity& entity)
{
    std::vector<std::string> names;
    for (const Slot* slot : entity.slots())
        if (slot->isRelationship() && !slot->isTransient())
            names.push_back(slot->key);
    return names;
}

/// The values that leave with an object: those that a refresh of it must refresh too.
void refreshParts(objectstore::StoreContext& context, StoreObject& object)
{
    for (const Slot* slot : object.entity().slots()) {
        if (!slot->holdsParts)
            continue;
        if (!slot->isToMany() || slot->kind == SlotKind::toOneInverse) {
            if (const ObjectRef part = object.related(*slot))
                context.refreshObject(*part, true);
            continue;
        }
        for (const auto& part : object.objects(*slot))
            context.refreshObject(*part, true);
    }
}

} // namespace

ZRManagedObjectContext::~ZRManagedObjectContext() = default;

bool ZRManagedObjectContext::hasCollationKeys()
{
    if (!_writesCollationKeys)
        return false;
    StoreFetch fetch(contactSlots().entity, StorePredicate::isAbsent("sortingLastKey"));
    fetch.limit = 1;
    const auto without = countFetch(fetch);
    return without && *without == 0;
}

bool ZRManagedObjectContext::isMemoryBacked() const { return coordinator()->hasStoreInMemory(); }

ObjectRef ZRManagedObjectContext::myContact()
{
    for (const auto& source :
        zrObjectsForPredicate(StorePredicate::isPresent("me"), zr::kZRObjectStoreRosterSourceEntityName))
        if (const ObjectRef me = source->related(source->slot("me")))
            return me;
    return nullptr;
}

void ZRManagedObjectContext::preheatContacts(const ObjectList& contacts)
{
    preheatContacts(contacts, ZROSContact::prefetchRelationshipKeyPaths());
}

void ZRManagedObjectContext::preheatContacts(const ObjectList& contacts, std::vector<std::string> keyPaths)
{
    if (std::ranges::find(keyPaths, "messagingAddresses") != keyPaths.end())
        keyPaths.emplace_back("messagingAddresses.service");
    if (const auto read = prefetch(contacts, keyPaths); !read)
        platform::log(fmt::format("Exception preheating contacts: {}", read.error().text));
}

void ZRManagedObjectContext::preheatGroups(const ObjectList& groups)
{
    preheatGroups(groups,
        {"contacts", "distributionListConfigs", "childGroups", "remoteLocations", "customProperties"});
}

void ZRManagedObjectContext::preheatGroups(const ObjectList& groups, const std::vector<std::string>& keyPaths)
{
    if (const auto read = prefetch(groups, keyPaths); !read)
        platform::log(fmt::format("Exception preheating groups: {}", read.error().text));
}

void ZRManagedObjectContext::refreshRecords(const ObjectList& objects)
{
    if (objects.empty())
        return;
    const auto& entity = objects.front()->entity();
    const platform::Lock guard(mutex());
    StoreFetch fetch(entity, StorePredicate::isOneOf(Value::array({objects.begin(), objects.end()})));
    fetch.prefetchKeyPaths = relationshipNames(entity);
    if (const auto warmed = runFetch(fetch); !warmed)
        platform::log(fmt::format("Error refreshing records: {}", warmed.error().text));
    for (const auto& object : objects) {
        if (&object->entity() != &entity)
            continue;
        refreshObject(*object, true);
        if (entity.isKindOf(contactSlots().entity))
            refreshParts(*this, *object);
    }
}

ObjectList ZRManagedObjectContext::zrObjectsForPredicate(const PredicateRef& predicate,
    std::string_view entityName, std::vector<objectstore::PersistentStore*> affectedStores, bool asFaults)
{
    StoreFetch fetch(*coordinator()->model().entity(entityName), predicate);
    fetch.includesSubentities = entityName == zr::kZRObjectStoreRecordEntityName;
    fetch.returnsObjectsAsFaults = asFaults;
    fetch.affectedStores = std::move(affectedStores);
    auto found = runFetch(fetch);
    if (found)
        return std::move(*found);
    platform::log(fmt::format("Error filling {} for predicate: {}", entityName, found.error().text));
    return {};
}

ObjectList ZRManagedObjectContext::zrContactsForPredicate(
    const PredicateRef& predicate, std::vector<objectstore::PersistentStore*> affectedStores)
{
    return zrObjectsForPredicate(predicate, zr::kZRObjectStoreContactEntityName, std::move(affectedStores));
}

ObjectList ZRManagedObjectContext::zrContactsForUniqueIDs(const std::vector<std::string>& uniqueIds)
{
    return zrContactsForPredicate(StorePredicate::compare("uniqueId", Comparator::in, valuesOf(uniqueIds)));
}

ObjectList ZRManagedObjectContext::zrGroupsForPredicate(const PredicateRef& predicate)
{
    return zrObjectsForPredicate(predicate, zr::kZRObjectStoreGroupEntityName);
}

ObjectList ZRManagedObjectContext::zrGroupsForUniqueIDs(const std::vector<std::string>& uniqueIds)
{
    return zrGroupsForPredicate(StorePredicate::compare("uniqueId", Comparator::in, valuesOf(uniqueIds)));
}

void ZRManagedObjectContext::zrPruneEmptyRelationships()
{
    for (const auto& list : {updatedObjects(), insertedObjects()})
        for (const auto& object : list)
            if (!ZROSOwnedObject::hasRosterContentForRecord(*object))
                deleteObject(*object);
    flushPendingChanges();
}

void ZRManagedObjectContext::zrPurgeManagedObjectContext()
{
    StoreFetch fetch(*coordinator()->model().entity(zr::kZRObjectStoreRecordEntityName));
    const auto all = runFetch(fetch);
    if (!all)
        return platform::log(fmt::format("Error fetching records for deletion: {}", all.error().text));
    for (const auto& record : *all)
        deleteObject(*record);
    if (const auto saved = save(); !saved)
        platform::log(fmt::format("Error purging context: {}", saved.error().text));
}

void ZRManagedObjectContext::zrMarkRecordForDeletion(StoreObject& record)
{
    const std::string uniqueId(record.text(record.slot("uniqueId")));
    if (uniqueId.empty())
        return;
    const ObjectRef log = insertObjectOfEntity(zr::kZRObjectStoreDeletedRecordLogEntityName);
    assignObjectToStore(*log, record.store());
    log->setValueForKey("uniqueId", Value(zrUniqueString() + ":ZRDeletedRecordLog"));
    log->setValueForKey("deletedRecordUniqueId", Value(uniqueId));
}

ObjectRef ZRManagedObjectContext::zrCreateObjectWithEntityName(std::string_view entityName)
{
    ObjectRef object = insertObjectOfEntity(entityName);
    object->setValueForKey("uniqueId",
        Value(zrUniqueString()
            + (entityName == zr::kZRObjectStoreContactEntityName ? ":ZRPerson" : ":ZRGroup")));
    return object;
}

void ZRManagedObjectContext::zrClearLastImportGroup()
{
    const Slot& flags = contactSlots().displayFlags;
    const auto marked = ZROSRecord::compoundPredicateForKey("displayFlags", ZRNullOption::andNotNull,
        ZROSRecord::bitwiseAndPredicateForKey(
            "displayFlags", personFlags::kLastImport, 0, Comparator::notEqual));
    for (const auto& contact : zrContactsForPredicate(marked)) {
        const std::int64_t left = contact->integer(flags) ^ personFlags::kLastImport;
        contact->setValue(flags, left == 0 ? Value() : Value(left));
    }
}

ObjectList ZRManagedObjectContext::zrUpdatedContacts()
{
    return _zrObjectsInSet(updatedObjects(), zr::kZRObjectStoreContactEntityName);
}

ObjectList ZRManagedObjectContext::_zrObjectsInSet(const ObjectList& objects, std::string_view entityName)
{
    ObjectList found;
    std::ranges::copy_if(objects, std::back_inserter(found),
        [&](const ObjectRef& object) { return object->entity().name() == entityName; });
    return found;
}

bool ZRManagedObjectContext::zrUsesStoreWithURL(std::string_view path) const
{
    return std::ranges::any_of(
        coordinator()->stores(), [&](const auto* store) { return store->path() == path; });
}

bool ZRManagedObjectContext::zrHasCommonStoreWithContext(const ZRManagedObjectContext& other) const
{
    return std::ranges::any_of(
        coordinator()->stores(), [&](const auto* store) { return other.zrUsesStoreWithURL(store->path()); });
}

void ZRManagedObjectContext::zrSuperMergeChangesFromContextDidSaveNotification(
    ZRManagedObjectContext* saver, const Value& changes)
{
    // Rows are the coordinator's: what another context wrote, on this coordinator or past it, is read by
    // version.
    if (!saver || !zrHasCommonStoreWithContext(*saver))
        return;
    if (const auto merged = mergeChangesFromContextDidSave(changes); !merged)
        platform::log(fmt::format("super merge exception: {}", merged.error().text));
}
