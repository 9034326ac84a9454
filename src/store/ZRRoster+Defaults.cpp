// The preferences that belong to a roster: the defaults of the user's language, and the order of names.
#include "core/ZRConstants.h"
#include "platform/files/Preferences.h"
#include "platform/files/Resources.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/value/PropertyList.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <mutex>

using platform::Value;

namespace {

constexpr std::int64_t unset = -1;
constexpr std::int64_t lastNameFirst = 16;
constexpr std::int64_t firstNameFirst = 32;

using Defaults = std::map<std::string, Value, std::less<>>;

/// The defaults for the user's languages: a language says only what differs from those behind it, the last of
/// which is English.
Defaults defaultsOfLanguages()
{
    Defaults all;
    auto languages = platform::userLanguages();
    languages.emplace_back("en");
    for (const auto& language : languages) {
        const auto file = platform::resource("defaults/" + language + "/LocalizedDefaults", "plist");
        const auto defaults = file ? platform::decodePropertyList(*file) : platform::Result<Value>(Value());
        if (defaults && defaults->asDictionary())
            for (const auto& [key, value] : defaults->asDictionary()->entries())
                all.try_emplace(key, value);
    }
    return all;
}

/// Writes the defaults of the user's language to the preferences, where the user has none.
void seedPreferences()
{
    Defaults defaults = defaultsOfLanguages();
    if (const auto encoding = defaults.find(zr::kZR21vCardEncoding); encoding != defaults.end())
        defaults.emplace(std::string(zr::kZR21vCardEncoding) + "-localized", encoding->second);
    std::vector<platform::Dictionary::Entry> entries(defaults.begin(), defaults.end());
    const auto added = platform::Preferences::shared().addMissing(
        ZRUserDefaults::rosterPreferences()->applicationID(), Value::dictionary(std::move(entries)));
    if (!added)
        platform::log(fmt::format("cannot seed the preferences: {}", added.error().text));
}

std::atomic<std::int64_t>& nameOrdering()
{
    static std::atomic<std::int64_t> ordering = unset;
    return ordering;
}

/// Forgets the name ordering that was read, when preferences change.
void observePreferences()
{
    static const platform::NeverDestroyed<platform::Subscription> observing(
        platform::Preferences::shared().observe(
            [](const std::string&, const std::string&) { nameOrdering() = unset; }));
    static_cast<void>(*observing);
}

} // namespace

Value ZRRoster::localizedDefaults()
{
    static std::once_flag seeded;
    if (_state->flags.prefsNeedSync) {
        ZRUserDefaults::rosterPreferences()->synchronize();
        _state->flags.prefsNeedSync = false;
    }
    std::call_once(seeded, seedPreferences);
    return platform::Preferences::shared().dictionary(ZRUserDefaults::rosterPreferences()->applicationID());
}

std::int64_t ZRRoster::defaultNameOrdering()
{
    observePreferences();
    if (nameOrdering() == unset)
        nameOrdering() =
            ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZRNameDisplay).asInteger() != 0
            ? lastNameFirst
            : firstNameFirst;
    return nameOrdering();
}
