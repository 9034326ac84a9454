// What the user has chosen: values by domain and key, shared with every process of the user.
#pragma once

#include "platform/notify/Subscription.h"
#include "platform/value/Error.h"
#include "platform/value/Export.h"
#include "platform/value/Value.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The preference domains: one property-list file each, "<domain>.plist" in the user's config home, and above
/// them all the volatile argument domain of this process.
///
/// A read looks whether the file was changed by anybody and so is never stale; a write goes to the file at
/// once and keeps what other processes wrote.
///
/// Ownership: one for the process, never destroyed; it keeps what it read of each domain.
/// Threads:   any. Observers run on the writing thread, outside all locks.
/// Errors:    a missing or unreadable file reads as empty (unreadable: logged); it is never overwritten
/// because
///            of that: the write is refused.
class PLATFORM_EXPORT Preferences {
public:
    static Preferences& shared();

    /// The value, the argument domain's before the file's; absent when neither has one.
    Value get(std::string_view domain, std::string_view key);
    /// Writes; an absent value or the null marker removes. The argument domain stays above.
    Result<void> set(std::string_view domain, std::string_view key, const Value& value);
    Result<void> remove(std::string_view domain, std::string_view key) { return set(domain, key, {}); }

    /// Writes, all at once, the entries of a dictionary whose keys have no value in the file yet.
    Result<void> addMissing(std::string_view domain, const Value& dictionary);

    /// The keys and values of the file, without the argument domain.
    std::vector<std::string> keys(std::string_view domain);
    Value dictionary(std::string_view domain);
    /// Reads the file anew if it was changed. Answers false when it cannot be read.
    bool synchronize(std::string_view domain);

    /// Sets a value of the argument domain, which holds for every domain in this process; absent removes.
    void setArgument(std::string_view key, const Value& value);

    /// Calls back with domain and key after this process has set or removed a value.
    Subscription observe(Observers<std::string, std::string>::Callback callback);

private:
    template <class T>
    friend class NeverDestroyed;
    Preferences();
    ~Preferences() = default;

    struct State;
    std::shared_ptr<State> _state;
};

/// Whether a preference reads as true: a number other than 0, or a text such as "YES", "true" or "1".
bool preferenceIsTrue(const Value& value);

} // namespace platform
