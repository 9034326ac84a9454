// Hands look-ups on to the platform.
#include "core/ZRFrameworkBundle.h"

#include "platform/files/Resources.h"

std::string ZRBundle::version() const { return ROSTER_VERSION; }

std::optional<std::string> ZRBundle::resource(std::string_view name, std::string_view type) const
{
    return platform::resource(name, type);
}

std::string ZRBundle::localizedString(
    std::string_view key, std::string_view table, std::string_view missing) const
{
    return platform::StringTables::shared().string(key, table, missing);
}

const ZRBundle& ZRFrameworkBundle()
{
    static constexpr ZRBundle bundle;
    return bundle;
}
