// How rows become a multi-value, and how a multi-value becomes rows.
#include "store/ZRMultiValueObjectStoreWrapper.h"

#include "core/CountryCodes.h"
#include "core/ZRConstants.h"
#include "core/ZRLog.h"
#include "core/ZRMultiValue.h"
#include "core/ZRRecord.h"
#include "core/ZRStringAdditions.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreErrors.h"
#include "platform/value/PropertyList.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRModelTable.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::StoreContext;
using objectstore::StoreObject;
using platform::Value;
using Wrapper = ZRMultiValueObjectStoreWrapper;

namespace {

/// The keys of an address and the property list keys that they hold.
struct AddressKey {
    const Slot& slot;
    std::string_view key;
};

const std::vector<AddressKey>& addressKeys()
{
    static const auto* const keys = [] {
        const auto& slots = addressSlots();
        return new std::vector<AddressKey>{{slots.street, zr::kZRAddressStreetKey},
            {slots.city, zr::kZRAddressCityKey}, {slots.state, zr::kZRAddressStateKey},
            {slots.zipCode, zr::kZRAddressZIPKey}, {slots.countryName, zr::kZRAddressCountryKey},
            {slots.countryCode, zr::kZRAddressCountryCodeKey}, {slots.region, "Region"},
            {slots.sama, "Sama"}};
    }();
    return *keys;
}

bool isAddressKey(std::string_view key)
{
    return std::ranges::any_of(addressKeys(), [&](const AddressKey& known) { return known.key == key; });
}

/// The keys that rows of every multi-value share, in the entity of these rows.
struct RowSlots {
    explicit RowSlots(const objectstore::Entity& entity)
        : uniqueId(*entity.slot("uniqueId"))
        , label(*entity.slot("label"))
        , orderingIndex(*entity.slot("orderingIndex"))
        , isPrimary(*entity.slot("isPrimary"))
    {
    }
    const Slot &uniqueId, &label, &orderingIndex, &isPrimary;
};

const RowSlots& rowSlots(const objectstore::Entity& entity)
{
    thread_local std::map<const objectstore::Entity*, RowSlots> known;
    return known.try_emplace(&entity, entity).first->second;
}

Value valueOfRow(StoreObject& row, const ZRPropertyPlace& place)
{
    if (!place.entityKey)
        return ZRMultiValueObjectStoreWrapper::addressValueWithEntity(row);
    const Value value = row.value(*place.entityKey);
    return value.isDate() ? ZRRecord::localDateOccurringOnSameCalendarDayAsDateInGMT(value) : value;
}

/// What a custom row keeps under the key of its type; serialised types go through a binary property list.
Value storedCustomValue(const Value& value, bool isSerialized)
{
    if (!isSerialized || value.isAbsent())
        return value;
    const auto bytes = platform::encodePropertyList(value, platform::PropertyListFormat::binary);
    if (bytes)
        return Value::data(*bytes);
    platform::log(fmt::format("Cannot store a custom value: {}", bytes.error().text));
    return {};
}

/// Choices whose entries are gone.
void deleteChoices(const Wrapper::DistributionListConfigs& saved, StoreContext& context)
{
    for (const auto& [identifier, choices] : saved)
        for (const auto& choice : choices)
            context.deleteObject(*choice);
}

/// A new row of the entity in the store of `owner`.
ObjectRef insertRow(const objectstore::Entity& entity, ZROSRecord& owner)
{
    ObjectRef row = owner.context()->insertObjectOfEntity(entity);
    owner.context()->assignObjectToStore(*row, owner.store());
    return row;
}

/// The look at the old rows may have found that the record was deleted elsewhere.
StoreContext& contextOf(const ZROSRecord& record)
{
    if (StoreContext* const context = record.context())
        return *context;
    throw objectstore::InaccessibleObject("the record of the entries is gone");
}

/// Replaces `old` by one row for each entry; `make` makes a row of `key`'s entity with its value.
template <class Make>
void rewriteRows(
    const ObjectList& old, const Slot& key, const ZRMultiValue* entries, ZROSRecord& record, Make&& make)
{
    StoreContext& context = contextOf(record);
    Wrapper::DistributionListConfigs choices;
    Wrapper::deletePropertyValues(old, key, choices, record, context);
    const auto& slots = rowSlots(*key.destination);
    const std::string primary =
        entries ? entries->primaryIdentifier().value_or(std::string()) : std::string();
    for (ZRIndex index = 0; entries && index < entries->count(); ++index) {
        const std::string& identifier = entries->identifierAtIndex(index);
        const ObjectRef row = make(entries->valueAtIndex(index));
        row->setPrimitiveValue(slots.label, Value(entries->labelAtIndex(index)));
        row->setPrimitiveValue(slots.uniqueId, Value(identifier));
        row->setPrimitiveValue(slots.isPrimary, Value(identifier == primary));
        row->setPrimitiveValue(slots.orderingIndex, Value(index));
        Wrapper::rewireDistributionListConfig(choices, *row, identifier);
        record.addObject(key, *row);
        if (const Slot* owner = row->entity().slot("owner"); owner != key.inverse)
            row->setRelated(*owner, &record);
    }
    deleteChoices(choices, context);
}

} // namespace

ObjectList ZRMultiValueObjectStoreWrapper::rowsOf(ZROSRecord& record, const ZRPropertyPlace& place)
{
    return place.service.empty() ? record.sortedPropertyValuesWithKey(*place.key)
                                 : messagingAddressesWithService(place.service, record);
}

ObjectList ZRMultiValueObjectStoreWrapper::messagingAddressesWithService(
    std::string_view service, ZROSRecord& owner)
{
    ObjectList rows = owner.sortedPropertyValuesWithKey(contactSlots().messagingAddresses);
    std::erase_if(rows, [&](const ObjectRef& row) {
        const ObjectRef of = row->related(messagingSlots().service);
        return !of || of->text(of->slot("serviceName")) != service;
    });
    return rows;
}

Value ZRMultiValueObjectStoreWrapper::initWithRecord(ZROSRecord& record, const ZRPropertyPlace& place)
{
    record.readAllParts();
    const ObjectList rows = rowsOf(record, place);
    ZRMultiValue::Entries entries;
    for (const auto& row : rows) {
        const auto& slots = rowSlots(row->entity());
        Value value = valueOfRow(*row, place);
        if (value.isNothing() || row->isAbsent(slots.label) || row->isAbsent(slots.uniqueId))
            continue;
        entries.identifiers.emplace_back(row->text(slots.uniqueId));
        entries.labels.emplace_back(row->text(slots.label));
        entries.values.push_back(std::move(value));
    }
    if (entries.identifiers.empty())
        return {};
    entries.primaryIdentifier = primaryIdentifierForEntities(rows);
    return Value(platform::makeRef<ZRMultiValue>(std::move(entries)));
}

Value ZRMultiValueObjectStoreWrapper::initWithRecord(ZROSRecord& record, StoreObject& definition)
{
    const ObjectList rows = record.allCustomPropertyValuesWithCustomProperty(definition);
    if (rows.empty())
        return {};
    const auto type = static_cast<ZRPropertyType>(definition.integer(customPropertySlots().valueType));
    const auto& slots = customValueSlots();
    std::vector<std::string> identifiers, labels;
    std::vector<Value> values;
    for (const auto& row : rows) {
        values.push_back(valueOfCustomRow(*row, type));
        if (row->isAbsent(slots.label))
            platform::log(fmt::format("Multivalue Inconsistency: Nil label on <{}>", row->description()));
        else
            labels.emplace_back(row->text(slots.label));
        if (row->isAbsent(slots.uniqueId))
            platform::log(
                fmt::format("Multivalue Inconsistency: Nil identifier on <{}>", row->description()));
        else
            identifiers.emplace_back(row->text(slots.uniqueId));
    }
    return Value(ZRMultiValue::_initWithIdentifiers(
        std::move(identifiers), std::move(values), std::move(labels), primaryIdentifierForEntities(rows)));
}

Value ZRMultiValueObjectStoreWrapper::valueOfCustomRow(StoreObject& row, ZRPropertyType type)
{
    const auto place = customPropertyValueKeyNameForPropertyType(type);
    if (!place)
        return {};
    const Value stored = row.valueForKey(place->key);
    if (place->isSerializedPropertyList) {
        const auto value = platform::decodePropertyList(stored.asBytes());
        return value ? *value : Value();
    }
    return stored;
}

bool ZRMultiValueObjectStoreWrapper::applyMultiValue(
    const Value& value, const ZRPropertyPlace& place, ZROSRecord& record)
{
    const auto* entries = value.as<ZRMultiValue>();
    if (!value.isAbsent() && !entries)
        return false;
    const ObjectRef service = place.service.empty() || !entries
        ? nullptr
        : serviceWithName(place.service, *record.managedObjectContext(), record.store());
    rewriteRows(rowsOf(record, place), *place.key, entries, record, [&](const Value& entry) {
        if (!place.entityKey)
            return addressEntityWithValue(entry, record);
        ObjectRef row = insertRow(*place.entity, record);
        row->setValue(*place.entityKey, entry.isDate() ? ZRRecord::dateByNormalizingToGMT(entry) : entry);
        if (service)
            row->setRelated(messagingSlots().service, service.get());
        return row;
    });
    return true;
}

bool ZRMultiValueObjectStoreWrapper::applyCustomValue(
    const Value& value, StoreObject& definition, ZROSRecord& record)
{
    const auto type = static_cast<ZRPropertyType>(definition.integer(customPropertySlots().valueType));
    const auto place = customPropertyValueKeyNameForPropertyType(type);
    const auto* entries = value.as<ZRMultiValue>();
    if (!place || (zrIsMultiValueType(type) && !value.isAbsent() && !entries))
        return false;
    const Slot& key = record.slot("customProperties");
    const auto fill = [&](StoreObject& row, const Value& entry) {
        row.setRelated(customValueSlots().customProperty, &definition);
        row.setValueForKey(place->key, storedCustomValue(entry, place->isSerializedPropertyList));
    };
    const ObjectList old = record.allCustomPropertyValuesWithCustomProperty(definition);
    if (zrIsMultiValueType(type)) {
        rewriteRows(old, key, entries, record, [&](const Value& entry) {
            ObjectRef row = insertRow(*key.destination, record);
            fill(*row, entry);
            return row;
        });
        return true;
    }
    ObjectRef row = old.empty() ? nullptr : old.front();
    if (!row && value.isAbsent())
        return true;
    if (!row) {
        row = insertRow(*key.destination, record);
        // All writers give the one row of a single value the same identifier, so that two of them meet in it.
        row->setPrimitiveValue(
            customValueSlots().uniqueId, Value(definition.text(customPropertySlots().propertyName)));
        record.addObject(key, *row);
    }
    fill(*row, value);
    return true;
}

Value ZRMultiValueObjectStoreWrapper::addressValueWithEntity(StoreObject& row)
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& [slot, key] : addressKeys())
        if (const auto text = row.text(slot); !text.empty())
            entries.emplace_back(key, Value(text));
    const auto& custom = addressSlots().customValuesDictionary;
    if (!row.isAbsent(custom))
        if (const auto decoded = platform::decodePropertyList(row.bytes(custom));
            decoded && decoded->asDictionary())
            for (const auto& entry : decoded->asDictionary()->entries())
                entries.push_back(entry);
    return Value::dictionary(std::move(entries));
}

ObjectRef ZRMultiValueObjectStoreWrapper::addressEntityWithValue(const Value& dictionary, ZROSRecord& owner)
{
    ObjectRef row = insertRow(addressSlots().entity, owner);
    for (const auto& [slot, key] : addressKeys()) {
        const Value part = nonNullValueForKey(key, dictionary);
        row->setValue(slot,
            key == zr::kZRAddressCountryCodeKey && part.isString()
                ? Value(correctedCountryCode(part.asText()))
                : part);
    }
    std::vector<std::pair<std::string, Value>> custom;
    if (const auto* given = dictionary.asDictionary())
        for (const auto& [key, value] : given->entries())
            if (!isAddressKey(key) && !value.isNothing())
                custom.emplace_back(key, value);
    if (!custom.empty())
        row->setValue(addressSlots().customValuesDictionary,
            storedCustomValue(Value::dictionary(std::move(custom)), true));
    return row;
}

ObjectRef ZRMultiValueObjectStoreWrapper::serviceWithName(
    std::string_view name, ZRManagedObjectContext& context, objectstore::PersistentStore* persistentStore)
{
    if (!persistentStore)
        persistentStore = context.coordinator()->stores().back();
    auto& known = context.services()[{persistentStore, std::string(name)}];
    if (known && known->context() == &context)
        return known;
    const auto service = context.sharedObject(
        *rosterModel()->entity(zr::kZRObjectStoreServiceEntityName), {Value(name)}, persistentStore);
    if (!service) {
        platform::log(fmt::format("Cannot make the service {}: {}", name, service.error().text));
        return nullptr;
    }
    return known = *service;
}

std::optional<std::string> ZRMultiValueObjectStoreWrapper::primaryIdentifierForEntities(
    const ObjectList& rows)
{
    for (const auto& row : rows)
        if (const auto& slots = rowSlots(row->entity()); row->boolean(slots.isPrimary))
            return std::string(row->text(slots.uniqueId));
    return {};
}

void ZRMultiValueObjectStoreWrapper::deletePropertyValues(const ObjectList& rows, const Slot& key,
    DistributionListConfigs& savedConfigs, ZROSRecord& record, StoreContext& context)
{
    for (const auto& row : rows) {
        const auto& slots = rowSlots(row->entity());
        if (row->isAbsent(slots.uniqueId))
            continue;
        if (const Slot* choices = row->entity().slot("distributionListConfigs"))
            if (ObjectList found = row->objects(*choices); !found.empty())
                savedConfigs.emplace(row->text(slots.uniqueId), std::move(found));
        record.removeObject(key, *row);
        context.deleteObject(*row);
    }
}

void ZRMultiValueObjectStoreWrapper::rewireDistributionListConfig(
    DistributionListConfigs& savedConfigs, StoreObject& propertyValue, std::string_view identifier)
{
    const auto at = savedConfigs.find(identifier);
    if (at == savedConfigs.end())
        return;
    propertyValue.setObjects(propertyValue.slot("distributionListConfigs"), at->second);
    savedConfigs.erase(at);
}
