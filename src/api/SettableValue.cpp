// Whether a record can keep a value: asked before anything has changed.
#include "api/SettableValue.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <array>

using platform::Value;

namespace border {

namespace {

constexpr std::array kAddressTexts = {zr::kZRAddressStreetKey, zr::kZRAddressCityKey, zr::kZRAddressStateKey,
    zr::kZRAddressZIPKey, zr::kZRAddressCountryKey, zr::kZRAddressCountryCodeKey};

/// Null markers too: records leave them out of what they store.
bool isPropertyList(const Value& value)
{
    if (const auto* dictionary = value.asDictionary())
        return std::ranges::all_of(
            dictionary->entries(), [](const auto& entry) { return isPropertyList(entry.second); });
    return !value.isObject() && std::ranges::all_of(value.asArray(), isPropertyList);
}

bool isAddress(const Value& entry)
{
    return std::ranges::all_of(
        kAddressTexts, [&](std::string_view key) { return entry[key].isNothing() || entry[key].isString(); });
}

bool areSettable(const ZRMultiValue& entries, std::string_view property)
{
    const auto& values = entries._allValues();
    return std::ranges::all_of(values, isPropertyList)
        && (property != zr::kZRAddressProperty || std::ranges::all_of(values, isAddress));
}

} // namespace

bool isSettable(const ZRRecord& record, std::string_view property, const Value& value)
{
    const auto roster = record.roster();
    const ZRPropertyType type =
        roster ? roster->typeOfProperty(property, record._table()) : kZRPropertyTypeUnknown;
    if (value.isNothing() || type == kZRPropertyTypeUnknown)
        return true;
    const auto* entries = value.as<ZRMultiValue>();
    if (entries && zrIsMultiValueType(type) && entries->count() == 0)
        return true;
    return _ZRCheckTypeOfValue(value, type)
        && (entries ? areSettable(*entries, property) : isPropertyList(value));
}

} // namespace border
