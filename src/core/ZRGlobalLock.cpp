// The three process-wide mutexes, their log lines and the hooks of the outermost lock.
#include "core/ZRGlobalLock.h"

#include "core/ZRForkedChild.h"
#include "core/ZRLog.h"
#include "core/ZRProfile.h"
#include "platform/run/Clock.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"

#include <array>
#include <atomic>
#include <cassert>
#include <cstddef>

#include <unistd.h>

using platform::LockRank;
using platform::NeverDestroyed;
using platform::RecursiveMutex;

namespace {

/// Whether the locks were made: whoever only asks must not make them.
std::atomic<bool> areLocksMade = false;

/// Everything behind the locks. Made by the first lock of the process, so that a program may fork its workers
/// first and use the library in each.
struct Locks {
    Locks() { areLocksMade.store(true, std::memory_order_release); }

    RecursiveMutex global{LockRank::global};
    RecursiveMutex mailRecents{LockRank::mailRecents};
    RecursiveMutex ignoreCertErrors;
    platform::ProcessMark process;
    /// How many lock requests the debug log has seen.
    std::atomic<int> lockCount = 0;
};

Locks& locks()
{
    static const NeverDestroyed<Locks> made;
    return *made;
}

/// The locks, or ZRForkedProcess.
Locks& usableLocks()
{
    Locks& all = locks();
    if (all.process.isForeign())
        throw ZRForkedProcess();
    return all;
}

constexpr std::size_t kMostHooks = 8;
std::array<std::atomic<ZRLockHook>, kMostHooks> hooks;

/// How often this thread has locked the global mutex.
thread_local int globalDepth = 0;

void globalLockTaken()
{
    if (++globalDepth > 1)
        return;
    for (const std::atomic<ZRLockHook>& slot : hooks) {
        const ZRLockHook hook = slot.load(std::memory_order_acquire);
        if (!hook)
            break;
        hook();
    }
}

bool isDebugging() { return __ZRLockDebug.load(std::memory_order_relaxed); }

std::string threadName() { return fmt::format("<thread {}>", ::gettid()); }

/// The end of most log lines: where the call stands.
std::string place(const char* file, long line)
{
    return fmt::format("\tfile: '{}'\t\tline: {} in thread: {}", file ? file : "", line, threadName());
}

/// Locks `mutex` and logs the request and the grant, each with `suffix`.
void lockLogged(Locks& all, RecursiveMutex& mutex, std::string_view what, std::string_view gapBeforePlace,
    std::string_view suffix) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    const int number = ++all.lockCount;
    const double requested = platform::Clock::current().monotonic();
    platform::log(fmt::format("ZRRoster {} lock {} <requested>{}{}", what, number, gapBeforePlace, suffix));
    mutex.lock();
    const double waited = platform::Clock::current().monotonic() - requested;
    platform::log(fmt::format("ZRRoster {} lock {} <granted: {:3.3f}s>{}", what, number, waited, suffix));
}

} // namespace

ZRForkedProcess::~ZRForkedProcess() = default;

const char* ZRForkedProcess::what() const noexcept
{
    return "The roster was used before this process was forked; a forked process must execute a program of "
           "its "
           "own before it uses the roster";
}

bool zrIsForkedChild() noexcept
{
    return areLocksMade.load(std::memory_order_acquire) && locks().process.isForeign();
}

const ZRGlobalLock zrGlobalLock;

void _ZR_Lock(const char* file, long line) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = usableLocks();
    const double requested = ZRProfile::now();
    if (isDebugging())
        lockLogged(all, all.global, "global API", "", place(file, line));
    else
        all.global.lock();
    globalLockTaken();
    if (globalDepth == 1)
        ZRProfile::lockWasTaken(file, line, requested);
}

void _ZR_Unlock(const char* file, long line) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = locks();
    if (all.process.isForeign())
        return;
    if (isDebugging())
        platform::log(
            fmt::format("ZRRoster global API unlock {}{}", all.lockCount.load(), place(file, line)));
    if (--globalDepth == 0)
        ZRProfile::lockIsGivenBack();
    all.global.unlock();
}

bool _ZR_TRY_Lock(const char* file, long line) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = usableLocks();
    const bool debugging = isDebugging();
    if (debugging)
        platform::log(fmt::format("ZRRoster TRY lock{}", place(file, line)));
    const bool isTaken = all.global.tryLock();
    if (isTaken)
        globalLockTaken();
    if (isTaken && globalDepth == 1)
        ZRProfile::lockWasTaken(file, line, ZRProfile::now());
    if (!debugging)
        return isTaken;
    const bool reportedAsGranted = !isTaken;
    const int number = reportedAsGranted ? ++all.lockCount : all.lockCount.load() + 1;
    platform::log(fmt::format("ZRRoster global API TRY lock {} <requested & {}>{}", number,
        reportedAsGranted ? "granted" : "denied", place(file, line)));
    return reportedAsGranted;
}

void _ZR_MR_Lock(const char* file, long line) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = usableLocks();
    if (isDebugging())
        lockLogged(all, all.mailRecents, "ZRMailRecent", " ", place(file, line));
    else
        all.mailRecents.lock();
}

void _ZR_MR_Unlock(const char* file, long line) ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = locks();
    if (all.process.isForeign())
        return;
    if (isDebugging())
        platform::log(
            fmt::format("ZRRoster ZRMailRecent unlock {}{}", all.lockCount.load(), place(file, line)));
    all.mailRecents.unlock();
}

void _ZR_IgnoreCertErrors_Lock() ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = usableLocks();
    if (isDebugging())
        lockLogged(all, all.ignoreCertErrors, "__ZRIgnoreCertErrorsLock", "", " in thread: " + threadName());
    else
        all.ignoreCertErrors.lock();
}

void _ZR_IgnoreCertErrors_Unlock() ZR_NO_THREAD_SAFETY_ANALYSIS
{
    Locks& all = locks();
    if (!all.process.isForeign())
        all.ignoreCertErrors.unlock();
}

bool _ZR_IsLockedByThisThread() { return globalDepth > 0 && !locks().process.isForeign(); }

void ZRAddLockHook(ZRLockHook hook)
{
    for (std::atomic<ZRLockHook>& slot : hooks) {
        ZRLockHook there = nullptr;
        if (slot.compare_exchange_strong(there, hook, std::memory_order_acq_rel) || there == hook)
            return;
    }
    assert(false && "more lock hooks than places");
}
