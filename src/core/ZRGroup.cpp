// Who is in a group, one by one and many at once, and what the class declares.
#include "core/ZRGroup.h"

#include "core/ZRAllGroup.h"
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/run/Log.h"
#include "platform/text/Compare.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <atomic>

using objectstore::ObjectList;
using objectstore::Slot;
using platform::Ref;
using platform::Value;

namespace {

/// Whether the stored object can still be changed, in that context.
bool isThere(const ZROSRecord* impl, const objectstore::StoreContext* context)
{
    return impl && context && impl->context() == context && !impl->isDeleted();
}

/// The stored objects of those records that have one in `context`.
ObjectList storedObjects(const ZRRecordList& records, const objectstore::StoreContext* context)
{
    ObjectList objects;
    for (const auto& record : records)
        if (ZROSRecord* impl = record->zrDatabaseImpl(); isThere(impl, context))
            objects.emplace_back(impl);
    return objects;
}

/// What a relationship leads to, as handles.
ZRRecordList recordsBehind(const ZRRecord& group, const Slot& slot, const ZRRecordClass& recordClass) ZR_NTS
{
    auto* impl = group.zrDatabaseImpl();
    return impl
        ? ZROSRecord::copyPublicRecordsForClass(recordClass, impl->objectsIfThere(slot), *group.nts_Roster())
        : ZRRecordList();
}

/// Puts `record` behind `slot` of the group, or takes it out of there. False when either is gone, or they
/// live in different places.
template <class Change>
bool change(const ZRGroup& group, ZROSRecord* record, Change&& apply) ZR_NTS
{
    auto* impl = group.zrDatabaseImpl();
    const auto* context = impl ? impl->context() : nullptr;
    if (!isThere(impl, context) || !isThere(record, context))
        return false;
    apply(*impl, *record);
    return true;
}

void requirePeople(const ZRRecordList& people)
{
    for (const auto& person : people)
        zrRequire(dynamic_cast<const ZRPerson*>(person.get()), "[person isKindOfClass:[ZRPerson class]]");
}

/// Calls `operation` for each of the records that is a `Class`; whether all agreed. Each call takes the lock
/// by itself, so that a long list keeps nobody waiting.
template <class Class, class Operation>
bool forEach(const ZRRecordList& records, Operation&& operation)
{
    bool allAgreed = true;
    for (const auto& record : records)
        if (auto* one = dynamic_cast<Class*>(record.get()))
            allAgreed = operation(*one) && allAgreed;
    return allAgreed;
}

} // namespace

Ref<ZRGroup> ZRGroup::init() { return initWithRoster(nullptr); }

Ref<ZRGroup> ZRGroup::initWithRoster(Ref<ZRRoster> roster)
{
    return platform::refCast<ZRGroup>(
        ZRRecord::initWithUniqueId(recordClassDescription, std::nullopt, std::move(roster)));
}

std::string ZRGroup::name() const { return std::string(valueForProperty(zr::kZRGroupNameProperty).asText()); }

// ---- members

ZRRecordList ZRGroup::nts_Members() const
{
    return recordsBehind(*this, groupSlots().contacts, ZRPerson::recordClassDescription);
}

ZRRecordList ZRGroup::members() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Members(); });
}

bool ZRGroup::nts_AddMember(ZRPerson& person)
{
    if (!person.zrDatabaseImpl())
        return true;
    return change(*this, person.zrDatabaseImpl(),
        [](ZROSRecord& group, ZROSRecord& member) { group.addObject(groupSlots().contacts, member); });
}

bool ZRGroup::addMember(ZRPerson& person)
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_AddMember(person); });
}

bool ZRGroup::nts_RemoveMember(ZRPerson& person)
{
    if (!person.zrDatabaseImpl())
        return true;
    return change(*this, person.zrDatabaseImpl(),
        [](ZROSRecord& group, ZROSRecord& member) { group.removeObject(groupSlots().contacts, member); });
}

bool ZRGroup::removeMember(ZRPerson& person)
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_RemoveMember(person); });
}

bool ZRGroup::addMembers(const ZRRecordList& people, platform::Error*)
{
    requirePeople(people);
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        if (auto* impl = zrDatabaseImpl(); impl && impl->managedObjectContext())
            impl->managedObjectContext()->preheatContacts(storedObjects(people, impl->context()));
    });
    return forEach<ZRPerson>(people, [&](ZRPerson& person) { return addMember(person); });
}

bool ZRGroup::removeMembers(const ZRRecordList& people, platform::Error*)
{
    requirePeople(people);
    return forEach<ZRPerson>(people, [&](ZRPerson& person) { return removeMember(person); });
}

// ---- subgroups

ZRRecordList ZRGroup::nts_Subgroups() const
{
    return recordsBehind(*this, groupSlots().childGroups, recordClass());
}

ZRRecordList ZRGroup::subgroups() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Subgroups(); });
}

bool ZRGroup::nts_AddSubgroup(ZRGroup& group)
{
    if (&group == this || nts_RecursiveContainsGroup(group) || group.nts_RecursiveContainsGroup(*this))
        return false;
    return change(*this, group.zrDatabaseImpl(),
        [](ZROSRecord& above, ZROSRecord& below) { above.addObject(groupSlots().childGroups, below); });
}

bool ZRGroup::addSubgroup(ZRGroup& group)
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_AddSubgroup(group); });
}

bool ZRGroup::nts_RemoveSubgroup(ZRGroup& group)
{
    if (!group.zrDatabaseImpl())
        return true;
    return change(*this, group.zrDatabaseImpl(),
        [](ZROSRecord& above, ZROSRecord& below) { above.removeObject(groupSlots().childGroups, below); });
}

bool ZRGroup::removeSubgroup(ZRGroup& group)
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_RemoveSubgroup(group); });
}

bool ZRGroup::addSubgroups(const ZRRecordList& groups, platform::Error*)
{
    for (const auto& group : groups)
        zrRequire(dynamic_cast<const ZRGroup*>(group.get()), "[group isKindOfClass:[ZRGroup class]]");
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        if (auto* impl = zrDatabaseImpl(); impl && impl->managedObjectContext())
            impl->managedObjectContext()->preheatGroups(
                storedObjects(groups, impl->context()), {"childGroups", "parentGroups"});
    });
    return forEach<ZRGroup>(groups, [&](ZRGroup& group) { return addSubgroup(group); });
}

bool ZRGroup::removeSubgroups(const ZRRecordList& groups, platform::Error*)
{
    return forEach<ZRGroup>(groups, [&](ZRGroup& group) { return removeSubgroup(group); });
}

// ---- sharing and permissions

bool ZRGroup::isPublishable() const { return !isSubscribed(); }

bool ZRGroup::isReadOnlyIgnoresInert(bool ignoresInert) const
{
    if (nts_Roster()->_isReadOnlyIgnoresInert(ignoresInert))
        return true;
    const Value locations = isSubscribed() ? valueForProperty(zr::kZRRemoteLocationProperty) : Value();
    const auto* entries = locations.as<ZRMultiValue>();
    if (!entries || entries->count() == 0)
        return false;
    const auto everybody =
        ZRAllGroup::allGroupForRemoteLocation(std::string(entries->valueAtIndex(0).asText()));
    const Value writers =
        everybody ? everybody->valueForProperty(zr::kZRReadWriteSharingACLProperty) : Value();
    const auto* accounts = writers.as<ZRMultiValue>();
    return !accounts || accounts->count() == 0;
}

// ---- what the class declares

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

/// By its class, whatever location it names.
static bool isSubscribedGroup(const ZRGroup& group)
{
    return dynamic_cast<const ZRSubscribedGroup*>(&group) || group.isSubscribed();
}

int ZRCompareGroupName(const ZRGroup& a, const ZRGroup& b)
{
    const auto sign = [](auto ordering) { return ordering < 0 ? -1 : ordering > 0 ? 1 : 0; };
    if (&a == &b)
        return 0;
    const bool isSubscribedA = isSubscribedGroup(a), isSubscribedB = isSubscribedGroup(b);
    if (isSubscribedA != isSubscribedB)
        return isSubscribedA ? 1 : -1;
    const bool isSmartA = dynamic_cast<const ZRSmartGroup*>(&a),
               isSmartB = dynamic_cast<const ZRSmartGroup*>(&b);
    if (isSmartA != isSmartB)
        return isSmartA ? 1 : -1;
    const std::string nameA = a.name(), nameB = b.name();
    const auto folded =
        platform::compare(nameA, nameB, platform::kCompareCaseInsensitive | platform::kCompareLocalized);
    return folded != 0 ? sign(folded) : sign(platform::compare(nameA, nameB, platform::kCompareLocalized));
}
