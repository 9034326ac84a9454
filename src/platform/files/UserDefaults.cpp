// Which of the places that may hold a value of the program is asked first.
#include "platform/files/UserDefaults.h"

#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"

#include <cerrno>
#include <cstdlib>

namespace platform {

UserDefaults::UserDefaults() : _domain(program_invocation_short_name) { }

UserDefaults& UserDefaults::standard()
{
    static const NeverDestroyed<UserDefaults> defaults;
    return *defaults;
}

Value UserDefaults::objectForKey(std::string_view key) const
{
    if (auto value = Preferences::shared().get(_domain, key); !value.isAbsent())
        return value;
    Lock lock(_mutex);
    return _registered[key];
}

std::string UserDefaults::stringForKey(std::string_view key) const
{
    return std::string(objectForKey(key).asText());
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const
{
    const auto value = objectForKey(key);
    return value.isString() ? std::strtoll(std::string(value.asText()).c_str(), nullptr, 10)
                            : value.asInteger();
}

void UserDefaults::setObject(const Value& value, std::string_view key)
{
    if (const auto written = Preferences::shared().set(_domain, key, value); !written)
        log("Preferences: " + written.error().text);
}

void UserDefaults::registerDefaults(const Value& dictionary)
{
    if (!dictionary.isDictionary())
        return;
    Lock lock(_mutex);
    auto all =
        _registered.isDictionary() ? _registered.asDictionary()->entries() : std::vector<Dictionary::Entry>();
    const auto& added = dictionary.asDictionary()->entries();
    all.insert(all.end(), added.begin(), added.end());
    _registered = Value::dictionary(std::move(all));
}

} // namespace platform
