// How a program reaches the contact database: the roster and its records.
#include "api/ZRRosterFunctions.h"

#include "api/Border.h"
#include "api/SettableValue.h"
#include "core/ZRPerson.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"
#include "search/ZRSearchElement.h"
#include "store/ZRRoster.h"

#include <unordered_set>

using border::as;
using border::borrowed;
using border::guarded;
using border::owned;
using border::shared;
using platform::Object;
using platform::Ref;

namespace {

/// What Get functions lent out, for the life of the process. Me may become another card at any time, by
/// another process too, so the roster's own reference is not enough for a borrower; there are few such cards.
class LentHandles {
public:
    ZRTypeRef lend(Ref<const Object> object)
    {
        if (!object)
            return nullptr;
        platform::Lock lock(_mutex);
        return borrowed(_objects.insert(std::move(object)).first->get());
    }

    static LentHandles& ofProcess()
    {
        static const platform::NeverDestroyed<LentHandles> handles;
        return *handles;
    }

private:
    platform::Mutex _mutex;
    std::unordered_set<Ref<const Object>> _objects ZR_GUARDED_BY(_mutex);
};

} // namespace

// ---- the roster

ZRRosterRef ZRGetSharedRoster()
{
    return guarded([] { return LentHandles::ofProcess().lend(ZRRoster::sharedRoster()); });
}

ZRArrayRef ZRCopyArrayOfAllPeople(ZRRosterRef roster)
{
    return guarded([&] { return owned(as<ZRRoster>(roster).people()); });
}

ZRArrayRef ZRCopyArrayOfAllGroups(ZRRosterRef roster)
{
    return guarded([&] { return owned(as<ZRRoster>(roster).groups()); });
}

ZRRecordRef ZRCopyRecordForUniqueId(ZRRosterRef roster, const char* uniqueId)
{
    return guarded([&] { return owned(as<ZRRoster>(roster).recordForUniqueId(border::text(uniqueId))); });
}

ZRStringRef ZRCopyRecordTypeFromUniqueId(ZRRosterRef roster, const char* uniqueId)
{
    return guarded([&] {
        const std::string type = as<ZRRoster>(roster).recordClassFromUniqueId(border::text(uniqueId));
        return type.empty() ? nullptr : owned(type);
    });
}

ZRArrayRef ZRCopyArrayOfMatchingRecords(ZRRosterRef roster, ZRSearchElementRef search)
{
    return guarded([&] {
        return owned(as<ZRRoster>(roster).recordsMatchingSearchElement(shared<ZRSearchElement>(search)));
    });
}

ZRPersonRef ZRGetMe(ZRRosterRef roster)
{
    return guarded([&] { return LentHandles::ofProcess().lend(as<ZRRoster>(roster).me()); });
}

void ZRSetMe(ZRRosterRef roster, ZRPersonRef person)
{
    guarded([&] { as<ZRRoster>(roster).setMe(person ? shared<ZRPerson>(person) : Ref<ZRPerson>()); });
}

bool ZRHasUnsavedChanges(ZRRosterRef roster)
{
    return guarded([&] { return as<ZRRoster>(roster).hasUnsavedChanges(); });
}

bool ZRSave(ZRRosterRef roster)
{
    return guarded([&] { return as<ZRRoster>(roster).save(); });
}

bool ZRAddRecord(ZRRosterRef roster, ZRRecordRef record)
{
    return guarded([&] { return as<ZRRoster>(roster).addRecord(shared<ZRRecord>(record)); });
}

bool ZRRemoveRecord(ZRRosterRef roster, ZRRecordRef record)
{
    return guarded([&] { return as<ZRRoster>(roster).removeRecord(shared<ZRRecord>(record)); });
}

// ---- records

ZRTypeRef ZRRecordCopyValue(ZRRecordRef record, const char* property)
{
    return guarded([&] { return owned(as<ZRRecord>(record).valueForProperty(border::text(property))); });
}

bool ZRRecordSetValue(ZRRecordRef record, const char* property, ZRTypeRef value)
{
    return guarded([&] {
        auto& target = as<ZRRecord>(record);
        const auto name = border::text(property);
        const auto wanted = border::value(value);
        return border::isSettable(target, name, wanted) && target.setValue(wanted, name);
    });
}

bool ZRRecordRemoveValue(ZRRecordRef record, const char* property)
{
    return guarded([&] { return as<ZRRecord>(record).removeValueForProperty(border::text(property)); });
}

ZRStringRef ZRRecordCopyUniqueId(ZRRecordRef record)
{
    return guarded([&] { return owned(as<ZRRecord>(record).uniqueId()); });
}

ZRStringRef ZRRecordCopyRecordType(ZRRecordRef record)
{
    return guarded([&] { return owned(as<ZRRecord>(record)._table()); });
}

ZRRecordRef ZRRecordCreateCopy(ZRRecordRef record)
{
    return guarded([&] { return owned(as<ZRRecord>(record).duplicate()); });
}

bool ZRRecordIsReadOnly(ZRRecordRef record)
{
    return guarded([&] { return as<ZRRecord>(record).isReadOnly(); });
}
