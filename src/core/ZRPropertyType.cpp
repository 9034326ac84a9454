// The checks behind the types of properties.
#include "core/ZRPropertyType.h"

#include "core/ZRMultiValue.h"

#include <algorithm>

using platform::Value;

namespace {

struct StoredType {
    ZRPropertyType type;
    ZRCustomValueKey stored;
};

constexpr StoredType kStoredTypes[] = {
    {kZRPropertyTypeString, {"stringValue", false}},
    {kZRPropertyTypeInteger, {"numberValue", false}},
    {kZRPropertyTypeReal, {"numberValue", false}},
    {kZRPropertyTypeDate, {"dateValue", false}},
    {kZRPropertyTypeArray, {"dataValue", true}},
    {kZRPropertyTypeDictionary, {"dataValue", true}},
    {kZRPropertyTypeData, {"dataValue", false}},
};

bool isMultiValueOfType(const Value& value, ZRPropertyType type)
{
    const auto isNumbers = [](ZRPropertyType t) {
        return t == (kZRPropertyTypeMulti | kZRPropertyTypeInteger)
            || t == (kZRPropertyTypeMulti | kZRPropertyTypeReal);
    };
    const auto* multiValue = value.as<const ZRMultiValue>();
    if (!multiValue)
        return false;
    const ZRPropertyType held = multiValue->propertyType();
    return held == type || (isNumbers(held) && isNumbers(type));
}

/// Exactly the four keys of a multi-value's serial form, with values of the right kinds.
bool isSerializedMultiValue(const Value& dictionary)
{
    return dictionary.asDictionary()->count() == 4 && dictionary["identifiers"].isArray()
        && dictionary["labels"].isArray() && dictionary["values"].isArray()
        && dictionary["primary"].isString();
}

ZRPropertyType typeForDictionary(const Value& dictionary)
{
    if (!isSerializedMultiValue(dictionary))
        return kZRPropertyTypeDictionary;
    const auto& values = dictionary["values"].asArray();
    if (values.empty())
        return kZRPropertyTypeUnknown;
    return kZRPropertyTypeMulti | propertyTypeForValue(values.back(), ZRTypeGuess::lenient);
}

} // namespace

bool _ZRCheckTypeOfValue(const Value& value, ZRPropertyType type)
{
    if (value.isNothing())
        return true;
    switch (type) {
    case kZRPropertyTypeString:
        return value.isString();
    case kZRPropertyTypeInteger:
    case kZRPropertyTypeReal:
        return value.isNumber();
    case kZRPropertyTypeDate:
        return value.isDate();
    case kZRPropertyTypeArray:
        return value.isArray();
    case kZRPropertyTypeDictionary:
        return value.isDictionary();
    case kZRPropertyTypeData:
        return value.isData();
    }
    const bool isMultiValueType =
        type > kZRPropertyTypeMulti && zrIsMultiValueType(type) && zrBaseType(type) <= kZRPropertyTypeData;
    return isMultiValueType && isMultiValueOfType(value, type);
}

ZRPropertyType propertyTypeForValue(const Value& value, ZRTypeGuess guess)
{
    switch (value.kind()) {
    case Value::Kind::string:
        return kZRPropertyTypeString;
    case Value::Kind::date:
        return kZRPropertyTypeDate;
    case Value::Kind::data:
        return kZRPropertyTypeData;
    case Value::Kind::real:
        return kZRPropertyTypeReal;
    case Value::Kind::boolean:
    case Value::Kind::integer:
        return kZRPropertyTypeInteger;
    case Value::Kind::array:
        return kZRPropertyTypeArray;
    case Value::Kind::dictionary:
        return guess == ZRTypeGuess::strict ? ZRPropertyType{kZRPropertyTypeUnknown}
                                            : typeForDictionary(value);
    case Value::Kind::absent:
    case Value::Kind::null:
    case Value::Kind::object:
        return kZRPropertyTypeUnknown;
    }
    return kZRPropertyTypeUnknown;
}

std::optional<ZRCustomValueKey> customPropertyValueKeyNameForPropertyType(ZRPropertyType type)
{
    const auto* found = std::ranges::find(kStoredTypes, zrBaseType(type), &StoredType::type);
    if (found == std::end(kStoredTypes))
        return {};
    return found->stored;
}
