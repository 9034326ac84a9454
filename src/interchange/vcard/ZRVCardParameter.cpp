// A parameter of a vCard line, or one entry that the card's end makes part of a multi-value.
#include "interchange/vcard/ZRVCardParameter.h"

#include <fmt/format.h>

std::vector<std::string> ZRVCardParameter::types() const
{
    std::vector<std::string> types;
    forEachType([&](std::string_view type) {
        types.emplace_back(type);
        return false;
    });
    return types;
}

void ZRVCardParameter::addTypes(const std::vector<std::string>& types)
{
    _added.insert(_added.end(), types.begin(), types.end());
}

void ZRVCardParameter::removeAllTypes()
{
    _added.clear();
    _nameIsType = false;
}

void ZRVCardParameter::reset()
{
    _added.clear();
    _nameIsType = true;
    _grouping.reset();
    _value = {};
}

std::string ZRVCardParameter::description() const
{
    return fmt::format("<ZRVCardParameter {} {}='{}' primary={}>", static_cast<const void*>(this),
        _name.value_or("(null)"), _value.isAbsent() ? "(null)" : _value.description(), _primary ? 1 : 0);
}
