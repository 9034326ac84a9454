// How a caller waits for a block or a queue with a limit.
#include "platform/run/Dispatch.h"

#include "platform/run/Clock.h"

#include <cmath>
#include <memory>

using platform::Clock;
using platform::Lock;
using platform::MainQueue;

namespace {

// The longest turn of the run loop while waiting for a queue.
constexpr double kTurn = 0.5;

} // namespace

void zr_dispatch_main(platform::Block block)
{
    if (MainQueue::shared().isMainThread())
        block();
    else
        MainQueue::shared().async(std::move(block));
}

void zr_dispatch_main_sync(platform::Block block) { MainQueue::shared().sync(std::move(block)); }

void zr_dispatch_concurrent(platform::Block block) { platform::dispatchConcurrent(std::move(block)); }

bool zr_dispatch_sync_timeout(platform::Executor& queue, ZRDispatchTime timeout, platform::Block block)
{
    // Shared with the block, which may end long after this call.
    struct Group {
        platform::Mutex mutex;
        platform::Condition left;
        bool isDone ZR_GUARDED_BY(mutex) = false;
    };
    const auto group = std::make_shared<Group>();
    queue.async([group, work = std::move(block)] {
        platform::runLogged(work);
        Lock lock(group->mutex);
        group->isDone = true;
        group->left.notifyAll();
    });
    const double deadline = static_cast<double>(timeout) * 1e-9;
    Lock lock(group->mutex);
    while (!group->isDone)
        if (!Clock::current().wait(group->left, group->mutex, deadline))
            return group->isDone;
    return true;
}

ZRDispatchTime zr_dispatch_interval_to_time(double seconds)
{
    return ZRDispatchTime{std::llround((Clock::current().monotonic() + seconds) * 1e9)};
}

bool zr_dispatch_wait_for_operation_queue(platform::OperationQueue& queue, double timeout)
{
    const auto& clock = Clock::current();
    const double deadline = clock.monotonic() + timeout;
    auto& mainQueue = MainQueue::shared();
    const bool servesMain = mainQueue.isMainThread();
    if (servesMain)
        queue.whenEmpty([] { MainQueue::shared().async([] {}); });
    while (clock.monotonic() < deadline && queue.operationCount() > 0) {
        const double turn = std::min(kTurn, clock.realSecondsUntil(deadline));
        if (servesMain)
            mainQueue.runOnce(turn);
        else
            queue.waitUntilFinished(turn);
    }
    return clock.monotonic() < deadline && queue.operationCount() == 0;
}
