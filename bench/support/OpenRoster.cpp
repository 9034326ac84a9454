// Which roster a benchmark works on.
#include "support/OpenRoster.h"

#include "platform/files/Preferences.h"
#include "support/Measure.h"

#include <fmt/format.h>

#include <filesystem>

namespace bench {

platform::Ref<ZRRoster> openRoster(const std::string& directory)
{
    platform::Preferences::shared().setArgument(
        "ZRAlternateDataStoreDirectory", platform::Value(std::filesystem::absolute(directory).string()));
    ZRRoster::setShouldCreateEmptyDatabase(true);
    auto roster = ZRRoster::sharedRoster();
    if (!roster || !ZRRoster::openingReport().empty())
        fail(fmt::format("{}: {}", directory, ZRRoster::openingReport()));
    return roster;
}

} // namespace bench
