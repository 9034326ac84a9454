// A card's values as a dictionary, for those who want no person.
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"

#include "core/ZRMultiValue.h"

#include <algorithm>

namespace {

template <class Entries>
auto entryOf(Entries& entries, std::string_view property)
{
    return std::find_if(
        entries.begin(), entries.end(), [&](const auto& entry) { return entry.first == property; });
}

} // namespace

void ZRVCardDictionaryValueSetter::setValue(platform::Value value, std::string_view property)
{
    if (value.isAbsent())
        return;
    if (value.as<ZRMultiValue>())
        value = platform::Value::dictionary({{std::string(property), std::move(value)}});
    const auto entry = entryOf(_dictionaryRep, property);
    if (entry == _dictionaryRep.end())
        _dictionaryRep.emplace_back(property, std::move(value));
    else
        entry->second = std::move(value);
}

platform::Value ZRVCardDictionaryValueSetter::valueForProperty(std::string_view property) const
{
    const auto entry = entryOf(_dictionaryRep, property);
    return entry == _dictionaryRep.end() ? platform::Value() : entry->second;
}
