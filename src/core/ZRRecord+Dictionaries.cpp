// A record as one dictionary, and records made from dictionaries: copies, the pasteboard and paste.
#include "core/BuiltInProperties.h"
#include "core/RecordDictionaries.h"
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "core/ZRRecord.h"
#include "objectstore/StoreContext.h"
#include "platform/files/Pasteboard.h"
#include "platform/run/Log.h"
#include "platform/run/Mutex.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>

using platform::Ref;
using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

namespace {

/// Facts of one record that no other takes over.
constexpr std::array coreProperties = {
    zr::kZRUIDProperty, zr::kZRCreationDateProperty, zr::kZRModificationDateProperty};

/// Keys of record dictionaries that are no properties: others read them.
constexpr std::array keysReadElsewhere = {std::string_view("ZRPropertyTypes"), std::string_view("ZRMembers"),
    std::string_view("ZRSubgroups"), zr::kZRMembersDictionaryKey, zr::kZRSubgroupsDictionaryKey,
    zr::kZRPhoneDistributionListDictionaryKey, zr::kZREmailDistributionListDictionaryKey,
    zr::kZRAddressDistributionListDictionaryKey};

bool contains(const auto& list, std::string_view name) { return std::ranges::find(list, name) != list.end(); }

ZRPropertyType declaredType(const Value& dictionary, std::string_view property)
{
    const Value& declared = dictionary["ZRPropertyTypes"][property];
    return declared.isNumber() ? static_cast<ZRPropertyType>(declared.asInteger())
                               : propertyTypeForValue(dictionary[property], ZRTypeGuess::strict);
}

/// Declares a property that the class does not have; false when its type cannot be told.
bool declare(
    std::string_view property, const Value& dictionary, const ZRRecordClass& recordClass, ZRRoster& roster)
{
    const ZRPropertyType type = declaredType(dictionary, property);
    if (type == kZRPropertyTypeUnknown) {
        platform::log(fmt::format(
            "Couldn't identify property type of {} ({})", property, dictionary[property].description()));
        return false;
    }
    const Value types = Value::dictionary({{std::string(property), Value(type)}});
    return ZRCustomProperties::addPropertiesAndTypes(types, recordClass, roster, false, false) == 1;
}

/// New id to original id of what was pasted in this process.
struct PastedIds {
    platform::Mutex mutex;
    std::map<std::string, std::string, std::less<>> originals ZR_GUARDED_BY(mutex);
};

PastedIds& pastedIds()
{
    static auto* const ids = new PastedIds;
    return *ids;
}

void preheat(const ZRRecordList& records)
{
    objectstore::ObjectList contacts;
    for (const auto& record : records)
        if (ZROSRecord* impl = record->zrDatabaseImpl(); dynamic_cast<ZROSContact*>(impl))
            contacts.emplace_back(impl);
    if (!contacts.empty())
        static_cast<ZROSRecord&>(*contacts.front()).managedObjectContext()->preheatContacts(contacts);
}

} // namespace

Value ZRRecord::dictionaryRepresentation() const
{
    const auto types = propertyTypesWithRoster(recordClass(), _roster.get());
    std::vector<std::string> properties;
    for (const auto& [name, type] : types)
        properties.push_back(name);
    return _dictionaryRepresentationForPropertyTypes(&types, properties);
}

Value ZRRecord::_dictionaryRepresentationForPropertyTypes(
    const ZRPropertyTypes* types, const std::vector<std::string>& properties) const
{
    Entries entries;
    if (types) {
        Entries numbers;
        for (const auto& [name, type] : *types)
            numbers.emplace_back(name, Value(type));
        entries.emplace_back("ZRPropertyTypes", Value::dictionary(std::move(numbers)));
    }
    locked(*_roster, ZRAccess::read, [&]() ZR_NTS {
        for (const auto& property : properties) {
            const Value value = nts_ValueForProperty(property);
            const auto* multiValue = value.as<ZRMultiValue>();
            if (!value.isNothing())
                entries.emplace_back(property, multiValue ? multiValueDictionary(*multiValue) : value);
        }
    });
    entries.emplace_back(zr::kZRUIDProperty, Value(_uniqueId));
    return Value::dictionary(std::move(entries));
}

Ref<ZRRecord> ZRRecord::recordFromDictionaryRepresentation(const ZRRecordClass& recordClass,
    const Value& dictionary, const Value& recordMapping, Ref<ZRRoster> roster, bool generateIds)
{
    if (!roster)
        roster = ZRRoster::roster();
    if (!roster)
        return nullptr;
    return locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        return nts_recordFromDictionaryRepresentation(
            recordClass, dictionary, recordMapping, *roster, generateIds);
    });
}

Ref<ZRRecord> ZRRecord::nts_recordFromDictionaryRepresentation(const ZRRecordClass& recordClass,
    const Value& dictionary, const Value& recordMapping, ZRRoster& roster, bool generateIds)
{
    const Value& uniqueId = dictionary[zr::kZRUIDProperty];
    auto record = nts_initWithUniqueId(
        recordClass, uniqueId.isString() ? std::optional(uniqueId.asText()) : std::nullopt, roster);
    if (record)
        record->nts_PopulateWithDictionary(dictionary, recordMapping, generateIds, false, roster);
    return record;
}

Ref<ZRRecord> ZRRecord::initWithDictionaryRepresentation(
    const ZRRecordClass& recordClass, const Value& dictionary, Ref<ZRRoster> roster)
{
    const Value& uniqueId = dictionary[zr::kZRUIDProperty];
    auto record = initWithUniqueId(recordClass,
        uniqueId.isString() ? std::optional(uniqueId.asText()) : std::nullopt, std::move(roster));
    if (record)
        locked(*record->_roster, ZRAccess::write, [&]() ZR_NTS {
            record->nts_PopulateWithDictionary(dictionary, Value(), false, true, *record->_roster);
        });
    return record;
}

bool ZRRecord::nts_PopulateWithDictionary(
    const Value& dictionary, const Value&, bool generateIds, bool includeCoreProperties, ZRRoster& roster)
{
    const auto* given = dictionary.asDictionary();
    if (!given)
        return false;
    for (const auto& [property, value] : given->entries()) {
        if (property == zr::kZRGroupClassKey || contains(keysReadElsewhere, property)
            || (!includeCoreProperties && contains(coreProperties, property)))
            continue;
        ZRPropertyType type = nts_TypeOfProperty(recordClass(), property, roster);
        if (type == kZRPropertyTypeUnknown) {
            if (!declare(property, dictionary, recordClass(), roster))
                continue;
            type = declaredType(dictionary, property);
        }
        nts_SetValue(valueFromDictionary(value, type, generateIds), property);
    }
    return true;
}

Value ZRRecord::allProperties() const
{
    Entries entries;
    for (const auto& property : propertiesWithRoster(recordClass(), _roster.get()))
        if (Value value = valueForProperty(property);
            !value.isNothing() && !contains(coreProperties, property))
            entries.emplace_back(property, std::move(value));
    return Value::dictionary(std::move(entries));
}

void ZRRecord::setAllProperties(const Value& dictionary)
{
    for (const auto& property : propertiesWithRoster(recordClass(), _roster.get()))
        if (!contains(coreProperties, property))
            setValue(dictionary[property], property);
}

Ref<ZRRecord> ZRRecord::duplicate() const { return duplicateWithClass(recordClass()); }

Ref<ZRRecord> ZRRecord::duplicateWithClass(const ZRRecordClass& target) const
{
    return locked(*_roster, ZRAccess::write, [&]() ZR_NTS -> Ref<ZRRecord> {
        auto copy = nts_initWithUniqueId(target, std::nullopt, *_roster);
        const auto known = ZRCustomProperties::propertyTypesForClass(target, *_roster, false);
        for (const auto& [property, type] :
            ZRCustomProperties::propertyTypesForClass(recordClass(), *_roster, false)) {
            const Value value = nts_ValueForProperty(property);
            if (!copy || value.isNothing() || contains(coreProperties, property) || !known.contains(property))
                continue;
            const auto* entries = value.as<ZRMultiValue>();
            copy->nts_SetValue(
                entries ? valueFromDictionary(multiValueDictionary(*entries), type, true) : value, property);
        }
        return copy;
    });
}

Value ZRRecord::copyPasteboardDictionaryForRecords(const ZRRecordList& records)
{
    if (records.empty())
        return Value::dictionary({});
    ZRRoster& roster = *records.back()->nts_Roster();
    // Types are read once for all people, and their values in one fetch a relationship.
    const auto types = propertyTypesWithRoster(ZRPerson::recordClassDescription, &roster);
    std::vector<std::string> properties;
    for (const auto& [name, type] : types)
        properties.push_back(name);
    locked(roster, ZRAccess::read, [&]() ZR_NTS { preheat(records); });

    Entries entries;
    for (const auto& record : records) {
        const bool isPerson = &record->recordClass() == &ZRPerson::recordClassDescription;
        entries.emplace_back(record->uniqueId(),
            isPerson ? record->_dictionaryRepresentationForPropertyTypes(&types, properties)
                     : record->dictionaryRepresentation());
    }
    return Value::dictionary(std::move(entries));
}

std::string ZRRecord::copyPasteboardStringForRecords(const ZRRecordList& records)
{
    const auto& cardData = ZRServices::registered().cardData;
    std::string cards;
    for (const auto& record : records)
        if (cardData && record->recordClass().isKindOf(ZRPerson::recordClassDescription))
            cards +=
                locked(*record->nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return cardData(*record); });
    return cards;
}

void ZRRecord::writeRecords(const ZRRecordList& records, platform::Pasteboard& pasteboard)
{
    pasteboard.clearContents();
    for (const auto& [kind, type] : {std::pair(&ZRPerson::recordClassDescription, zr::ZRPeopleDictPboardType),
             std::pair(&ZRGroup::recordClassDescription, zr::ZRGroupDictPboardType)}) {
        ZRRecordList ofKind;
        std::ranges::copy_if(records, std::back_inserter(ofKind),
            [&, wanted = kind](const auto& record) { return record->recordClass().isKindOf(*wanted); });
        if (!ofKind.empty())
            pasteboard.setValue(copyPasteboardDictionaryForRecords(ofKind), type);
    }
    if (const std::string cards = copyPasteboardStringForRecords(records); !cards.empty())
        pasteboard.setValue(Value(cards), zr::kZRvCardPboardType);
}

void ZRRecord::pastedRecordWithUniqueId(std::string_view newId, std::string_view originalId)
{
    const platform::Lock guard(pastedIds().mutex);
    pastedIds().originals.insert_or_assign(std::string(newId), std::string(originalId));
}

std::string ZRRecord::originalUniqueIdOfRecordPastedWithUniqueId(std::string_view uniqueId)
{
    const platform::Lock guard(pastedIds().mutex);
    const auto at = pastedIds().originals.find(uniqueId);
    return at == pastedIds().originals.end() ? std::string(uniqueId) : at->second;
}

void ZRRecord::discardOriginalUniqueIds()
{
    const platform::Lock guard(pastedIds().mutex);
    pastedIds().originals.clear();
}
