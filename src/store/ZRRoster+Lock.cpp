// The locks of a roster: the global mutex first, then the context, and the count that keeps a writer from
// being killed; and the one between processes.
#include "core/ZRGlobalLock.h"
#include "platform/run/SuddenTermination.h"
#include "store/ZRFileLock.h"
#include "store/ZRRosterState.h"

// The compiler cannot follow these five: which context it is is known only when they run.

void ZRRoster::zrGlobalAPILock(
    bool togglingSuddenTermination, ZRSourcePlace where) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    if (togglingSuddenTermination)
        platform::suddentermination::disable();
    try {
        _ZR_Lock(where.file, where.line);
    } catch (...) {
        if (togglingSuddenTermination)
            platform::suddentermination::enable();
        throw;
    }
    if (_state->context)
        _state->context->lock();
    _state->lockedContexts.push_back(_state->context);
}

void ZRRoster::zrGlobalAPIUnlock(
    bool togglingSuddenTermination, ZRSourcePlace where) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    // The context of the lock, not of now: an operation may have opened or replaced it.
    const auto context = std::move(_state->lockedContexts.back());
    _state->lockedContexts.pop_back();
    if (context)
        context->unlock();
    _ZR_Unlock(where.file, where.line);
    if (togglingSuddenTermination)
        platform::suddentermination::enable();
}

bool ZRRoster::zrGlobalAPITryLock(
    bool togglingSuddenTermination, ZRSourcePlace where) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    if (!_ZR_TRY_Lock(where.file, where.line))
        return false;
    if (const auto& context = _state->context; context && !context->tryLock()) {
        _ZR_Unlock(where.file, where.line);
        return false;
    }
    _state->lockedContexts.push_back(_state->context);
    if (togglingSuddenTermination)
        platform::suddentermination::disable();
    return true;
}

void ZRRoster::zrGlobalMailRecentAPILock(ZRSourcePlace where) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    _ZR_MR_Lock(where.file, where.line);
    if (const auto& context = _state->mailRecentsContext)
        context->lock();
}

void ZRRoster::zrGlobalMailRecentAPIUnlock(ZRSourcePlace where) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    if (const auto& context = _state->mailRecentsContext)
        context->unlock();
    _ZR_MR_Unlock(where.file, where.line);
}

ZRFileLock& ZRRoster::zrFileLock() { return __filelock; }

ZRFileLock* ZRRoster::nts_FileLock()
{
    return _state->directory.empty() || isMemoryBacked() ? nullptr : &ZRFileLockForPath(rosterLockFile());
}
