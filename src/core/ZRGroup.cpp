// Groups, as far as a record needs them.
#include "core/ZRGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/run/Log.h"
#include "platform/text/Compare.h"
#include "platform/text/Fold.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRCustomProperties.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <atomic>

using platform::Ref;
using platform::Value;

namespace {

/// The entry that a choice leads to; the key is the property's name in lower case.
objectstore::ObjectRef chosenRow(objectstore::StoreObject& choice, std::string_view property)
{
    const auto* slot = choice.entity().slot(platform::foldCase(property));
    return slot ? choice.related(*slot) : nullptr;
}

} // namespace

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
    return impl && impl->context() ? ZROSRecord::copyPublicRecordsForClass(
               ZRPerson::recordClassDescription, impl->objects(impl->slot("contacts")), *nts_Roster())
                                   : ZRRecordList();
}

ZRRecordList ZRGroup::members() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Members(); });
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
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_AddMember(person); });
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
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_RemoveMember(person); });
}

ZRRecordList ZRGroup::nts_Subgroups() const
{
    auto* impl = zrDatabaseImpl();
    return impl && impl->context() ? ZROSRecord::copyPublicRecordsForClass(
               recordClassDescription, impl->objects(impl->slot("childGroups")), *nts_Roster())
                                   : ZRRecordList();
}

ZRRecordList ZRGroup::subgroups() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Subgroups(); });
}

std::optional<std::string> ZRGroup::distributionIdentifierForProperty(
    std::string_view property, const ZRPerson& person) const
{
    zrRequire(zrIsMultiValueType(typeOfProperty(person.recordClass(), property, nts_Roster())),
        "the property is a multi-value");
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS -> std::optional<std::string> {
        if (auto* impl = zrDatabaseImpl(); impl && impl->context() && person.zrDatabaseImpl())
            for (const auto& choice : impl->objects(impl->slot("distributionListConfigs")))
                if (choice->related(choice->slot("contact")).get() == person.zrDatabaseImpl()
                    && choice->text(choice->slot("propertyName")) == property)
                    if (const auto row = chosenRow(*choice, property))
                        return std::string(row->text(row->slot("uniqueId")));
        const Value value = person.nts_ValueForProperty(property);
        const auto* entries = value.as<ZRMultiValue>();
        return entries ? entries->primaryIdentifier() : std::nullopt;
    });
}

void ZRRecursivelyBuildPeopleList(
    const ZRGroup& group, std::unordered_map<Ref<ZRPerson>, platform::Value>& result)
{
    const auto me = group.roster()->me();
    for (const auto& member : group.members()) {
        const auto person = platform::refCast<ZRPerson>(member);
        if (!person || person == me)
            continue;
        const Value emails = person->valueForProperty(zr::kZREmailProperty);
        const auto identifier = group.distributionIdentifierForProperty(zr::kZREmailProperty, *person);
        const auto* entries = emails.as<ZRMultiValue>();
        if (entries && identifier && entries->indexForIdentifier(*identifier) != kZRNotFound)
            result[person] = entries->valueForIdentifier(*identifier);
    }
    for (const auto& subgroup : group.subgroups())
        ZRRecursivelyBuildPeopleList(static_cast<const ZRGroup&>(*subgroup), result);
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
