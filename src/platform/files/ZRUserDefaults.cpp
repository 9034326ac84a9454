// The three domains that have a reader of their own, and how a domain is read.
#include "platform/files/ZRUserDefaults.h"

#include "platform/files/Preferences.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"

using platform::makeRef;
using platform::NeverDestroyed;
using platform::Preferences;
using platform::Ref;
using platform::Value;

Ref<ZRUserDefaults> ZRUserDefaults::rosterPreferences()
{
    static const NeverDestroyed<Ref<ZRUserDefaults>> only(makeRef<ZRUserDefaults>("org.quillon.Roster"));
    return *only;
}

Ref<ZRUserDefaults> ZRUserDefaults::rosterManagerPreferences()
{
    static const NeverDestroyed<Ref<ZRUserDefaults>> only(makeRef<ZRUserDefaults>("org.quillon.Roster.zrd"));
    return *only;
}

Ref<ZRUserDefaults> ZRUserDefaults::iisSupportPreferences()
{
    static const NeverDestroyed<Ref<ZRUserDefaults>> only(makeRef<ZRUserDefaults>("org.quillon.IISSupport"));
    return *only;
}

Value ZRUserDefaults::objectForKey(std::string_view key) const { return objectForKey(key, _applicationID); }

bool ZRUserDefaults::boolForKey(std::string_view key) const { return boolForKey(key, nullptr); }

bool ZRUserDefaults::boolForKey(std::string_view key, bool* keyExists) const
{
    const auto value = objectForKey(key);
    if (keyExists)
        *keyExists = !value.isAbsent();
    return platform::preferenceIsTrue(value);
}

void ZRUserDefaults::setObject(const Value& object, std::string_view key)
{
    if (const auto written = Preferences::shared().set(_applicationID, key, object); !written)
        platform::log("Preferences: " + written.error().text);
}

void ZRUserDefaults::setBool(bool value, std::string_view key) { setObject(value, key); }

void ZRUserDefaults::removeObjectForKey(std::string_view key) { setObject({}, key); }

bool ZRUserDefaults::synchronize() { return Preferences::shared().synchronize(_applicationID); }

Value ZRUserDefaults::objectForKey(std::string_view key, std::string_view applicationID)
{
    return Preferences::shared().get(applicationID, key);
}
