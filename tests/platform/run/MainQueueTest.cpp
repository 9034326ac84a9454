// The main queue: who serves it, in what order, and how it ends.
#include "platform/run/MainQueue.h"

#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "support/Forked.h"
#include "support/Role.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>
#include <stdexcept>
#include <thread>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

using namespace platform;
using testing::ElementsAre;

namespace {

MainQueue& queue() { return MainQueue::shared(); }

bool isReadable(int descriptor)
{
    pollfd wanted{descriptor, POLLIN, 0};
    return poll(&wanted, 1, 0) == 1;
}

/// Waits until the descriptor is readable: for what another thread or the kernel brings about.
void awaitReadable(int descriptor)
{
    pollfd wanted{descriptor, POLLIN, 0};
    ASSERT_EQ(poll(&wanted, 1, 60'000), 1);
}

/// This test's thread is the main thread, and time stands.
class AdoptedMainQueue : public testing::Test {
protected:
    AdoptedMainQueue() : scope(clock), descriptor(queue().fileDescriptor()) { queue().drain(); }
    ~AdoptedMainQueue() override
    {
        queue().drain();
        queue().abandon();
    }

    auto note(int what)
    {
        return [this, what] { ran.push_back(what); };
    }

    ManualClock clock;
    ClockScope scope;
    int descriptor;
    std::vector<int> ran;
};

// Nobody has adopted the queue: the library serves it.
TEST(ServedMainQueue, RunsWorkInOrderOnOneThreadOfItsOwn)
{
    std::vector<std::thread::id> threads;
    std::promise<void> done;
    for (int i = 0; i < 100; ++i)
        queue().async([&] { threads.push_back(std::this_thread::get_id()); });
    queue().async([&] { done.set_value(); });
    done.get_future().wait();
    EXPECT_EQ(threads.size(), 100U);
    EXPECT_THAT(threads, testing::Each(threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(ServedMainQueue, RunsANestedCallAtOnce)
{
    std::vector<int> order;
    queue().sync([&] {
        queue().async([&] { order.push_back(2); });
        queue().sync([&] { order.push_back(1); });
    });
    queue().sync([] {});
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(ServedMainQueue, RunsTimersOfTheRealClock)
{
    std::promise<void> fired;
    const auto timer = queue().after(0.001, [&] { fired.set_value(); });
    fired.get_future().wait();
}

TEST(ServedMainQueue, SurvivesABlockThatThrowsAndLogsIt)
{
    const LogCapture log;
    queue().async([] { throw std::runtime_error("spoilt"); });
    queue().sync([] {});
    EXPECT_TRUE(log.contains("spoilt"));
}

/// Adopts the queue while the first of two blocks runs. Answers whether the second was left to this thread.
bool secondBlockIsLeftToTheHost()
{
    std::latch begun(1);
    std::atomic<bool> adopting = false, ended = false;
    std::thread::id second;
    queue().async([&] {
        begun.count_down();
        while (!adopting)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ended = true;
    });
    queue().async([&] { second = std::this_thread::get_id(); });
    begun.wait();
    adopting = true;
    const int descriptor = queue().fileDescriptor();
    EXPECT_TRUE(ended);
    EXPECT_TRUE(queue().isMainThread());
    const bool isLeft = second == std::thread::id();
    EXPECT_TRUE(!isLeft || isReadable(descriptor));
    queue().drain();
    EXPECT_EQ(second == std::this_thread::get_id(), isLeft);
    queue().abandon();
    return isLeft;
}

// The first block may end before this thread has asked: then there is nothing to see, and it is tried again.
TEST(ServedMainQueue, HandsOverBetweenTwoItems)
{
    int tries = 0;
    while (!secondBlockIsLeftToTheHost())
        ASSERT_LT(++tries, 1000);
}

TEST(ServedMainQueue, TakesOverAgainFromAHostThatLeaves)
{
    queue().fileDescriptor();
    std::promise<void> done;
    queue().async([&] { done.set_value(); });
    queue().abandon();
    done.get_future().wait();
}

TEST_F(AdoptedMainQueue, IsReadableExactlyWhileWorkWaits)
{
    EXPECT_FALSE(isReadable(descriptor));
    queue().async(note(1));
    EXPECT_TRUE(isReadable(descriptor));
    EXPECT_THAT(ran, ElementsAre());
    queue().drain();
    EXPECT_FALSE(isReadable(descriptor));
    EXPECT_THAT(ran, ElementsAre(1));
}

// A block that queues itself again must not keep the host's loop for ever.
TEST_F(AdoptedMainQueue, LeavesWhatIsAddedWhileDrainingToTheNextTurn)
{
    queue().async([&] {
        ran.push_back(1);
        queue().async(note(2));
    });
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(1));
    EXPECT_TRUE(isReadable(descriptor));
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(AdoptedMainQueue, DrainsInsideABlock)
{
    queue().async([&] {
        queue().drain();
        ran.push_back(1);
    });
    queue().async(note(2));
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(2, 1));
}

TEST_F(AdoptedMainQueue, PassesOnWhatASynchronousBlockThrows)
{
    auto caller = std::async(std::launch::async,
        [] { EXPECT_THROW(queue().sync([] { throw std::runtime_error("x"); }), std::runtime_error); });
    awaitReadable(descriptor);
    queue().drain();
    caller.get();
    EXPECT_THROW(queue().sync([] { throw std::logic_error("y"); }), std::logic_error);
}

TEST_F(AdoptedMainQueue, FiresTimersInTheOrderOfTheirTimes)
{
    const auto late = queue().after(2, note(2));
    const auto early = queue().after(1, note(1));
    const auto never = queue().after(3.5, note(3));
    clock.advance(0.999);
    queue().drain();
    EXPECT_THAT(ran, ElementsAre());
    clock.advance(2);
    awaitReadable(descriptor);
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_FALSE(late.isPending());
    EXPECT_TRUE(never.isPending());
}

TEST_F(AdoptedMainQueue, FiresNoTimerThatWasCancelledOrLetGo)
{
    auto cancelled = queue().after(1, note(1));
    {
        const auto letGo = queue().after(1, note(2));
    }
    auto replaced = queue().after(1, note(3));
    replaced = queue().after(1, note(4));
    queue().after(1, note(5)).detach();
    // It is due and queued already when it is cancelled by the one before it.
    MainQueue::Token victim;
    const auto killer = queue().after(0.5, [&] { victim.cancel(); });
    victim = queue().after(1, note(6));
    cancelled.cancel();
    clock.advance(1);
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(4, 5));
}

TEST_F(AdoptedMainQueue, CallsTheWatcherOfADescriptorUntilItIsLetGo)
{
    const int event = eventfd(0, EFD_CLOEXEC);
    auto token = queue().watch(event, [&] {
        std::uint64_t value = 0;
        ASSERT_EQ(read(event, &value, sizeof value), static_cast<ssize_t>(sizeof value));
        ran.push_back(static_cast<int>(value));
    });
    const std::uint64_t seven = 7;
    ASSERT_EQ(write(event, &seven, sizeof seven), static_cast<ssize_t>(sizeof seven));
    awaitReadable(descriptor);
    queue().drain();
    queue().drain();
    EXPECT_THAT(ran, ElementsAre(7));
    token.cancel();
    ASSERT_EQ(write(event, &seven, sizeof seven), static_cast<ssize_t>(sizeof seven));
    EXPECT_FALSE(isReadable(descriptor));
    close(event);
}

TEST_F(AdoptedMainQueue, FollowsTheThreadThatDrainsIt)
{
    queue().async([&] { EXPECT_TRUE(queue().isMainThread()); });
    std::thread([] { queue().drain(); }).join();
    EXPECT_FALSE(queue().isMainThread());
}

TEST_F(AdoptedMainQueue, DoesNothingInAForkedChild)
{
    queue().async(note(1));
    EXPECT_TRUE(test::inForkedChild([&] {
        queue().drain();
        const bool ranNothing = ran.empty() && !queue().sync([] {});
        const auto timer = queue().after(0, [] {});
        queue().async([] {});
        return ranNothing && queue().fileDescriptor() == -1 && !timer.isPending();
    }));
}

/// A thing of the host that its exit destroys while the library's thread is busy.
struct HostStatic {
    ~HostStatic()
    {
        if (busy)
            _exit(9);
    }
    std::atomic<bool> busy = false;
};

const test::Role exits("exit with work", [](const test::Words&) -> std::string {
    static HostStatic host;
    std::latch begun(1);
    queue().async([&] {
        host.busy = true;
        begun.count_down();
        // The exit below finds this block running, and work and timers behind it.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        host.busy = false;
    });
    queue().async([] { _exit(8); });
    queue().after(0, [] { _exit(8); }).detach();
    begun.wait();
    std::exit(7);
});

TEST(MainQueueExit, WaitsForTheRunningBlockAndDropsTheRest)
{
    EXPECT_EQ(test::play("exit with work").status, 7);
}

} // namespace
