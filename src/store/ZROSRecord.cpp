// How a property of a record is read from and written to its stored object.
#include "store/ZROSRecord.h"

#include "core/RecordDictionaries.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLog.h"
#include "core/ZRMultiValue.h"
#include "core/ZRRecord.h"
#include "core/ZRUniqueId.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/value/PropertyList.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRModelTable.h"
#include "store/ZRMultiValueObjectStoreWrapper.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::StoreObject;
using platform::Value;

namespace {

constexpr std::int64_t publicFlags = 7 | 56;

/// What callers see of a stored value: a birthday is noon of its day where they are, of the flags only the
/// bits that have a public meaning.
Value publicValue(const Value& stored, std::string_view property)
{
    if (property == zr::kZRBirthdayProperty)
        return ZRRecord::localDateOccurringOnSameCalendarDayAsDateInGMT(stored);
    if (property == zr::kZRPersonFlags) {
        const std::int64_t flags = stored.asInteger() & publicFlags;
        return flags == 0 ? Value() : Value(flags);
    }
    return stored;
}

/// What is stored of a value that a caller gives. `stored` is there now.
Value valueToStore(const Value& value, std::string_view property, const Value& stored)
{
    if (property == zr::kZRBirthdayProperty)
        return ZRRecord::dateByNormalizingToGMT(value);
    if (property == zr::kZRPersonFlags) {
        // The mark of the last import is not the caller's to clear.
        const std::int64_t flags = (value.asInteger() & publicFlags) | (stored.asInteger() & ~publicFlags);
        return flags == 0 ? Value() : Value(flags);
    }
    return value;
}

/// A multi-value in one column, and back. What cannot be read is absent.
Value archived(const ZRMultiValue& values)
{
    const auto bytes =
        platform::encodePropertyList(multiValueDictionary(values), platform::PropertyListFormat::binary);
    if (bytes)
        return Value::data(*bytes);
    platform::log(fmt::format("Cannot store a multi-value: {}", bytes.error().text));
    return {};
}

Value unarchived(std::string_view bytes)
{
    const auto dictionary = platform::decodePropertyList(bytes);
    return dictionary && dictionary->isDictionary()
        ? valueFromDictionary(*dictionary, kZRPropertyTypeMulti | kZRPropertyTypeString, false)
        : Value();
}

} // namespace

platform::Ref<StoreObject> ZROSRecord::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSRecord>(entity);
}

std::string_view ZROSRecord::_table() const { return modelEntityNamed(entity().name())->table; }
bool ZROSRecord::_isPublicRecord() const { return modelEntityNamed(entity().name())->isPublic; }

const ZRRecordClass* ZROSRecord::publicRecordClass() const
{
    return ZRRecordClass::named(modelEntityNamed(entity().name())->publicClass);
}

std::string ZROSRecord::nts_UniqueId() { return std::string(text(slot("uniqueId"))); }

platform::Ref<ZRRecord> ZROSRecord::copyPublicRecordForClass(
    const ZRRecordClass& recordClass, ZROSRecord& databaseImpl, ZRRoster& roster)
{
    const auto* exactClass =
        ZRRecordObjectStoreFactoryImpl::publicRecordClassForImplClass(databaseImpl.entity());
    if (!exactClass || !exactClass->isKindOf(recordClass))
        return nullptr;
    // A handle whose last owner has just gone still stands there until the lock's next holder clears it away.
    if (ZRRecord* handle = databaseImpl.publicRecord(); handle && handle->retainIfOwned())
        return platform::Ref<ZRRecord>::adopt(handle);
    return ZRRecord::nts_initWithDatabaseImpl(*exactClass, platform::Ref<ZROSRecord>(&databaseImpl), roster);
}

ZRRecordList ZROSRecord::copyPublicRecordsForClass(
    const ZRRecordClass& recordClass, const ObjectList& databaseImpls, ZRRoster& roster)
{
    ZRRecordList records;
    records.reserve(databaseImpls.size());
    for (const auto& impl : databaseImpls)
        if (auto record = copyPublicRecordForClass(recordClass, static_cast<ZROSRecord&>(*impl), roster))
            records.push_back(std::move(record));
    return records;
}

void ZROSRecord::zrPublicRecordIsGone(const ZRRecord& record)
{
    if (_publicRecord == &record)
        _publicRecord = nullptr;
}

ZRManagedObjectContext* ZROSRecord::managedObjectContext() const
{
    return dynamic_cast<ZRManagedObjectContext*>(context());
}

ZRRoster* ZROSRecord::roster() const
{
    const auto* managed = managedObjectContext();
    return managed ? managed->owningRoster() : nullptr;
}

void ZROSRecord::awakeFromInsert()
{
    setValue(slot("creationDate"), Value(platform::Date{platform::Clock::current().now()}));
}

platform::Ref<ZROSRecord> ZROSRecord::holderOf(const ZRPropertyPlace&)
{
    return platform::Ref<ZROSRecord>(this);
}

Value ZROSRecord::nts_ValueForProperty(std::string_view property, std::size_t, const ZRRecord&)
{
    if (!context())
        return {};
    if (const auto* place = keyForProperty(property)) {
        const auto holder = holderOf(*place);
        if (place->isMultiValue)
            return ZRMultiValueObjectStoreWrapper::initWithRecord(*holder, *place);
        if (place->isArchived)
            return unarchived(holder->bytes(*place->key));
        if (!place->entity)
            return publicValue(holder->value(*place->key), property);
        const ObjectRef part = holder->related(*place->key);
        return part ? part->value(*place->entityKey) : Value();
    }
    return customValue(property);
}

Value ZROSRecord::customValue(std::string_view property)
{
    ZRRoster* owner = roster();
    const auto custom = owner ? isCustomProperty(property, *owner) : std::nullopt;
    if (!custom)
        return valueForKey(property);
    if (zrIsMultiValueType(custom->returnType))
        return ZRMultiValueObjectStoreWrapper::initWithRecord(*this, *custom->definition);
    const ObjectList rows = allCustomPropertyValuesWithCustomProperty(*custom->definition);
    return rows.empty() ? Value()
                        : ZRMultiValueObjectStoreWrapper::valueOfCustomRow(*rows.front(), custom->returnType);
}

std::optional<ZRCustomProperty> ZROSRecord::isCustomProperty(
    std::string_view property, ZRRoster& roster) const
{
    if (entity().slot(property))
        return {};
    const auto definition =
        ZRCustomProperties::customPropertyDefinitionWithName(property, roster, zrEntityName());
    if (!definition)
        return {};
    return ZRCustomProperty{
        definition, static_cast<ZRPropertyType>(definition->integer(customPropertySlots().valueType))};
}

bool ZROSRecord::nts_SetValue(const Value& given, std::string_view property, bool, ZRRecord&)
{
    const Value value = given.isNull() ? Value() : given;
    if (const auto* place = keyForProperty(property)) {
        const auto holder = holderOf(*place);
        if (place->isMultiValue)
            return ZRMultiValueObjectStoreWrapper::applyMultiValue(value, *place, *holder);
        if (place->isArchived) {
            const auto* entries = value.as<ZRMultiValue>();
            if (!value.isAbsent() && !entries)
                return false;
            holder->setValue(*place->key, entries ? archived(*entries) : Value());
            return true;
        }
        if (!place->entity) {
            const Value stored = property == zr::kZRPersonFlags ? holder->value(*place->key) : Value();
            holder->setValue(*place->key, valueToStore(value, property, stored));
            return true;
        }
        ObjectRef part = holder->related(*place->key);
        if (!part) {
            if (value.isAbsent())
                return true;
            part = context()->insertObjectOfEntity(*place->entity);
            context()->assignObjectToStore(*part, store());
            holder->setRelated(*place->key, part.get());
        }
        part->setValue(*place->entityKey, value);
        return true;
    }
    ZRRoster* owner = roster();
    if (const auto custom = owner ? isCustomProperty(property, *owner) : std::nullopt)
        return ZRMultiValueObjectStoreWrapper::applyCustomValue(value, *custom->definition, *this);
    setValueForKey(property, value);
    return true;
}

Value ZROSRecord::valueForUndefinedKey(std::string_view key)
{
    ZRDebugLog("ZRRecord ({}) valueForProperty: {} - unknown property", entity().name(), key);
    return {};
}

objectstore::ObjectList ZROSRecord::objectsIfThere(const Slot& slot)
{
    if (!context())
        return {};
    try {
        return objects(slot);
    } catch (const objectstore::InaccessibleObject& failure) {
        platform::log(fmt::format("Could not get {}: {}", slot.key, failure.what()));
        return {};
    }
}

ZRRecordList ZROSRecord::nts_ParentGroupsOfRecord(const ZRRecord& record)
{
    const Slot* key = entity().slot("parentGroups");
    return key ? copyPublicRecordsForClass(
               ZRGroup::recordClassDescription, objectsIfThere(*key), *record.nts_Roster())
               : ZRRecordList();
}

std::vector<std::string> ZROSRecord::nts_ChangedProperties()
{
    std::vector<std::string> properties;
    for (const auto& [property, place] : zrPropertiesOf(entity()))
        if (hasChanged(*place.key))
            properties.emplace_back(property);
    return properties;
}
