// A stack without a lock that is turned round when it is drained.
#include "core/ReleasedHandles.h"

#include "platform/run/NeverDestroyed.h"

#include <utility>

namespace {

/// The lock calls its hooks while it is held, which the pointer to one cannot say.
void drainShared() noexcept ZR_NO_THREAD_SAFETY_ANALYSIS { ReleasedHandles::shared().drain(); }

} // namespace

ReleasedHandles& ReleasedHandles::shared()
{
    static const platform::NeverDestroyed<ReleasedHandles> list;
    static const bool isDrained = (ZRAddLockHook(drainShared), true);
    static_cast<void>(isDrained);
    return *list;
}

void ReleasedHandles::push(ReleasedHandle& handle) noexcept
{
    handle._next = _last.load(std::memory_order_relaxed);
    while (!_last.compare_exchange_weak(
        handle._next, &handle, std::memory_order_release, std::memory_order_relaxed)) { }
}

void ReleasedHandles::drain() noexcept
{
    while (!isEmpty()) {
        // Taking all at once leaves no node behind that another thread could be looking at.
        ReleasedHandle* newest = _last.exchange(nullptr, std::memory_order_acquire);
        ReleasedHandle* oldest = nullptr;
        while (newest)
            oldest = std::exchange(newest, std::exchange(newest->_next, oldest));
        while (oldest)
            std::exchange(oldest, oldest->_next)->finishRelease();
    }
}
