// How the tool gets at the roster that its options name.
#include "Command.h"

#include "history/ZRHistory.h"
#include "history/ZRHistoryStep.h"
#include "platform/files/Preferences.h"
#include "platform/run/NeverDestroyed.h"

#include <filesystem>

namespace {

/// KEY=VALUE of --default; "true", "false" and whole numbers are what they look like.
void setArgument(const std::string& option)
{
    const auto equals = option.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(exitStatus::usage, "--default wants KEY=VALUE, not '" + option + "'");
    const std::string text = option.substr(equals + 1);
    constexpr std::size_t longestNumber = 18;
    platform::Value value(text);
    if (text == "true" || text == "false")
        value = platform::Value(text == "true");
    else if (!text.empty() && text.size() <= longestNumber
        && text.find_first_not_of("0123456789") == std::string::npos)
        value = platform::Value(std::stoll(text));
    platform::Preferences::shared().setArgument(option.substr(0, equals), value);
}

} // namespace

void applyPreferences(const Options& options)
{
    for (const auto& option : options.defaults)
        setArgument(option);
    if (!options.directory.empty())
        platform::Preferences::shared().setArgument("ZRAlternateDataStoreDirectory",
            platform::Value(std::filesystem::absolute(options.directory).lexically_normal().string()));
}

platform::Ref<ZRRoster> openRoster(const Options& options, bool withSamples)
{
    applyPreferences(options);
    ZRRoster::setShouldCreateEmptyDatabase(!withSamples);
    auto roster = ZRRoster::sharedRoster();
    const std::string report = ZRRoster::openingReport();
    if (!roster)
        throw Failure(exitStatus::noStore, report.empty() ? "the roster cannot be opened" : report);
    if (!report.empty())
        complain(report);
    if (const auto settled = ZRHistory(*roster).settlePictures(); !settled)
        complain(settled.error().text);
    return roster;
}

platform::Ref<ZRRoster> openRosterToChange(const Options& options)
{
    auto roster = openRoster(options);
    // It ends with the process, and then others may undo it.
    static const platform::NeverDestroyed<ZRHistoryStep> step(*roster, options.title);
    return roster;
}

void save(ZRRoster& roster)
{
    if (!roster.save())
        throw Failure(exitStatus::noStore, "not saved: " + roster.lastSaveError().text);
}
