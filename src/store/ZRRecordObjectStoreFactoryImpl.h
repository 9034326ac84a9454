// The one place that knows both worlds: which stored class stands behind which public one, and how to fetch.
#pragma once

#include "core/ZRGlobalLock.h"

#include "core/ZRPropertyType.h"
#include "core/ZRRecord.h"
#include "objectstore/StoreObject.h"
#include "objectstore/StorePredicate.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRManagedObjectContext;
class ZROSRecord;

/// Pairs public records with stored objects.
///
/// Ownership: none; class-level operations. One stored object has at most one live handle.
/// Threads:   the global lock is held; each fetch takes the context's lock.
/// Errors:    a failed fetch is logged and answered as nothing; an unknown class raises ZRInvalidArgument.
class ZRRecordObjectStoreFactoryImpl {
public:
    /// The entity of a public class, or null; by exact class.
    static const objectstore::Entity* implClassForPublicRecordClass(const ZRRecordClass& recordClass);
    static const ZRRecordClass* publicRecordClassForImplClass(const objectstore::Entity& entity);

    /// A new stored object for a record of that class, with the given id or a fresh one.
    static platform::Ref<ZROSRecord> createNewDatabaseImplForInstance(
        const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, ZRRoster& roster) ZR_NTS;

    static platform::Ref<ZRRecord> publicRecordWithUniqueId(
        std::string_view uniqueId, ZRRoster& roster) ZR_NTS;
    static const ZRRecordClass* publicRecordClassFromUniqueId(
        std::string_view uniqueId, ZRRoster& roster) ZR_NTS;
    static std::map<std::string, platform::Ref<ZRRecord>> publicRecordsWithUniqueIds(
        const std::vector<std::string>& uniqueIds, ZRRoster& roster) ZR_NTS;
    static platform::Ref<ZRRecord> fetchPublicRecordForClass(
        const ZRRecordClass& recordClass, std::string_view uniqueId, ZRRoster& roster) ZR_NTS;
    static std::map<std::string, platform::Ref<ZRRecord>> fetchPublicRecordsForClass(
        const ZRRecordClass& recordClass, const std::vector<std::string>& uniqueIds, ZRRoster& roster) ZR_NTS;
    static ZRRecordList fetchPublicRecordsForClass(const ZRRecordClass& recordClass,
        const objectstore::PredicateRef& predicate, ZRRoster& roster,
        const std::vector<std::string>& prefetchingKeyPaths = {}) ZR_NTS;
    static std::int64_t countOfPublicRecordsForClass(const ZRRecordClass& recordClass,
        const objectstore::PredicateRef& predicate, ZRRoster& roster) ZR_NTS;

    static objectstore::ObjectRef fetchObjectForClass(
        const objectstore::Entity& entity, std::string_view uniqueId, ZRManagedObjectContext& context);
    static objectstore::ObjectList fetchObjectsForClass(const objectstore::Entity& entity,
        const objectstore::PredicateRef& predicate, const std::vector<std::string>& prefetchingKeyPaths,
        ZRManagedObjectContext& context);
    static std::int64_t countOfObjectsForClass(const objectstore::Entity& entity,
        const objectstore::PredicateRef& predicate, ZRManagedObjectContext& context);

    /// Gives the record a new stored object of the same id in `roster`, with all its values; the old one
    /// stays.
    static bool moveRecord(ZRRecord& record, ZRRoster& roster) ZR_NTS;
    static bool removeRecord(ZRRecord& record, ZRRoster& roster) ZR_NTS;

    /// For each public record that is being deleted, a row in the log of deletions.
    static void doRemoveRecordsAndCreateLogsWithRoster(ZRRoster& roster);
};
