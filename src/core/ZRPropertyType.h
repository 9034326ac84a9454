// What kind of value a property holds, and whether a value is of that kind.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRTypes.h"
#include "platform/value/Value.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

/// Property names with their types, as a class or a roster answers them. Empty where a class has no table.
using ZRPropertyTypes = std::map<std::string, ZRPropertyType, std::less<>>;

constexpr bool zrIsMultiValueType(ZRPropertyType type) { return (type & kZRPropertyTypeMulti) != 0; }
/// The type of one entry.
constexpr ZRPropertyType zrBaseType(ZRPropertyType type) { return type & ~kZRPropertyTypeMulti; }

/// Whether a property of `type` can hold `value`. Absent and the null marker fit every type, even an unknown
/// one: they remove the property. A multi-value of whole numbers fits where one of reals is asked for, and
/// the reverse; no other types mix.
ZR_EXPORT bool _ZRCheckTypeOfValue(const platform::Value& value, ZRPropertyType type);

/// How `propertyTypeForValue` treats what is no plain value.
enum class ZRTypeGuess {
    /// Only strings, numbers, dates, data and arrays have a type.
    strict,
    /// A dictionary has one, too.
    lenient,
};

/// The type of a property that holds `value`. A dictionary that is the serial form of a multi-value (exactly
/// the keys "identifiers", "labels", "primary" and "values") has the multi-value type of its last value, or
/// none while it has no values.
ZR_EXPORT ZRPropertyType propertyTypeForValue(const platform::Value& value, ZRTypeGuess guess);

/// Where a custom property's value is stored.
struct ZRCustomValueKey {
    /// The key of the stored row.
    std::string_view key;
    /// The value goes through a binary property list.
    bool isSerializedPropertyList;

    friend bool operator==(const ZRCustomValueKey&, const ZRCustomValueKey&) = default;
};

/// Absent for a type that cannot be stored. A multi-value's entries are stored as their base type.
ZR_EXPORT std::optional<ZRCustomValueKey> customPropertyValueKeyNameForPropertyType(ZRPropertyType type);
