// The preferences of the program this library runs in.
#pragma once

#include "platform/files/Preferences.h"

#include <string>
#include <string_view>

namespace platform {

/// The argument domain, then the program's own domain, then the registered defaults.
///
/// Ownership: one for the process, never destroyed.
/// Threads:   any.
/// Errors:    none; what cannot be read is absent, what cannot be written is logged.
class UserDefaults {
public:
    static UserDefaults& standard();

    /// The program's domain: the name of its file.
    const std::string& domain() const { return _domain; }

    Value objectForKey(std::string_view key) const;
    /// False when absent.
    bool boolForKey(std::string_view key) const { return preferenceIsTrue(objectForKey(key)); }
    /// Empty when absent or no text.
    std::string stringForKey(std::string_view key) const;
    /// Zero when absent; a text is read as a decimal number.
    std::int64_t integerForKey(std::string_view key) const;

    void setObject(const Value& value, std::string_view key);
    void setBool(bool value, std::string_view key) { setObject(value, key); }
    void removeObjectForKey(std::string_view key) { setObject({}, key); }

    /// Adds the entries of a dictionary to those that answer when nothing else does.
    void registerDefaults(const Value& dictionary);

private:
    UserDefaults();
    ~UserDefaults() = default;
    template <class T>
    friend class NeverDestroyed;

    std::string _domain;
    mutable Mutex _mutex;
    Value _registered ZR_GUARDED_BY(_mutex);
};

} // namespace platform
