// How several processes of one user take turns by a name that they agree on.
#pragma once

#include "core/ZRExport.h"
#include "platform/files/NamedClaim.h"
#include "platform/value/Object.h"

#include <optional>
#include <string>
#include <string_view>

/// A lock between processes: holding it is holding its name. It ends with its process.
///
/// It has nothing to do with the lock of a roster's files, and no order among the holders.
///
/// Ownership: whoever lets go of a lock that is still held gives the name back, and is told off in the log.
/// Threads:   one at a time.
/// Errors:    where names cannot be claimed at all, nobody gets the lock.
class ZR_EXPORT ZRProcessSharedLock : public platform::Object {
public:
    /// On the name that all use who have none of their own.
    ZRProcessSharedLock();
    explicit ZRProcessSharedLock(std::string_view identifier);
    static platform::Ref<ZRProcessSharedLock> initWithIdentifier(std::string_view identifier);
    ~ZRProcessSharedLock() override;

    /// Takes the lock, or counts one more use of it by this object. Does not wait.
    /// A failed attempt leaves the count at 1, which nobody but the destructor sees.
    bool tryLock();
    /// Waits for it without a bound.
    void lock();
    /// Tries until the calendar shows `limit`, in seconds since 1970; not at all when it already does.
    bool lockBeforeDate(double limit);
    /// Takes one use back; the last one frees the name.
    void unlock();

private:
    const std::string mIdentifier;
    std::optional<platform::NamedClaim> mPort;
    unsigned mLockCount = 0;
};
