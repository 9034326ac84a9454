// Reading, searching and comparing multi-values.
#include "core/ZRMultiValue.h"

#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRLabels.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRStringAdditions.h"
#include "core/ZRUniqueId.h"
#include "platform/run/Log.h"
#include "platform/text/Utf.h"

#include <algorithm>

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view kIndexInRange = "index < [self count]";

/// What damaged data left out.
const std::string kNoLabel;
const Value kNoValue;

template <class T>
ZRIndex indexOf(const std::vector<T>& list, const auto& wanted)
{
    const auto found = std::ranges::find(list, wanted);
    return found == list.end() ? kZRNotFound : found - list.begin();
}

template <class T, class Matches>
ZRIndex indexWhere(const std::vector<T>& list, Matches matches)
{
    const auto found = std::ranges::find_if(list, matches);
    return found == list.end() ? kZRNotFound : found - list.begin();
}

/// The type of one value; 0 for what a multi-value cannot be typed by, such as booleans.
ZRPropertyType baseTypeOf(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::string:
        return kZRPropertyTypeString;
    case Value::Kind::integer:
        return kZRPropertyTypeInteger;
    case Value::Kind::real:
        return kZRPropertyTypeReal;
    case Value::Kind::data:
        return kZRPropertyTypeData;
    case Value::Kind::date:
        return kZRPropertyTypeDate;
    case Value::Kind::array:
        return kZRPropertyTypeArray;
    case Value::Kind::dictionary:
        return kZRPropertyTypeDictionary;
    default:
        return kZRPropertyTypeUnknown;
    }
}

std::vector<std::string> texts(const Value& array)
{
    std::vector<std::string> all;
    for (const Value& text : array.asArray())
        all.emplace_back(text.asText());
    return all;
}

Value arrayOf(const std::vector<std::string>& texts)
{
    return Value::array(std::vector<Value>(texts.begin(), texts.end()));
}

void warnOfFormerName(std::string_view former, std::string_view name)
{
    platform::log(fmt::format(
        "-[ZRMultiValue {}] is SPI that has been promoted to API: -[ZRMultiValue {}]", former, name));
    platform::log("The SPI method will be removed by GM");
}

} // namespace

Ref<ZRMultiValue> ZRMultiValue::_initWithIdentifiers(std::vector<std::string> identifiers,
    std::vector<Value> values, std::vector<std::string> labels, std::optional<std::string> primaryIdentifier)
{
    return platform::makeRef<ZRMultiValue>(
        Entries{std::move(identifiers), std::move(labels), std::move(values), std::move(primaryIdentifier)});
}

Ref<ZRMultiValue> ZRMultiValue::_initWithDictionary(const Value& dictionary, ZRPropertyType)
{
    const Value& primary = dictionary["primaryIdentifier"];
    return _initWithIdentifiers(texts(dictionary["identifiers"]), dictionary["values"].asArray(),
        texts(dictionary["labels"]),
        primary.isString() ? std::optional<std::string>(primary.asText()) : std::nullopt);
}

std::string ZRMultiValue::_generateIdentifier() { return zrUniqueString(); }

const std::string& ZRMultiValue::identifierAtIndex(ZRIndex index) const
{
    zrRequire(hasIndex(index), kIndexInRange);
    return _entries.identifiers[static_cast<std::size_t>(index)];
}

const std::string& ZRMultiValue::labelAtIndex(ZRIndex index) const
{
    zrRequire(hasIndex(index), kIndexInRange);
    const auto at = static_cast<std::size_t>(index);
    return at < _entries.labels.size() ? _entries.labels[at] : kNoLabel;
}

const Value& ZRMultiValue::valueAtIndex(ZRIndex index) const
{
    zrRequire(hasIndex(index), kIndexInRange);
    const auto at = static_cast<std::size_t>(index);
    return at < _entries.values.size() ? _entries.values[at] : kNoValue;
}

ZRIndex ZRMultiValue::indexForIdentifier(std::string_view identifier) const
{
    zrRequire(!identifier.empty(), "identifier != nil && [identifier length] > 0");
    return indexOf(_entries.identifiers, identifier);
}

std::optional<std::string> ZRMultiValue::labelForIdentifier(std::string_view identifier) const
{
    const ZRIndex index = indexOf(_entries.identifiers, identifier);
    return index == kZRNotFound ? std::optional<std::string>() : labelAtIndex(index);
}

Value ZRMultiValue::valueForIdentifier(std::string_view identifier) const
{
    const ZRIndex index = indexOf(_entries.identifiers, identifier);
    return index == kZRNotFound ? Value() : valueAtIndex(index);
}

std::optional<std::string> ZRMultiValue::_labelForIdentifier(std::string_view identifier) const
{
    warnOfFormerName("_labelForIdentifier:", "labelForIdentifier:");
    return labelForIdentifier(identifier);
}

Value ZRMultiValue::_valueForIdentifier(std::string_view identifier) const
{
    warnOfFormerName("_valueForIdentifier:", "valueForIdentifier:");
    return valueForIdentifier(identifier);
}

const std::optional<std::string>& ZRMultiValue::primaryIdentifier() const
{
    if (!_entries.primaryIdentifier && !_entries.values.empty() && !_entries.identifiers.empty())
        _entries.primaryIdentifier = _entries.identifiers.front();
    return _entries.primaryIdentifier;
}

ZRIndex ZRMultiValue::primaryIndex() const
{
    const std::optional<std::string>& primary = primaryIdentifier();
    return primary ? indexOf(_entries.identifiers, *primary) : kZRNotFound;
}

ZRPropertyType ZRMultiValue::propertyType() const
{
    if (_entries.values.empty())
        return kZRPropertyTypeUnknown;
    const ZRPropertyType type = baseTypeOf(_entries.values.front());
    const bool isShared =
        std::ranges::all_of(_entries.values, [&](const Value& value) { return baseTypeOf(value) == type; });
    return isShared && type != kZRPropertyTypeUnknown ? kZRPropertyTypeMulti | type
                                                      : ZRPropertyType{kZRPropertyTypeUnknown};
}

bool ZRMultiValue::isEqual(const Object& other) const { return isEqual(other, CompareIdentifiers::yes); }

bool ZRMultiValue::isEqual(const Object& other, CompareIdentifiers compareIdentifiers) const
{
    if (this == &other)
        return true;
    const auto* that = dynamic_cast<const ZRMultiValue*>(&other);
    if (!that || count() != that->count())
        return false;
    if (compareIdentifiers == CompareIdentifiers::yes && _entries.identifiers != that->_entries.identifiers)
        return false;
    return _entries.labels == that->_entries.labels && _entries.values == that->_entries.values;
}

std::size_t ZRMultiValue::hash() const
{
    std::size_t hash = _entries.identifiers.size();
    for (const std::string& identifier : _entries.identifiers)
        hash = hash * 31 + std::hash<std::string>{}(identifier);
    return hash;
}

std::string ZRMultiValue::description() const
{
    std::vector<std::string> labels;
    std::size_t width = 0;
    for (ZRIndex i = 0; i < count(); ++i) {
        labels.push_back(ZRLocalizedPropertyOrLabel(labelAtIndex(i)));
        width = std::max(width, platform::utf16Length(labels.back()));
    }
    const ZRIndex primary = primaryIndex();
    std::string text = "{\n";
    for (ZRIndex i = 0; i < count(); ++i) {
        const std::string& label = labels[static_cast<std::size_t>(i)];
        text += fmt::format("\t\t{}  {}{}  {}\n", i == primary ? '*' : ' ', label,
            std::string(width - platform::utf16Length(label), ' '), valueAtIndex(i).description());
    }
    return text + "}";
}

bool ZRMultiValue::containsValue(const Value& value, std::string_view label) const
{
    for (ZRIndex i = 0; i < count(); ++i)
        if (labelAtIndex(i) == label && valueAtIndex(i) == value)
            return true;
    return false;
}

ZRIndex ZRMultiValue::_containsValue(const Value& value) const
{
    return indexWhere(
        _entries.values, [&](const Value& held) { return zrCaseInsensitiveIsEqual(held, value); });
}

ZRIndex ZRMultiValue::_containsSimilarValue(const Value& value, std::string_view property) const
{
    if (!value.isString())
        return _containsValue(value);
    const auto reduced =
        property == zr::kZRPhoneProperty ? zrStandardizedPhoneNumber : zrStringByRemovingPunctuation;
    const std::string wanted = reduced(value.asText());
    return indexWhere(_entries.values, [&](const Value& held) {
        return held.isString() ? zrEqualIgnoringCase(reduced(held.asText()), wanted) : held == value;
    });
}

std::string ZRMultiValue::_makeMutableStringWithValues() const
{
    std::string joined;
    for (const Value& value : _entries.values) {
        if (!joined.empty() || &value != _entries.values.data())
            joined += '\r';
        joined += value.asText();
    }
    return joined;
}

Value ZRMultiValue::_dictionary() const
{
    std::vector<Value> values = _entries.values;
    if (propertyType() == (kZRPropertyTypeMulti | kZRPropertyTypeDictionary))
        std::ranges::transform(values, values.begin(), zrDictionaryByRemovingNulls);
    return Value::dictionary({
        {"identifiers", arrayOf(_entries.identifiers)},
        {"labels", arrayOf(_entries.labels)},
        {"values", Value::array(std::move(values))},
        {"primaryIdentifier", primaryIdentifier() ? Value(*primaryIdentifier()) : Value()},
    });
}

Ref<ZRMultiValue> ZRMultiValue::copy() const { return Ref<ZRMultiValue>(const_cast<ZRMultiValue*>(this)); }

Ref<ZRMutableMultiValue> ZRMultiValue::mutableCopy() const
{
    return platform::makeRef<ZRMutableMultiValue>(_entries);
}
