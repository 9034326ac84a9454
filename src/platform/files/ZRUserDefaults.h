// The preferences of the contact database itself, the same in whatever program it runs.
#pragma once

#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <string>
#include <string_view>

/// One preference domain by its application identifier. Every read sees what any process wrote last.
///
/// Ownership: the three singletons live as long as the process.
/// Threads:   any.
/// Errors:    what cannot be read is absent; what cannot be written is logged.
class ZRUserDefaults : public platform::Object {
public:
    /// Domain "org.quillon.Roster".
    static platform::Ref<ZRUserDefaults> rosterPreferences();
    /// Domain "org.quillon.Roster.zrd", of the helper process.
    static platform::Ref<ZRUserDefaults> rosterManagerPreferences();
    /// Domain "org.quillon.IISSupport".
    static platform::Ref<ZRUserDefaults> iisSupportPreferences();

    explicit ZRUserDefaults(std::string applicationID) : _applicationID(std::move(applicationID)) { }

    const std::string& applicationID() const { return _applicationID; }

    platform::Value objectForKey(std::string_view key) const;
    /// False when absent.
    bool boolForKey(std::string_view key) const;
    /// Also tells through `keyExists`, unless that is null, whether there is a value.
    bool boolForKey(std::string_view key, bool* keyExists) const;
    void setObject(const platform::Value& object, std::string_view key);
    void setBool(bool value, std::string_view key);
    void removeObjectForKey(std::string_view key);
    /// Answers false when the domain cannot be read.
    bool synchronize();

    /// Reads any domain.
    static platform::Value objectForKey(std::string_view key, std::string_view applicationID);

private:
    ~ZRUserDefaults() override = default;

    const std::string _applicationID;
};
