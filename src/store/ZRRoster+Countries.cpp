// Which countries there are, and which is the user's.
#include "core/ZRConstants.h"
#include "platform/files/Resources.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/text/Locale.h"
#include "platform/value/PropertyList.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Value;

namespace {

constexpr std::string_view kCountryKey = "ZRDefaultAddressCountryCode";
constexpr std::string_view kLastResort = "us";

std::string lowered(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(
        lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return lower;
}

/// The second piece of the locale's name, where it has one.
std::string countryOfUser()
{
    std::string code = lowered(platform::countryOfLocale(platform::currentLocale()));
    if (!ZRRoster::isKnownCountry(code))
        code = lowered(ZRUserDefaults::objectForKey("Country", "org.quillon.GlobalPreferences").asText());
    return ZRRoster::isKnownCountry(code) ? code : std::string(kLastResort);
}

/// A country's entry with its titles in the user's language: the resource holds their tokens.
Value withTitles(const Value& format)
{
    if (!format.asDictionary())
        return {};
    auto entries = format.asDictionary()->entries();
    for (auto& [key, value] : entries)
        if (!key.ends_with("FORMAT"))
            value = platform::StringTables::shared().string(value.asText(), "ZRAddressLabels");
    return Value::dictionary(std::move(entries));
}

Value readAddressFormats()
{
    const auto file = platform::resource("ZRAddressFormats", "plist");
    const auto formats = file ? platform::decodePropertyList(*file) : platform::Result<Value>(Value());
    if (!formats || !formats->asDictionary()) {
        platform::log("cannot read ZRAddressFormats.plist: no country is known");
        return {};
    }
    auto countries = formats->asDictionary()->entries();
    for (auto& [code, format] : countries)
        format = withTitles(format);
    return Value::dictionary(std::move(countries));
}

} // namespace

const Value& ZRRoster::addressFormats()
{
    static const platform::NeverDestroyed<Value> formats(readAddressFormats());
    return *formats;
}

bool ZRRoster::isKnownCountry(std::string_view code) { return !addressFormats()[code].isNothing(); }

std::string ZRRoster::defaultCountryCode()
{
    const auto stored = ZRUserDefaults::rosterPreferences()->objectForKey(kCountryKey);
    if (isKnownCountry(stored.asText()))
        return std::string(stored.asText());
    const std::string code = countryOfUser();
    setDefaultCountryCode(code);
    return code;
}

void ZRRoster::setDefaultCountryCode(std::string_view code)
{
    const std::string known = lowered(code);
    if (!isKnownCountry(known))
        return platform::log(
            fmt::format("-[ZRRoster setDefaultCountryCode:] called with unknown country code '{}'", code));
    ZRUserDefaults::rosterPreferences()->setObject(Value(known), kCountryKey);
}
