// The stored side of the info record: its serial number, and the source that keeps Me and the sharing
// entries.
#include "core/ZRConstants.h"
#include "core/ZRInfo.h"
#include "core/ZRUniqueId.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

using objectstore::ObjectRef;
using objectstore::StoreObject;
using objectstore::StorePredicate;
using platform::Value;

namespace {

ObjectRef localSourceIn(ZRManagedObjectContext& context)
{
    const auto local = StorePredicate::compare("local", objectstore::Comparator::equal, Value(true));
    const auto found = context.zrObjectsForPredicate(local, zr::kZRObjectStoreRosterSourceEntityName);
    return found.empty() ? nullptr : found.back();
}

} // namespace

platform::Ref<StoreObject> ZROSInfo::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSInfo>(entity);
}

void ZROSInfo::awakeFromInsert()
{
    ZROSRecord::awakeFromInsert();
    setPrimitiveValue(slot("serialNumber"), Value(zrUniqueString()));
}

platform::Ref<ZROSRecord> ZROSInfo::rosterSource()
{
    const auto& key = slot("rosterSource");
    ObjectRef source = related(key);
    if (!source)
        source = localSourceIn(*managedObjectContext());
    if (!source) {
        source = context()->insertObjectOfEntity(zr::kZRObjectStoreRosterSourceEntityName);
        context()->assignObjectToStore(*source, store());
        source->setPrimitiveValue(
            source->slot("uniqueId"), Value(_newUniqueIdForTable("ZRSubscriptionRecord")));
        source->setPrimitiveValue(source->slot("local"), Value(true));
    }
    if (relatedKey(key) != source->key())
        setRelated(key, source.get());
    return platform::refCast<ZROSRecord>(source);
}

platform::Ref<ZROSRecord> ZROSInfo::holderOf(const ZRPropertyPlace& place)
{
    return place.ofSource ? rosterSource() : ZROSRecord::holderOf(place);
}

ObjectRef ZROSInfo::fetchedRosterSourceWithRoster(ZRRoster& roster)
{
    const auto context = roster.managedObjectContext();
    return context ? localSourceIn(*context) : nullptr;
}

platform::Ref<ZRRecord> ZROSInfo::nts_CreateInfoWithRoster(ZRRoster& roster)
{
    return ZRRecord::nts_initWithUniqueId(ZRInfo::recordClassDescription, std::nullopt, roster);
}

ObjectRef ZROSInfo::contactWithUniqueId(std::string_view uniqueId)
{
    const auto found = managedObjectContext()->zrContactsForUniqueIDs({std::string(uniqueId)});
    return found.empty() ? nullptr : found.front();
}
