// How threads exclude each other: mutexes the compiler can check, with an order that debug builds check.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#if defined(__clang__)
#define ZR_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ZR_THREAD_ATTRIBUTE(x)
#endif

#define ZR_CAPABILITY(name) ZR_THREAD_ATTRIBUTE(capability(name))
#define ZR_SCOPED_CAPABILITY ZR_THREAD_ATTRIBUTE(scoped_lockable)
#define ZR_GUARDED_BY(mutex) ZR_THREAD_ATTRIBUTE(guarded_by(mutex))
#define ZR_PT_GUARDED_BY(mutex) ZR_THREAD_ATTRIBUTE(pt_guarded_by(mutex))
#define ZR_REQUIRES(...) ZR_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZR_EXCLUDES(...) ZR_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ZR_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZR_RELEASE(...) ZR_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZR_TRY_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define ZR_ASSERT_CAPABILITY(...) ZR_THREAD_ATTRIBUTE(assert_capability(__VA_ARGS__))
#define ZR_RETURN_CAPABILITY(mutex) ZR_THREAD_ATTRIBUTE(lock_returned(mutex))
#define ZR_NO_THREAD_SAFETY_ANALYSIS ZR_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace platform {

/// Where a mutex stands in the one order in which mutexes may be nested: a thread that holds one may take
/// only those of its rank or below it in this list. Users of one rank keep an order of their own.
enum class LockRank : int {
    unranked = 0,
    mailRecents = 100,
    global = 200,
    file = 300,
    context = 400,
    coordinator = 500,
    queue = 800,
    leaf = 900,
};

/// The debug check behind LockRank. Mutexes call it; nobody else needs to.
///
/// Ownership: one short list a thread.
/// Threads:   each thread sees its own list.
/// Errors:    a mutex taken against the order ends the process with a message on standard error.
namespace lockorder {
/// Ends the process when this thread holds a mutex that ranks after `rank`, unless it holds `mutex` itself.
void willLock(const void* mutex, LockRank rank) noexcept;
void didLock(const void* mutex, LockRank rank) noexcept;
void willUnlock(const void* mutex, LockRank rank) noexcept;
} // namespace lockorder

/// A recursive mutex that its holder takes again without a call: operations on records nest four deep, and
/// the standard one pays for each level as for the first.
///
/// Ownership: neither copied nor moved.
/// Threads:   any. Whoever locked unlocks.
/// Errors:    none.
class ReentrantMutex {
public:
    void lock()
    {
        if (!isMine()) {
            _mutex.lock();
            _holder.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++_depth;
    }

    bool try_lock()
    {
        if (!isMine()) {
            if (!_mutex.try_lock())
                return false;
            _holder.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++_depth;
        return true;
    }

    void unlock()
    {
        if (--_depth > 0)
            return;
        _holder.store(std::thread::id(), std::memory_order_relaxed);
        _mutex.unlock();
    }

private:
    /// Another thread's id is never ours, so a stale one is as good as the present one.
    bool isMine() const { return _holder.load(std::memory_order_relaxed) == std::this_thread::get_id(); }

    std::mutex _mutex;
    std::atomic<std::thread::id> _holder;
    int _depth = 0;
};

/// A mutex of either kind, with a rank.
///
/// Ownership: neither copied nor moved; its members to guard stand directly below it.
/// Threads:   any. Whoever locked unlocks.
/// Errors:    none; see `LockRank` for what debug builds refuse.
template <class Native>
class ZR_CAPABILITY("mutex") RankedMutex {
public:
    explicit RankedMutex(LockRank rank = LockRank::unranked) : _rank(rank) { }
    RankedMutex(const RankedMutex&) = delete;
    RankedMutex& operator=(const RankedMutex&) = delete;

    void lock() ZR_ACQUIRE()
    {
#ifndef NDEBUG
        lockorder::willLock(this, _rank);
#endif
        _native.lock();
#ifndef NDEBUG
        lockorder::didLock(this, _rank);
#endif
    }

    /// Does not wait, so it may be tried in any order.
    bool tryLock() ZR_TRY_ACQUIRE(true)
    {
        const bool locked = _native.try_lock();
#ifndef NDEBUG
        if (locked)
            lockorder::didLock(this, _rank);
#endif
        return locked;
    }

    void unlock() ZR_RELEASE()
    {
#ifndef NDEBUG
        lockorder::willUnlock(this, _rank);
#endif
        _native.unlock();
    }

    LockRank rank() const { return _rank; }

private:
    friend class Condition;
    Native _native;
    const LockRank _rank;
};

/// Locked once by one thread.
using Mutex = RankedMutex<std::mutex>;
/// Locked any number of times by one thread: a "monitor".
using RecursiveMutex = RankedMutex<ReentrantMutex>;

/// Holds a mutex for a scope.
///
/// Ownership: borrows the mutex.
/// Threads:   one.
/// Errors:    none.
template <class AnyMutex>
class ZR_SCOPED_CAPABILITY Lock {
public:
    explicit Lock(AnyMutex& mutex) ZR_ACQUIRE(mutex) : _mutex(mutex) { _mutex.lock(); }
    ~Lock() ZR_RELEASE()
    {
        if (_held)
            _mutex.unlock();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /// Lets go before the scope ends, to call out.
    void unlock() ZR_RELEASE()
    {
        _held = false;
        _mutex.unlock();
    }
    /// Takes the mutex back after `unlock`.
    void lock() ZR_ACQUIRE()
    {
        _mutex.lock();
        _held = true;
    }

private:
    AnyMutex& _mutex;
    bool _held = true;
};

/// What a thread waits on while another changes what a Mutex guards.
///
/// Waiting gives the mutex free and takes it back. It may end without a reason, so the caller looks again.
///
/// Ownership: neither copied nor moved.
/// Threads:   any.
/// Errors:    none.
class Condition {
public:
    void wait(Mutex& mutex) ZR_REQUIRES(mutex);
    /// Waits for at most `seconds` of real time. Deadlines belong to `Clock::wait`.
    void waitFor(Mutex& mutex, double seconds) ZR_REQUIRES(mutex);
    void notifyOne() noexcept { _native.notify_one(); }
    void notifyAll() noexcept { _native.notify_all(); }

private:
    std::condition_variable _native;
};

} // namespace platform
