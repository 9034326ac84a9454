// Reads the templates of all countries.
#include "format/PhoneFormats.h"

#include "core/ZRFrameworkBundle.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/value/PropertyList.h"

using platform::Value;

namespace {

Value readFormats()
{
    const auto bytes = ZRFrameworkBundle().resource("ZRPhoneFormats", "plist");
    if (!bytes)
        return Value::dictionary({});
    auto formats = platform::decodePropertyList(*bytes);
    if (!formats)
        platform::log("ZRPhoneFormats.plist: " + formats.error().text);
    return formats && formats->isDictionary() ? *formats : Value::dictionary({});
}

} // namespace

const Value& phoneFormats()
{
    static const platform::NeverDestroyed<Value> formats(readFormats());
    return *formats;
}

std::vector<std::vector<std::string>> phoneFormatsOfCountry(std::string_view countryCode)
{
    std::vector<std::vector<std::string>> lists;
    for (const auto& list : phoneFormats()[countryCode].asArray())
        lists.push_back(stringsOf(list));
    return lists;
}

std::vector<std::string> stringsOf(const Value& array)
{
    std::vector<std::string> strings;
    for (const auto& element : array.asArray())
        if (element.isString())
            strings.emplace_back(element.asText());
    return strings;
}
