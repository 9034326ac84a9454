// A card's values as a dictionary, for those who want no person.
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"

#include "core/ZRMultiValue.h"

#include <algorithm>

namespace {

/// As many properties as a full card has.
constexpr std::size_t kUsualProperties = 16;

platform::Value underItsName(platform::Value value, std::string_view property)
{
    std::vector<platform::Dictionary::Entry> entries;
    entries.emplace_back(property, std::move(value));
    return platform::Value::dictionary(std::move(entries));
}

} // namespace

void ZRVCardDictionaryValueSetter::setValue(platform::Value value, std::string_view property)
{
    if (value.isAbsent())
        return;
    if (value.isObject() && value.as<ZRMultiValue>())
        value = underItsName(std::move(value), property);
    if (_entries.empty())
        _entries.reserve(kUsualProperties);
    _entries.emplace_back(property, std::move(value));
}

platform::Value ZRVCardDictionaryValueSetter::valueForProperty(std::string_view property) const
{
    const auto newest = std::find_if(
        _entries.rbegin(), _entries.rend(), [&](const auto& entry) { return entry.first == property; });
    return newest == _entries.rend() ? platform::Value() : newest->second;
}
