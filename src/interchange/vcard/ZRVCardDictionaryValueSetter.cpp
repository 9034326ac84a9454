// A card's values as a dictionary, for those who want no person.
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"

#include "core/ZRMultiValue.h"

#include <algorithm>

namespace {

/// As many properties as a full card has.
constexpr std::size_t kUsualProperties = 16;

/// Where the entry of a property is or belongs: they are kept in the order that a dictionary wants.
template <class Entries>
auto placeOf(Entries& entries, std::string_view property)
{
    return std::lower_bound(entries.begin(), entries.end(), property,
        [](const auto& entry, std::string_view wanted) { return entry.first < wanted; });
}

} // namespace

void ZRVCardDictionaryValueSetter::setValue(platform::Value value, std::string_view property)
{
    if (value.isAbsent())
        return;
    if (value.isObject() && value.as<ZRMultiValue>())
        value = platform::Value::dictionary({{std::string(property), std::move(value)}});
    if (_dictionaryRep.empty())
        _dictionaryRep.reserve(kUsualProperties);
    const auto place = placeOf(_dictionaryRep, property);
    if (place != _dictionaryRep.end() && place->first == property)
        place->second = std::move(value);
    else
        _dictionaryRep.emplace(place, property, std::move(value));
}

platform::Value ZRVCardDictionaryValueSetter::valueForProperty(std::string_view property) const
{
    const auto place = placeOf(_dictionaryRep, property);
    return place != _dictionaryRep.end() && place->first == property ? place->second : platform::Value();
}
