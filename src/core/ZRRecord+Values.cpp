// How the properties of a record are read and written, and what its private dictionary keeps.
#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRRecord.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/text/Dates.h"
#include "store/ZRCustomProperties.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <limits>
#include <stdexcept>

using platform::Value;

namespace {

/// "No row": the whole record is asked.
constexpr std::size_t allOnes = std::numeric_limits<std::size_t>::max();

constexpr std::string_view sortingFirstPath = "zrDatabaseImpl.sortingFirst";
constexpr std::string_view sortingLastPath = "zrDatabaseImpl.sortingLast";

std::vector<std::string> namesOf(const ZRPropertyTypes& types)
{
    std::vector<std::string> names;
    for (const auto& [name, type] : types)
        names.push_back(name);
    return names;
}

} // namespace

Value ZRRecord::valueForProperty(std::string_view property) const
{
    zrRequire(property.data() != nullptr, "property != nil");
    return locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_ValueForProperty(property); });
}

Value ZRRecord::nts_ValueForProperty(std::string_view property) const
{
    return nts_ValueForProperty(property, allOnes);
}

Value ZRRecord::nts_ValueForProperty(std::string_view property, std::size_t row) const
{
    if (!_databaseImpl)
        return {};
    try {
        if (!_databaseImpl->context())
            throw objectstore::InaccessibleObject("the stored object is gone");
        return _databaseImpl->nts_ValueForProperty(property, row, *this);
    } catch (const objectstore::InaccessibleObject&) {
        platform::log(
            fmt::format("Could not get {} for {} {}.  Object may have been deleted in another process.",
                property, recordClass().name, _uniqueId));
        return {};
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Rethrowing {}: {}", property, failure.what()));
        throw;
    }
}

bool ZRRecord::setValue(const Value& value, std::string_view property, bool recordCouldBeInDatabase)
{
    zrRequire(property.data() != nullptr, "property != nil");
    // A roster in memory needs no shared one, and asking would open that.
    if (!_roster->isMemoryBacked() && !ZRRoster::nts_hasSharedInstance())
        return false;
    return locked(*_roster, ZRAccess::write,
        [&]() ZR_NTS { return nts_SetValue(value, property, recordCouldBeInDatabase); });
}

bool ZRRecord::nts_SetValue(const Value& value, std::string_view property)
{
    return nts_SetValue(value, property, true);
}

bool ZRRecord::nts_SetValue(const Value& value, std::string_view property, bool recordCouldBeInDatabase)
{
    if (property == zr::kZRUIDProperty)
        return false;
    if (!_databaseImpl && !_roster->nts_AddRecord(*this))
        return false;
    if (!_databaseImpl->context())
        throw objectstore::InaccessibleObject(_uniqueId + " is gone and cannot be written");
    return _databaseImpl->nts_SetValue(value, property, recordCouldBeInDatabase, *this);
}

bool ZRRecord::removeValueForProperty(std::string_view property) { return setValue(Value(), property); }
bool ZRRecord::nts_RemoveValueForProperty(std::string_view property)
{
    return nts_SetValue(Value(), property);
}

bool ZRRecord::doesPropertyExist(std::string_view property) const
{
    return _roster->doesPropertyExist(property, recordClass());
}

Value ZRRecord::valueForKey(std::string_view key) const
{
    if (!doesPropertyExist(key))
        throw std::invalid_argument(fmt::format("{} has no key '{}'", recordClass().name, key));
    return valueForProperty(key);
}

void ZRRecord::setValueForKey(const Value& value, std::string_view key)
{
    if (value.isNothing())
        return setNilValueForKey(key);
    if (!doesPropertyExist(key))
        throw std::invalid_argument(fmt::format("{} has no key '{}'", recordClass().name, key));
    if (!setValue(value, key))
        throw std::invalid_argument(
            fmt::format("-[ZRRecord setValue: '{}' forKey: '{}'] invalid value", value.description(), key));
}

void ZRRecord::setNilValueForKey(std::string_view key)
{
    if (!removeValueForProperty(key))
        throw std::invalid_argument(fmt::format("-[ZRRecord setNilValueforKey: '{}'] invalid property", key));
}

std::pair<std::string, std::string> ZRRecord::_firstMatchingProperty(std::string_view keyPath) const
{
    for (auto end = keyPath.size(); end != std::string_view::npos && end != 0;
         end = keyPath.rfind('.', end - 1))
        if (doesPropertyExist(keyPath.substr(0, end)))
            return {std::string(keyPath.substr(0, end)),
                std::string(end < keyPath.size() ? keyPath.substr(end + 1) : std::string_view())};
    return {};
}

Value ZRRecord::valueForKeyPath(std::string_view keyPath) const
{
    const auto [property, rest] = _firstMatchingProperty(keyPath);
    if (!property.empty()) {
        Value value = valueForProperty(property);
        std::string_view left = rest;
        while (!left.empty() && value.isDictionary()) {
            const auto dot = std::min(left.find('.'), left.size());
            value = Value(value[left.substr(0, dot)]);
            left.remove_prefix(std::min(dot + 1, left.size()));
        }
        return left.empty() ? value : Value();
    }
    for (const auto& [path, key] :
        {std::pair(sortingFirstPath, "sortingFirstName"), std::pair(sortingLastPath, "sortingLastName")})
        if (keyPath.starts_with(path))
            return zrosValueForKey(key);
    return {};
}

void ZRRecord::setValueForKeyPath(const Value& value, std::string_view keyPath)
{
    const auto [property, rest] = _firstMatchingProperty(keyPath);
    if (property.empty())
        return setValueForKey(value, keyPath);
    if (rest.empty())
        return setValueForKey(value, property);
    const Value whole = valueForProperty(property);
    std::vector<std::pair<std::string, Value>> entries;
    if (const auto* dictionary = whole.asDictionary())
        entries = dictionary->entries();
    entries.emplace_back(rest, value);
    setValueForKey(Value::dictionary(std::move(entries)), property);
}

Value ZRRecord::zrosValueForKey(std::string_view key) const
{
    return locked(*_roster, ZRAccess::read,
        [&]() ZR_NTS { return _databaseImpl ? _databaseImpl->valueForKey(key) : Value(); });
}

void ZRRecord::zrosSetValue(const Value& value, std::string_view key)
{
    locked(*_roster, ZRAccess::write, [&]() ZR_NTS {
        if (_databaseImpl)
            _databaseImpl->setValueForKey(key, value);
    });
}

bool ZRRecord::nts_HasChangedProperties() const { return _databaseImpl && _databaseImpl->hasChanges(); }

std::vector<std::string> ZRRecord::nts_ChangedProperties() const
{
    return _databaseImpl ? _databaseImpl->nts_ChangedProperties() : std::vector<std::string>();
}

ZRRecordList ZRRecord::nts_AffectsSmartGroupsIsNew(bool) const { return {}; }

ZRPropertyTypes ZRRecord::propertyTypesWithRoster(const ZRRecordClass& recordClass, ZRRoster* roster)
{
    return roster ? ZRCustomProperties::propertyTypesForClass(recordClass, *roster, true)
                  : builtInPropertyTypes(recordClass.name);
}

std::vector<std::string> ZRRecord::propertiesWithRoster(const ZRRecordClass& recordClass, ZRRoster* roster)
{
    return namesOf(propertyTypesWithRoster(recordClass, roster));
}

std::vector<std::string> ZRRecord::properties(const ZRRecordClass& recordClass)
{
    return propertiesWithRoster(recordClass, ZRRoster::sharedRoster().get());
}

ZRPropertyType ZRRecord::typeOfProperty(const ZRRecordClass& recordClass, std::string_view property)
{
    return typeOfProperty(recordClass, property, ZRRoster::sharedRoster().get());
}

ZRPropertyType ZRRecord::typeOfProperty(
    const ZRRecordClass& recordClass, std::string_view property, ZRRoster* roster)
{
    if (!roster)
        return builtInTypeOfProperty(recordClass.name, property);
    return locked(
        *roster, ZRAccess::read, [&]() ZR_NTS { return nts_TypeOfProperty(recordClass, property, *roster); });
}

ZRPropertyType ZRRecord::nts_TypeOfProperty(
    const ZRRecordClass& recordClass, std::string_view property, ZRRoster& roster)
{
    if (const auto type = builtInTypeOfProperty(recordClass.name, property))
        return type;
    const auto types = ZRCustomProperties::propertyTypesForClass(recordClass, roster, false);
    const auto at = types.find(property);
    return at == types.end() ? kZRPropertyTypeUnknown : at->second;
}

void ZRRecord::nts_Touch()
{
    if (!nts_contextInfo(zr::kZRPreserveModificationDate).asBoolean())
        nts_SetValue(
            Value(platform::Date{platform::Clock::current().now()}), zr::kZRModificationDateProperty);
}

Value ZRRecord::valueInTemporaryCacheForProperty(std::string_view property) const
{
    return locked(
        *_roster, ZRAccess::read, [&]() ZR_NTS { return nts_ValueInTemporaryCacheForProperty(property); });
}

void ZRRecord::setValueInTemporaryCache(const Value& value, std::string_view property)
{
    locked(*_roster, ZRAccess::read, [&]() ZR_NTS { nts_SetValueInTemporaryCache(value, property); });
}

void ZRRecord::clearTemporaryCache()
{
    locked(*_roster, ZRAccess::read, [&]() ZR_NTS { nts_ClearTemporaryCache(); });
}

Value ZRRecord::nts_ValueInTemporaryCacheForProperty(std::string_view property) const
{
    return (_databaseImpl ? _databaseImpl->privateDictionary() : _ownDictionary).value(property);
}

void ZRRecord::nts_SetValueInTemporaryCache(const Value& value, std::string_view property) const
{
    (_databaseImpl ? _databaseImpl->privateDictionary() : _ownDictionary).set(value, property);
}

void ZRRecord::nts_ClearTemporaryCache() const
{
    (_databaseImpl ? _databaseImpl->privateDictionary() : _ownDictionary).clear();
}

void ZRRecord::nts_setContextInfo(const Value& value, std::string_view key)
{
    nts_SetValueInTemporaryCache(value, key);
}

Value ZRRecord::dateByNormalizingToGMT(const Value& date)
{
    return date.isDate() ? Value(platform::noonInGMTOfLocalDay(date.asDate())) : date;
}

Value ZRRecord::localDateOccurringOnSameCalendarDayAsDateInGMT(const Value& date)
{
    return date.isDate() ? Value(platform::localNoonOfGMTDay(date.asDate())) : date;
}
