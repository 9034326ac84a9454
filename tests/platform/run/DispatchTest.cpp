// Waiting for blocks and queues with a limit.
#include "platform/run/Dispatch.h"

#include "platform/run/Clock.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <thread>

using namespace platform;

namespace {

TEST(DispatchTest, RunsAtOnceOnTheMainThreadAndLaterElsewhere)
{
    auto& queue = MainQueue::shared();
    queue.fileDescriptor();
    int ran = 0;
    zr_dispatch_main([&] { ++ran; });
    zr_dispatch_main_sync([&] { ++ran; });
    EXPECT_EQ(ran, 2);
    std::thread([&] { zr_dispatch_main([&] { ++ran; }); }).join();
    EXPECT_EQ(ran, 2);
    queue.drain();
    EXPECT_EQ(ran, 3);
    queue.abandon();
}

TEST(DispatchTest, WaitsForABlockThatEndsInTime)
{
    std::thread::id thread;
    EXPECT_TRUE(zr_dispatch_sync_timeout(
        concurrentQueue(), zr_dispatch_interval_to_time(60), [&] { thread = std::this_thread::get_id(); }));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(DispatchTest, LeavesABlockThatDoesNotEndInTimeToItself)
{
    const auto queue = makeRef<OperationQueue>(1);
    const auto release = std::make_shared<std::latch>(1);
    EXPECT_FALSE(
        zr_dispatch_sync_timeout(*queue, zr_dispatch_interval_to_time(0), [release] { release->wait(); }));
    EXPECT_EQ(queue->operationCount(), 1U);
    release->count_down();
    queue->waitUntilAllFinished();
    EXPECT_EQ(queue->operationCount(), 0U);
}

TEST(DispatchTest, CountsDispatchTimeInNanoseconds)
{
    ManualClock clock;
    const ClockScope scope(clock);
    clock.advance(2);
    EXPECT_EQ(zr_dispatch_interval_to_time(0.5), ZRDispatchTime{2'500'000'000});
}

TEST(DispatchTest, FindsAnEmptyQueueEmptyUnlessTheTimeHasPassed)
{
    const auto queue = makeRef<OperationQueue>(1);
    EXPECT_TRUE(zr_dispatch_wait_for_operation_queue(*queue, 60));
    EXPECT_FALSE(zr_dispatch_wait_for_operation_queue(*queue, 0));
    queue->setSuspended(true);
    queue->async([] {});
    EXPECT_FALSE(zr_dispatch_wait_for_operation_queue(*queue, 0.01));
    queue->setSuspended(false);
    EXPECT_TRUE(zr_dispatch_wait_for_operation_queue(*queue, 60));
}

// An operation that needs the main thread, while the main thread waits for the operation.
TEST(DispatchTest, ServesTheMainQueueWhileTheMainThreadWaits)
{
    MainQueue::shared().fileDescriptor();
    const auto queue = makeRef<OperationQueue>(1);
    std::thread::id thread;
    queue->async([&] { zr_dispatch_main_sync([&] { thread = std::this_thread::get_id(); }); });
    EXPECT_TRUE(zr_dispatch_wait_for_operation_queue(*queue, 60));
    EXPECT_EQ(thread, std::this_thread::get_id());
    MainQueue::shared().abandon();
}

} // namespace
