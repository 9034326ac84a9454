// Changes of a to-many key, each under the lock.
#include "store/ZRMutableSet.h"

#include "objectstore/StoreErrors.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

using objectstore::ObjectList;
using objectstore::StoreObject;

namespace {

/// Runs `body` with the stored object and the slot; does nothing for a record that is gone.
template <class Body>
void change(ZRRecord& record, const std::string& key, ZRAccess access, Body&& body)
{
    locked(*record.roster(), access, [&]() ZR_NTS {
        ZROSRecord* impl = record.zrDatabaseImpl();
        if (!impl || !impl->context())
            return;
        const auto& slot = impl->slot(key);
        if (!slot.isToMany())
            throw objectstore::InvalidKey(key + " is no to-many relationship");
        body(*impl, slot);
    });
}

} // namespace

ZRMutableSet::ZRMutableSet(platform::Ref<ZRRecord> record, std::string_view key)
    : _record(std::move(record)), _key(key)
{
}

ObjectList ZRMutableSet::allObjects() const
{
    ObjectList all;
    change(*_record, _key, ZRAccess::read, [&](auto& impl, auto& slot) { all = impl.objects(slot); });
    return all;
}

void ZRMutableSet::addObject(StoreObject& object)
{
    change(*_record, _key, ZRAccess::write, [&](auto& impl, auto& slot) { impl.addObject(slot, object); });
}

void ZRMutableSet::removeObject(StoreObject& object)
{
    change(*_record, _key, ZRAccess::write, [&](auto& impl, auto& slot) { impl.removeObject(slot, object); });
}

ZRMutableSet ZRRecord::zrosMutableSetValueForKey(std::string_view key)
{
    return {platform::Ref<ZRRecord>(this), key};
}
