// Where the answers for a reader of cards come from.
#include "interchange/vcard/RosterReaderContext.h"

#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "platform/files/ZRUserDefaults.h"
#include "store/ZRRoster.h"

namespace {

std::optional<std::string> encodingPreference()
{
    const auto name = ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZR21vCardEncoding);
    return name.isString() ? std::optional<std::string>(name.asText()) : std::nullopt;
}

} // namespace

RosterReaderContext::RosterReaderContext(ZRRoster& roster)
    : _countryCode(roster.defaultCountryCode())
    , _nameOrdering(roster.defaultNameOrdering())
    , _encoding(encodingPreference())
{
}

platform::Value RosterReaderContext::builtInPicture(std::string_view name) const
{
    // The name comes from the card: it must not lead out of the resources.
    if (name.empty() || name.find('/') != std::string_view::npos || name.front() == '.')
        return {};
    const auto picture = ZRFrameworkBundle().resource(name, "tiff");
    return picture ? platform::Value::data(*picture) : platform::Value();
}
