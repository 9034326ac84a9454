// Which process may open, import into or write a roster's store just now.
#include "store/ZRFileLock.h"

#include "platform/files/UserDefaults.h"
#include "platform/run/Clock.h"
#include "platform/run/NeverDestroyed.h"
#include "store/ZRFileLockSchemes.h"

#include <cerrno>
#include <ctime>
#include <map>
#include <memory>
#include <utility>

#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr std::int32_t defaultTimeout = 160;

struct Locks {
    platform::Mutex monitor;
    std::map<std::string, std::unique_ptr<ZRFileLock>> byPath ZR_GUARDED_BY(monitor);
};

Locks& locks()
{
    static const platform::NeverDestroyed<Locks> all;
    return *all;
}

/// As `ctime` has it, without its newline.
std::string timeText()
{
    char text[32] = "";
    const auto now = static_cast<std::time_t>(platform::Clock::current().now());
    return ctime_r(&now, text) ? std::string(text, 24) : std::string();
}

const char* nameOf(ZRFileLockType type)
{
    return type == READ_WRITE_FILELOCK ? "READ_WRITE_FILELOCK" : "READ_ONLY_FILELOCK";
}

void tell(const ZRFileLock& lock, const char* function, const char* what, const char* about, const char* file,
    long line)
{
    ZRFileLockNote(lock, "{} {}:\t{} {} '{}':{}->'{}'", function, timeText(), what, about, file, line,
        ZRLockBaseName(lock));
}

// A lock begins with the new scheme, and leaves it only for good.
bool acquire(ZRFileLock& lock, ZRFileLockType type)
{
    const bool isFirst = !std::exchange(lock.firstAcquireDone, true);
    return isFirst || !lock.useOldMechanism ? __ZRNewAcquireFileLock(lock, type)
                                            : __ZROldAcquireLock(lock, type);
}

} // namespace

ZRFileLock& __filelock = *new ZRFileLock;

void ZRFileLockMutex::lock()
{
    const platform::Lock guard(_monitor);
    while (_isTaken)
        _wasFreed.wait(_monitor);
    _isTaken = true;
}

bool ZRFileLockMutex::tryLock()
{
    const platform::Lock guard(_monitor);
    return !std::exchange(_isTaken, true);
}

void ZRFileLockMutex::unlock()
{
    const platform::Lock guard(_monitor);
    _isTaken = false;
    _wasFreed.notifyOne();
}

void ZRInitFileLock(ZRFileLock& lock, const std::string& path, std::int32_t timeout, bool debug)
{
    lock.lockfd = -1;
    lock.useOldMechanism = lock.firstAcquireDone = false;
    lock.path = path;
    lock.pathN = path + "N";
    lock.timeout = timeout == 0 ? defaultTimeout : timeout;
    lock.debug = debug;
}

bool ZRAcquireFileLock(ZRFileLock& lock, ZRFileLockType type, const char* file, long line)
{
    lock.mutex.lock();
    tell(lock, __func__, "locking", nameOf(type), file, line);
    bool isHeld = false;
    try {
        isHeld = acquire(lock, type);
    } catch (...) {
        lock.mutex.unlock();
        throw;
    }
    const int code = errno;
    if (!isHeld)
        lock.mutex.unlock();
    errno = code;
    return isHeld;
}

// The mutex is free before the files are: the next thread of this process may already wait for them, so it
// finds the record as that of a lock that is not held.
void ZRReleaseFileLock(ZRFileLock& lock, ZRFileLockType type, const char* file, long line)
{
    const bool usesOldMechanism = lock.useOldMechanism;
    const int descriptor = std::exchange(lock.lockfd, -1);
    lock.mutex.unlock();
    tell(lock, __func__, "releasing", nameOf(type), file, line);
    if (usesOldMechanism)
        __ZROldReleaseFileLock(lock, type);
    else
        __ZRNewReleaseFileLock(lock, type, descriptor);
}

void ZRUpdateFileLockTime(const ZRFileLock& lock) { utimes(lock.path.c_str(), nullptr); }

bool ZRHaveFileLock(ZRFileLock& lock, const char* file, long line)
{
    const bool isFree = lock.mutex.tryLock();
    if (isFree)
        lock.mutex.unlock();
    tell(lock, __func__, "have file lock", isFree ? "NO" : "YES", file, line);
    return !isFree;
}

void ZRDeleteFileLock(const ZRFileLock& lock) { unlink(lock.path.c_str()); }

void ZRFreeFileLock(ZRFileLock& lock)
{
    lock.path.clear();
    lock.pathN.clear();
}

std::string ZRLockBaseName(const ZRFileLock& lock) { return lock.path.substr(lock.path.rfind('/') + 1); }

ZRFileLock& ZRFileLockForPath(const std::string& path)
{
    auto& all = locks();
    const platform::Lock guard(all.monitor);
    if (path == __filelock.path)
        return __filelock;
    auto& lock = all.byPath[path];
    if (!lock) {
        lock = std::make_unique<ZRFileLock>();
        ZRInitFileLock(*lock, path, 0, platform::UserDefaults::standard().boolForKey("ZRFileLockDebug"));
    }
    return *lock;
}
