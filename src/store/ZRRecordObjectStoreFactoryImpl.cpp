// How public records are paired with stored objects, made, fetched and moved.
#include "store/ZRRecordObjectStoreFactoryImpl.h"

#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRUniqueId.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelTable.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::Comparator;
using objectstore::Entity;
using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::PredicateOperand;
using objectstore::PredicateRef;
using objectstore::StoreFetch;
using objectstore::StorePredicate;
using platform::Ref;
using platform::Value;

namespace {

/// The entity that stands behind each public class, both ways.
struct ClassPairs {
    std::map<const ZRRecordClass*, const Entity*> entities;
    std::map<const Entity*, const ZRRecordClass*> classes;
};

const ClassPairs& classPairs()
{
    static const auto* const pairs = [] {
        auto* made = new ClassPairs;
        for (const auto& [table, model] : {std::pair(rosterModelTable(), rosterModel()),
                 std::pair(mailRecentsModelTable(), mailRecentsModel())})
            for (const ModelEntity& row : table)
                if (const auto* recordClass = ZRRecordClass::named(row.publicClass)) {
                    const Entity* entity = model->entity(row.entity.name);
                    made->entities.emplace(recordClass, entity);
                    made->classes.emplace(entity, recordClass);
                }
        return made;
    }();
    return *pairs;
}

const PredicateRef& hasUniqueId()
{
    static const auto* const predicate = new PredicateRef(
        StorePredicate::compare("uniqueId", Comparator::equal, PredicateOperand::named("UNIQUE_ID")));
    return *predicate;
}

void logFetchError(const Entity& entity, const platform::Error& error)
{
    const bool isCorrupt = objectstore::isFault(error, objectstore::StoreFault::corrupt);
    platform::log(
        fmt::format("{} fetching {}: {}", isCorrupt ? "Critical error" : "Error", entity.name(), error.text));
}

} // namespace

const Entity* ZRRecordObjectStoreFactoryImpl::implClassForPublicRecordClass(const ZRRecordClass& recordClass)
{
    const auto at = classPairs().entities.find(&recordClass);
    return at == classPairs().entities.end() ? nullptr : at->second;
}

const ZRRecordClass* ZRRecordObjectStoreFactoryImpl::publicRecordClassForImplClass(const Entity& entity)
{
    const auto at = classPairs().classes.find(&entity);
    return at == classPairs().classes.end() ? nullptr : at->second;
}

Ref<ZROSRecord> ZRRecordObjectStoreFactoryImpl::createNewDatabaseImplForInstance(
    const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, ZRRoster& roster)
{
    const Entity* entity = implClassForPublicRecordClass(recordClass);
    if (!entity && recordClass.isKindOf(*ZRRecordClass::named("ZRGroup")))
        entity = rosterModel()->entity(zr::kZRObjectStoreGroupEntityName);
    if (!entity && recordClass.isKindOf(*ZRRecordClass::named("ZRPerson")))
        entity = rosterModel()->entity(zr::kZRObjectStoreContactEntityName);
    if (!entity)
        throw std::invalid_argument(
            fmt::format("Invalid parameter exception: Unknown Record class, cannot build "
                        "the DatabaseImpl for: {}",
                recordClass.name));
    const auto context = ZROSRecord::managedObjectContextForRoster(roster, *entity);
    if (!context)
        return nullptr;
    auto impl = platform::refCast<ZROSRecord>(context->insertObjectOfEntity(*entity));
    impl->setPrimitiveValue(
        impl->slot("uniqueId"), uniqueId ? Value(*uniqueId) : Value(_newUniqueIdForTable(impl->_table())));
    return impl;
}

const ZRRecordClass* ZRRecordObjectStoreFactoryImpl::publicRecordClassFromUniqueId(
    std::string_view uniqueId, ZRRoster&)
{
    const std::string name = ZRRoster::recordClassFromUniqueId(uniqueId);
    return ZRRecordClass::named(name == "ZRSubscriptionRecord" ? "ZRSubscription" : name);
}

Ref<ZRRecord> ZRRecordObjectStoreFactoryImpl::publicRecordWithUniqueId(
    std::string_view uniqueId, ZRRoster& roster)
{
    const auto* recordClass = publicRecordClassFromUniqueId(uniqueId, roster);
    return recordClass ? fetchPublicRecordForClass(*recordClass, uniqueId, roster) : nullptr;
}

std::map<std::string, Ref<ZRRecord>> ZRRecordObjectStoreFactoryImpl::publicRecordsWithUniqueIds(
    const std::vector<std::string>& uniqueIds, ZRRoster& roster)
{
    std::map<const ZRRecordClass*, std::vector<std::string>> byClass;
    for (const auto& uniqueId : uniqueIds)
        if (const auto* recordClass = publicRecordClassFromUniqueId(uniqueId, roster))
            byClass[recordClass].push_back(uniqueId);
    std::map<std::string, Ref<ZRRecord>> records;
    for (const auto& [recordClass, ids] : byClass)
        records.merge(fetchPublicRecordsForClass(*recordClass, ids, roster));
    return records;
}

Ref<ZRRecord> ZRRecordObjectStoreFactoryImpl::fetchPublicRecordForClass(
    const ZRRecordClass& recordClass, std::string_view uniqueId, ZRRoster& roster)
{
    const Entity* entity = implClassForPublicRecordClass(recordClass);
    const auto context = entity ? ZROSRecord::managedObjectContextForRoster(roster, *entity) : nullptr;
    const ObjectRef impl = context ? fetchObjectForClass(*entity, uniqueId, *context) : nullptr;
    return impl ? ZROSRecord::copyPublicRecordForClass(recordClass, static_cast<ZROSRecord&>(*impl), roster)
                : nullptr;
}

std::map<std::string, Ref<ZRRecord>> ZRRecordObjectStoreFactoryImpl::fetchPublicRecordsForClass(
    const ZRRecordClass& recordClass, const std::vector<std::string>& uniqueIds, ZRRoster& roster)
{
    const Value ids = Value::array({uniqueIds.begin(), uniqueIds.end()});
    std::map<std::string, Ref<ZRRecord>> records;
    for (auto& record : fetchPublicRecordsForClass(
             recordClass, StorePredicate::compare("uniqueId", Comparator::in, ids), roster))
        records.emplace(record->nts_UniqueId(), std::move(record));
    return records;
}

ZRRecordList ZRRecordObjectStoreFactoryImpl::fetchPublicRecordsForClass(const ZRRecordClass& recordClass,
    const PredicateRef& predicate, ZRRoster& roster, const std::vector<std::string>& prefetchingKeyPaths)
{
    const Entity* entity = implClassForPublicRecordClass(recordClass);
    const auto context = entity ? ZROSRecord::managedObjectContextForRoster(roster, *entity) : nullptr;
    return context ? ZROSRecord::copyPublicRecordsForClass(
               recordClass, fetchObjectsForClass(*entity, predicate, prefetchingKeyPaths, *context), roster)
                   : ZRRecordList();
}

std::int64_t ZRRecordObjectStoreFactoryImpl::countOfPublicRecordsForClass(
    const ZRRecordClass& recordClass, const PredicateRef& predicate, ZRRoster& roster)
{
    const Entity* entity = implClassForPublicRecordClass(recordClass);
    const auto context = entity ? ZROSRecord::managedObjectContextForRoster(roster, *entity) : nullptr;
    return context ? countOfObjectsForClass(*entity, predicate, *context) : 0;
}

ObjectRef ZRRecordObjectStoreFactoryImpl::fetchObjectForClass(
    const Entity& entity, std::string_view uniqueId, ZRManagedObjectContext& context)
{
    StoreFetch fetch(entity, hasUniqueId()->substituting({{"UNIQUE_ID", Value(uniqueId)}}));
    fetch.includesSubentities = false;
    fetch.limit = 1;
    const auto found = context.runFetch(fetch);
    if (!found)
        logFetchError(entity, found.error());
    return found && !found->empty() ? found->back() : nullptr;
}

ObjectList ZRRecordObjectStoreFactoryImpl::fetchObjectsForClass(const Entity& entity,
    const PredicateRef& predicate, const std::vector<std::string>& prefetchingKeyPaths,
    ZRManagedObjectContext& context)
{
    StoreFetch fetch(entity, predicate);
    fetch.includesSubentities = false;
    fetch.prefetchKeyPaths = prefetchingKeyPaths;
    try {
        auto found = context.runFetch(fetch);
        if (found)
            return std::move(*found);
        logFetchError(entity, found.error());
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Exception fetching {}: {}", entity.name(), failure.what()));
    }
    return {};
}

std::int64_t ZRRecordObjectStoreFactoryImpl::countOfObjectsForClass(
    const Entity& entity, const PredicateRef& predicate, ZRManagedObjectContext& context)
{
    StoreFetch fetch(entity, predicate);
    fetch.includesSubentities = false;
    const auto count = context.countFetch(fetch);
    if (!count)
        logFetchError(entity, count.error());
    return count ? static_cast<std::int64_t>(*count) : 0;
}

bool ZRRecordObjectStoreFactoryImpl::moveRecord(ZRRecord& record, ZRRoster& roster)
{
    const auto target = roster.managedObjectContext();
    ZROSRecord* old = record.zrDatabaseImpl();
    if (old && old->context() == target.get())
        return true;
    auto impl = createNewDatabaseImplForInstance(record.recordClass(), record.nts_UniqueId(), roster);
    if (!impl)
        return false;

    std::vector<std::pair<std::string, Value>> values;
    for (const auto& property : ZRRecord::properties(record.recordClass()))
        try {
            if (Value value = record.nts_ValueForProperty(property); !value.isNothing())
                values.emplace_back(property, std::move(value));
        } catch (const std::exception& failure) {
            platform::log(fmt::format("Error adding record: skipping property <{}> because of error: {}",
                property, failure.what()));
        }
    record.setDatabaseImpl(impl, Ref<ZRRoster>(&roster));
    for (const auto& [property, value] : values)
        if (property != zr::kZRUIDProperty)
            impl->nts_SetValue(value, property, true, record);
    return true;
}

bool ZRRecordObjectStoreFactoryImpl::removeRecord(ZRRecord& record, ZRRoster& roster)
{
    const auto context = roster.managedObjectContext();
    const platform::Lock guard(context->mutex());
    context->deleteObject(*record.zrDatabaseImpl());
    context->flushPendingChanges();
    return true;
}

void ZRRecordObjectStoreFactoryImpl::doRemoveRecordsAndCreateLogsWithRoster(ZRRoster& roster)
{
    const auto context = roster.managedObjectContext();
    for (const auto& object : context->deletedObjects())
        if (const auto* record = dynamic_cast<const ZROSRecord*>(object.get());
            record && record->_isPublicRecord())
            context->zrMarkRecordForDeletion(*object);
}
