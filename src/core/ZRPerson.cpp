// A card as a whole: how it is made, whether it is empty or read-only, and what the class declares.
#include "core/ZRPerson.h"

#include "core/BuiltInProperties.h"
#include "core/RecordDictionaries.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "platform/files/Files.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "platform/text/Utf.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRCustomProperties.h"
#include "store/ZROSRecord.h"
#include "store/ZRPictureChanges.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

#include <algorithm>
#include <array>
#include <atomic>

using platform::Ref;
using platform::Value;

namespace {

constexpr std::array unshared = {
    zr::kZRUIDProperty, zr::kZRCreationDateProperty, zr::kZRModificationDateProperty};

bool isUnshared(std::string_view property) { return std::ranges::find(unshared, property) != unshared.end(); }

/// A value of which a card is still empty.
bool saysNothing(const Value& value, std::string_view property)
{
    if (value.isNothing())
        return true;
    if (property == zr::kZRPersonFlags)
        return value.asInteger() == 0;
    return value.isString() && value.asText().empty();
}

std::int64_t refuseRemoval(std::atomic<bool>& wasLogged)
{
    if (!wasLogged.exchange(true))
        platform::log("Removal of custom properties is not yet implemented");
    return 0;
}

} // namespace

Ref<ZRPerson> ZRPerson::init() { return initWithRoster(nullptr); }

Ref<ZRPerson> ZRPerson::initWithRoster(Ref<ZRRoster> roster)
{
    return platform::refCast<ZRPerson>(
        ZRRecord::initWithUniqueId(recordClassDescription, std::nullopt, std::move(roster)));
}

Ref<ZRPerson> ZRPerson::initWithUniqueId(std::string_view uniqueId, Ref<ZRRoster> roster)
{
    return platform::refCast<ZRPerson>(
        ZRRecord::initWithUniqueId(recordClassDescription, uniqueId, std::move(roster)));
}

bool ZRPerson::isReadOnly() const { return nts_Roster()->_isReadOnly(); }

bool ZRSubscribedPerson::isReadOnly() const
{
    const auto groups = parentGroups();
    if (std::ranges::any_of(groups, [](const auto& group) {
            return &group->recordClass() != &ZRSmartGroup::recordClassDescription && group->isReadOnly();
        }))
        return true;
    const auto& find = ZRServices::registered().findSubscription;
    const auto subscription = find && isSubscribed() ? find(*nts_Roster(), remoteLocation()) : nullptr;
    if (!subscription)
        return false;
    const Value writers = subscription->valueForProperty(zr::kZRReadWriteSharingACLProperty);
    const auto* entries = writers.as<ZRMultiValue>();
    return !entries || entries->count() == 0;
}

bool ZRPerson::isEmptyPerson() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        const auto properties =
            ZRCustomProperties::propertyTypesForClass(recordClass(), *nts_Roster(), false);
        return std::ranges::all_of(properties, [&](const auto& entry) ZR_NTS {
            return isUnshared(entry.first) || saysNothing(nts_ValueForProperty(entry.first), entry.first);
        });
    });
}

std::vector<std::string> ZRPerson::zrUsedProperties() const
{
    std::vector<std::string> used;
    for (const auto& [property, type] : propertyTypesWithRoster(recordClass(), nts_Roster())) {
        const Value value = zrIsMultiValueType(type) ? valueForProperty(property) : Value();
        if (const auto* entries = value.as<ZRMultiValue>(); entries && entries->count() > 0)
            used.push_back(property);
    }
    return used;
}

void ZRPerson::nts_CascadeRemove()
{
    for (const auto& group : nts_ParentGroups())
        if (auto* parent = dynamic_cast<ZRGroup*>(group.get()))
            parent->nts_RemoveMember(*this);
    // Also those that wait for the save, which would write them without a card.
    for (const std::string_view kind : {zr::kZRImageProperty, zr::kZRLargeImageProperty})
        if (!nts_Roster()->nts_PendingPicture(nts_UniqueId(), kind).isAbsent())
            nts_Roster()->nts_KeepPicture(nts_UniqueId(), kind, Value());
    const auto path = nts_PathForUIDTaggedImage();
    if (!path || !platform::isPlainFile(*path))
        return;
    ZRPictureWillChange(*nts_Roster(), nts_UniqueId(), zr::kZRImageProperty, Value());
    static_cast<void>(platform::removeFile(*path));
}

Ref<ZRPerson> ZRPerson::personFromDictionary(const Value& dictionary)
{
    return personFromDictionary(dictionary, nullptr, false, false);
}

Ref<ZRPerson> ZRPerson::personFromDictionary(
    const Value& dictionary, Ref<ZRRoster> roster, bool skipUnknownProperties, bool generateMultiValueIDs)
{
    auto person = initWithRoster(std::move(roster));
    if (person)
        person->populateWithDictionary(dictionary, skipUnknownProperties, generateMultiValueIDs, true);
    return person;
}

void ZRPerson::populateWithDictionary(
    const Value& dictionary, bool skipUnknownProperties, bool generateMultiValueIDs, bool recordIsNew)
{
    const auto* given = dictionary.asDictionary();
    for (std::size_t i = 0; given && i < given->count(); ++i) {
        const auto& [property, value] = given->entries()[i];
        if (property == "ZRPropertyTypes" || isUnshared(property))
            continue;
        if (!doesPropertyExist(property)) {
            if (skipUnknownProperties || value.isNothing())
                continue;
            addPropertiesAndTypes(
                Value::dictionary({{property, dictionary["ZRPropertyTypes"][property]}}), nts_Roster());
        }
        const ZRPropertyType type = typeOfProperty(recordClass(), property, nts_Roster());
        setValue(valueFromDictionary(value, type, generateMultiValueIDs), property, !recordIsNew);
    }
}

void ZRPerson::resetWithDictionary(
    const Value& dictionary, bool skipUnknownProperties, bool generateMultiValueIDs)
{
    if (!skipUnknownProperties)
        for (const auto& property : propertiesWithRoster(recordClass(), nts_Roster()))
            removeValueForProperty(property);
    populateWithDictionary(dictionary, skipUnknownProperties, generateMultiValueIDs, false);
}

ZRPropertyTypes ZRPerson::builtInProperties() { return builtInPropertyTypes(zr::kZRPersonRecordType); }

std::vector<std::string> ZRPerson::builtInLabelsForProperty(std::string_view property)
{
    return ::builtInLabelsForProperty(property);
}

std::vector<std::string> ZRPerson::initialFieldsForProperty(std::string_view property)
{
    return ::initialFieldsForProperty(property);
}

std::int64_t ZRPerson::addPropertiesAndTypes(const Value& typesByName)
{
    return addPropertiesAndTypes(typesByName, ZRRoster::sharedRoster().get());
}

std::int64_t ZRPerson::addPropertiesAndTypes(const Value& typesByName, ZRRoster* roster)
{
    return addPropertiesAndTypes(typesByName, roster, true);
}

std::int64_t ZRPerson::addPropertiesAndTypes(const Value& typesByName, ZRRoster* roster, bool acquireLock)
{
    return addPropertiesAndTypes(typesByName, roster, acquireLock, true);
}

std::int64_t ZRPerson::addPropertiesAndTypes(
    const Value& typesByName, ZRRoster* roster, bool acquireLock, bool save)
{
    return roster ? ZRCustomProperties::addPropertiesAndTypes(
               typesByName, recordClassDescription, *roster, acquireLock, save)
                  : 0;
}

std::int64_t ZRPerson::removeProperties(const Value&)
{
    static std::atomic<bool> wasLogged = false;
    return refuseRemoval(wasLogged);
}

void ZRPerson::clearPrivateFields()
{
    ZRUserDefaults::rosterPreferences()->removeObjectForKey("ZRPrivateVCardFields");
}

// The crossing of these names is how callers know them: "first, last" gives the last name as part 1.
void ZRPerson::createFirstLastSortingNamePart1(std::string& part1, std::string& part2) const
{
    part1 = createFirstLastSorting(false, true);
    part2 = createFirstLastSorting(false, false);
}

void ZRPerson::createLastFirstSortingNamePart1(std::string& part1, std::string& part2) const
{
    part1 = createFirstLastSorting(true, true);
    part2 = createFirstLastSorting(true, false);
}

void ZRPerson::lastFirstSortingNamePart1(std::string& part1, std::string& part2) const
{
    static std::atomic<bool> wasLogged = false;
    if (!wasLogged.exchange(true))
        platform::log(
            "-[ZRPerson lastFirstSortingNamePart1:part2:] is sooo deprecated and was private in the first "
            "place. Stop calling it!!");
    createFirstLastSortingNamePart1(part1, part2);
}

void ZRPerson::firstLastSortingNamePart1(std::string& part1, std::string& part2) const
{
    static std::atomic<bool> wasLogged = false;
    if (!wasLogged.exchange(true))
        platform::log(
            "-[ZRPerson firstLastSortingNamePart1:part2:] is sooo deprecated and was private in the first "
            "place. Stop calling it!!");
    createLastFirstSortingNamePart1(part1, part2);
}

std::string ZRPerson::createFirstLastSorting(bool a, bool part1) const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        auto* contact = dynamic_cast<ZROSContact*>(zrDatabaseImpl());
        return contact ? contact->createFirstLastSorting(a, part1) : std::string();
    });
}

std::string ZRPerson::createAlternateName() const
{
    return locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return ZROSContact::createAlternateNameForPerson(zrDatabaseImpl()); });
}

Value ZRPerson::nts_StringForIndexing() const
{
    auto* contact = dynamic_cast<ZROSContact*>(zrDatabaseImpl());
    const Value text = contact ? contact->valueForKeyPath("contactIndex.stringForIndexing") : Value();
    return text.asText().empty() ? Value() : text;
}

Value ZRPerson::stringForIndexing() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_StringForIndexing(); });
}

int ZRCompareStringLength(std::string_view a, std::string_view b)
{
    const auto lengthA = platform::utf16Length(a), lengthB = platform::utf16Length(b);
    return lengthA < lengthB ? 1 : lengthA > lengthB ? -1 : 0;
}
