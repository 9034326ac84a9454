// Which process may open, import into or write a roster's store just now.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRSourcePlace.h"
#include "platform/run/Mutex.h"

#include <cstdint>
#include <functional>
#include <string>

/// What the holder means to do. Only a writer leaves a marker file.
enum ZRFileLockType : std::int32_t { READ_ONLY_FILELOCK = 0, READ_WRITE_FILELOCK = 1 };

/// A mutex that one thread may take and another give back, which std::mutex forbids: a file lock is acquired
/// and released in one process, but not always on one thread.
///
/// Ownership: neither copied nor moved.
/// Threads:   any; not recursive.
/// Errors:    none.
class ZR_EXPORT ZRFileLockMutex {
public:
    void lock();
    bool tryLock();
    void unlock();

private:
    platform::Mutex _monitor;
    platform::Condition _wasFreed;
    bool _isTaken ZR_GUARDED_BY(_monitor) = false;
};

/// The lock of one roster directory between processes, as this process sees it.
///
/// It outlives no holder: the kernel drops its lock with the process, and on a volume without kernel locks an
/// empty marker file counts for as long as its age is below the time-out.
///
/// Ownership: one record a lock file and process (`ZRFileLockForPath`): two would wait for each other for
/// ever. Threads:   `mutex` guards the other fields from acquire to release. Errors:    told on standard
/// error while `debug` is on, apart from the answers.
struct ZRFileLock {
    /// The marker of a writer, such as "DIRECTORY/.database.lock".
    std::string path;
    /// The file that bears the kernel lock: `path` with "N". It stays on the disk.
    std::string pathN;
    /// The descriptor of `pathN`, -1 when not held.
    std::int32_t lockfd = -1;
    /// The volume has no kernel locks, or another process does without: from now on the marker alone counts.
    bool useOldMechanism = false;
    bool firstAcquireDone = false;
    /// Seconds, for the marker alone.
    std::int32_t timeout = 160;
    bool debug = false;
    /// Held from acquire until release.
    ZRFileLockMutex mutex;
};

/// Fills the record; a time-out of 0 means 160 seconds. Nothing on the disk is touched.
ZR_EXPORT void ZRInitFileLock(ZRFileLock& lock, const std::string& path, std::int32_t timeout, bool debug);

/// Waits for the lock, without a bound while its holder lives. False, with errno set, when the lock file
/// cannot be used. On a volume without kernel locks the waits are 2, 3, 4 seconds and so on up to the
/// time-out; after it a reader is refused and a writer goes ahead.
ZR_EXPORT bool ZRAcquireFileLock(ZRFileLock& lock, ZRFileLockType type, const char* file, long line);

/// Ends what an acquire of the same type began.
ZR_EXPORT void ZRReleaseFileLock(ZRFileLock& lock, ZRFileLockType type, const char* file, long line);

/// Shows those who judge by the marker's age that its holder lives.
ZR_EXPORT void ZRUpdateFileLockTime(const ZRFileLock& lock);

/// Whether some thread of this process holds the lock.
ZR_EXPORT bool ZRHaveFileLock(ZRFileLock& lock, const char* file, long line);

/// Removes the marker.
ZR_EXPORT void ZRDeleteFileLock(const ZRFileLock& lock);

/// Forgets the paths of a lock that nobody holds; the record can be filled anew.
ZR_EXPORT void ZRFreeFileLock(ZRFileLock& lock);

/// The name of the marker without its directory.
ZR_EXPORT std::string ZRLockBaseName(const ZRFileLock& lock);

/// The lock of the shared roster, filled when that is made.
extern ZR_EXPORT ZRFileLock& __filelock;

/// The record of this process for that marker file: `__filelock` for the shared roster's, else one made at
/// the first call, which lives as long as the process.
ZRFileLock& ZRFileLockForPath(const std::string& path);

/// Asked with the path before each kernel lock: an error number refuses it, 0 lets it pass. An empty function
/// ends that. Tests only, one thread.
void ZRSetKernelLockFault(std::function<int(const std::string& pathN)> fault);

/// Holds a file lock as a writer for a scope.
///
/// Ownership: borrows the record; without one there is nothing to hold, which counts as held.
/// Threads:   one, which holds the global lock.
/// Errors:    see `isHeld`.
class ZRFileLockScope {
public:
    explicit ZRFileLockScope(ZRFileLock* lock, ZRSourcePlace where = ZRSourcePlace::current())
        : _lock(lock)
        , _where(where)
        , _isHeld(!lock || ZRAcquireFileLock(*lock, READ_WRITE_FILELOCK, where.file, where.line))
    {
    }
    ~ZRFileLockScope()
    {
        if (_lock && _isHeld)
            ZRReleaseFileLock(*_lock, READ_WRITE_FILELOCK, _where.file, _where.line);
    }
    ZRFileLockScope(const ZRFileLockScope&) = delete;
    ZRFileLockScope& operator=(const ZRFileLockScope&) = delete;

    bool isHeld() const { return _isHeld; }

private:
    ZRFileLock* const _lock;
    const ZRSourcePlace _where;
    const bool _isHeld;
};
