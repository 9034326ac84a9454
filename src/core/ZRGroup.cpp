// Groups, as far as a record needs them.
#include "core/ZRGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "platform/run/Log.h"
#include "platform/text/Compare.h"
#include "store/ZRCustomProperties.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <atomic>

using platform::Ref;
using platform::Value;

Ref<ZRGroup> ZRGroup::init() { return initWithRoster(nullptr); }

Ref<ZRGroup> ZRGroup::initWithRoster(Ref<ZRRoster> roster)
{
    return platform::refCast<ZRGroup>(
        ZRRecord::initWithUniqueId(recordClassDescription, std::nullopt, std::move(roster)));
}

std::string ZRGroup::name() const { return std::string(valueForProperty(zr::kZRGroupNameProperty).asText()); }

ZRRecordList ZRGroup::nts_Members() const
{
    auto* impl = zrDatabaseImpl();
    return impl && impl->context()
        ? ZRRecordObjectStoreFactoryImpl::publicRecords(impl->objects(impl->slot("contacts")), *nts_Roster())
        : ZRRecordList();
}

ZRRecordList ZRGroup::members() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&] { return nts_Members(); });
}

// A person without a stored object is accepted, and nothing is stored.
bool ZRGroup::nts_AddMember(ZRPerson& person)
{
    auto* impl = zrDatabaseImpl();
    if (impl && person.zrDatabaseImpl())
        impl->addObject(impl->slot("contacts"), *person.zrDatabaseImpl());
    return true;
}

bool ZRGroup::addMember(ZRPerson& person)
{
    return locked(*nts_Roster(), ZRAccess::write, [&] { return nts_AddMember(person); });
}

bool ZRGroup::nts_RemoveMember(ZRPerson& person)
{
    auto* impl = zrDatabaseImpl();
    if (impl && person.zrDatabaseImpl())
        impl->removeObject(impl->slot("contacts"), *person.zrDatabaseImpl());
    return true;
}

bool ZRGroup::removeMember(ZRPerson& person)
{
    return locked(*nts_Roster(), ZRAccess::write, [&] { return nts_RemoveMember(person); });
}

std::int64_t ZRGroup::addPropertiesAndTypes(const Value& typesByName)
{
    return addPropertiesAndTypes(typesByName, ZRRoster::sharedRoster().get());
}

std::int64_t ZRGroup::addPropertiesAndTypes(const Value& typesByName, ZRRoster* roster)
{
    return addPropertiesAndTypes(typesByName, roster, true);
}

std::int64_t ZRGroup::addPropertiesAndTypes(const Value& typesByName, ZRRoster* roster, bool acquireLock)
{
    return addPropertiesAndTypes(typesByName, roster, acquireLock, true);
}

std::int64_t ZRGroup::addPropertiesAndTypes(
    const Value& typesByName, ZRRoster* roster, bool acquireLock, bool save)
{
    return roster ? ZRCustomProperties::addPropertiesAndTypes(
               typesByName, recordClassDescription, *roster, acquireLock, save)
                  : 0;
}

std::int64_t ZRGroup::removeProperties(const Value&)
{
    static std::atomic<bool> wasLogged = false;
    if (!wasLogged.exchange(true))
        platform::log("Removal of custom properties is not yet implemented");
    return 0;
}

int ZRCompareGroupName(const ZRGroup& a, const ZRGroup& b)
{
    const auto sign = [](auto ordering) { return ordering < 0 ? -1 : ordering > 0 ? 1 : 0; };
    if (&a == &b)
        return 0;
    if (a.isSubscribed() != b.isSubscribed())
        return a.isSubscribed() ? 1 : -1;
    const bool isSmartA = dynamic_cast<const ZRSmartGroup*>(&a),
               isSmartB = dynamic_cast<const ZRSmartGroup*>(&b);
    if (isSmartA != isSmartB)
        return isSmartA ? 1 : -1;
    const std::string nameA = a.name(), nameB = b.name();
    const auto folded =
        platform::compare(nameA, nameB, platform::kCompareCaseInsensitive | platform::kCompareLocalized);
    return folded != 0 ? sign(folded) : sign(platform::compare(nameA, nameB, platform::kCompareLocalized));
}
