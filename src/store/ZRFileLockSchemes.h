// The two ways in which a file lock is held on the disk.
#pragma once

#include "core/ZRLog.h"
#include "store/ZRFileLock.h"

#include <utility>

/// By a kernel lock on `pathN`; a writer also puts its process id into `path`. Where that cannot be done, the
/// record changes to the old scheme for good.
bool __ZRNewAcquireFileLock(ZRFileLock& lock, ZRFileLockType type);
/// Gives back what `descriptor` holds, which may be -1.
void __ZRNewReleaseFileLock(const ZRFileLock& lock, ZRFileLockType type, int descriptor);

/// By an empty `path`, of which only the age is known.
bool __ZROldAcquireLock(const ZRFileLock& lock, ZRFileLockType type);
void __ZROldReleaseFileLock(const ZRFileLock& lock, ZRFileLockType type);

/// Tells standard error what happens, while `debug` is on.
template <class... Arguments>
void ZRFileLockNote(const ZRFileLock& lock, fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    if (lock.debug)
        ZRPerfLogLine(fmt::format(format, std::forward<Arguments>(arguments)...));
}
