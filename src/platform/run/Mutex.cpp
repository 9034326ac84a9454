// How waiting works, and how debug builds find locks taken against the order.
#include "platform/run/Mutex.h"

#include <cstdio>
#include <cstdlib>

namespace platform {

namespace {

struct Held {
    const void* mutex;
    LockRank rank;
};

// Plain memory, so that it can be used while a thread ends.
constexpr int kMostHeld = 64;
thread_local Held held[kMostHeld];
thread_local int heldCount = 0;

bool holds(const void* mutex)
{
    for (int i = 0; i < heldCount; ++i)
        if (held[i].mutex == mutex)
            return true;
    return false;
}

} // namespace

void lockorder::willLock(const void* mutex, LockRank rank) noexcept
{
    if (rank == LockRank::unranked || holds(mutex))
        return;
    for (int i = 0; i < heldCount; ++i)
        if (held[i].rank > rank) {
            std::fprintf(stderr, "lock order: rank %d taken while rank %d is held\n", static_cast<int>(rank),
                static_cast<int>(held[i].rank));
            std::abort();
        }
}

void lockorder::didLock(const void* mutex, LockRank rank) noexcept
{
    if (rank == LockRank::unranked)
        return;
    if (heldCount == kMostHeld) {
        std::fprintf(stderr, "lock order: more than %d locks are held\n", kMostHeld);
        std::abort();
    }
    held[heldCount++] = {mutex, rank};
}

void lockorder::willUnlock(const void* mutex, LockRank rank) noexcept
{
    if (rank == LockRank::unranked)
        return;
    for (int i = heldCount; i-- > 0;)
        if (held[i].mutex == mutex) {
            for (--heldCount; i < heldCount; ++i)
                held[i] = held[i + 1];
            return;
        }
}

// The mutex is given to the condition locked and comes back locked, so its rank stays noted throughout.
void Condition::wait(Mutex& mutex)
{
    std::unique_lock lock(mutex._native, std::adopt_lock);
    _native.wait(lock);
    lock.release();
}

void Condition::waitFor(Mutex& mutex, double seconds)
{
    std::unique_lock lock(mutex._native, std::adopt_lock);
    _native.wait_for(lock, std::chrono::duration<double>(seconds));
    lock.release();
}

} // namespace platform
