// The locks that every public call runs under.
#pragma once

#include "core/ZRExport.h"
#include "platform/run/Mutex.h"

#include <exception>

/// The global lock as the compiler sees it: clang refuses code that calls an `nts_` operation without it.
///
/// Ownership: one, static.
/// Threads:   constant; it holds nothing, the functions below lock.
/// Errors:    none.
class ZR_CAPABILITY("global lock") ZRGlobalLock { };
ZR_EXPORT extern const ZRGlobalLock zrGlobalLock;

/// Behind a declaration: the caller holds the global lock. Behind the brackets of a lambda: it is called with
/// the lock held.
#define ZR_NTS ZR_REQUIRES(zrGlobalLock)

/// Says that the lock is held where only an argument, or the way of being called, tells so. It checks
/// nothing.
inline void zrGlobalLockIsHeld() ZR_ASSERT_CAPABILITY(zrGlobalLock) { }

// Three recursive mutexes. `file` and `line` say where the call stands and serve the log lines under
// __ZRLockDebug only.
//
// All of them belong to the process that locked one first. In a child forked from it, whose other threads are
// gone and whose locks may be held for ever, locking and trying raise ZRForkedProcess and unlocking does
// nothing. A child of a process that never locked anything is free to begin.

/// Guards the roster's context, its caches and its records. At each outermost lock the hooks of
/// `ZRAddLockHook` run first.
ZR_EXPORT void _ZR_Lock(const char* file, long line) ZR_ACQUIRE(zrGlobalLock);
ZR_EXPORT void _ZR_Unlock(const char* file, long line) ZR_RELEASE(zrGlobalLock);
/// Does not wait. Answers whether the lock was taken, except under __ZRLockDebug: there the sense is
/// reversed, and true means that another thread has it. Callers have come to expect that of a debug run, so
/// it stays.
ZR_EXPORT bool _ZR_TRY_Lock(const char* file, long line);

/// Guards the context of mail recents. Never taken while the global lock is held.
ZR_EXPORT void _ZR_MR_Lock(const char* file, long line);
ZR_EXPORT void _ZR_MR_Unlock(const char* file, long line);

/// Guards the certificate errors that the user chose to ignore.
ZR_EXPORT void _ZR_IgnoreCertErrors_Lock();
ZR_EXPORT void _ZR_IgnoreCertErrors_Unlock();

/// Whether this thread holds the global lock: for `nts_` operations that check their caller.
ZR_EXPORT bool _ZR_IsLockedByThisThread();

/// Raised by a lock in a child process that was forked after the library was used.
///
/// Ownership: none.
/// Threads:   any.
/// Errors:    none.
class ZR_EXPORT ZRForkedProcess : public std::exception {
public:
    ~ZRForkedProcess() override;
    const char* what() const noexcept override;
};

/// Called under the global lock, before the operation that took it. It must not take any lock but may call
/// `nts_` code.
using ZRLockHook = void (*)() noexcept;

/// Adds a hook for the life of the process; adding one twice does nothing. At most 8.
ZR_EXPORT void ZRAddLockHook(ZRLockHook hook);

/// Holds the global lock for a scope.
///
/// Ownership: none.
/// Threads:   one.
/// Errors:    raises ZRForkedProcess as `_ZR_Lock` does.
class ZR_SCOPED_CAPABILITY ZRGlobalLockScope {
public:
    explicit ZRGlobalLockScope(const char* file = __builtin_FILE(), long line = __builtin_LINE())
        ZR_ACQUIRE(zrGlobalLock)
        : _file(file), _line(line)
    {
        _ZR_Lock(_file, _line);
    }
    ~ZRGlobalLockScope() ZR_RELEASE() { _ZR_Unlock(_file, _line); }
    ZRGlobalLockScope(const ZRGlobalLockScope&) = delete;
    ZRGlobalLockScope& operator=(const ZRGlobalLockScope&) = delete;

private:
    const char* const _file;
    const long _line;
};
