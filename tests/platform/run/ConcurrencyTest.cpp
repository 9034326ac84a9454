// Mutexes with an order, time moved by hand, sets that change under their readers.
#include "platform/run/Clock.h"
#include "platform/run/CopyOnWriteSet.h"
#include "platform/run/Mutex.h"
#include "platform/value/Value.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

using namespace platform;

namespace {

#ifndef NDEBUG

// Locks may be let go in any order; the check must forget the right one.
TEST(LockOrderDeathTest, EndsTheProcessForALockUnderWhatIsStillHeld)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Mutex global{LockRank::global}, context{LockRank::context}, file{LockRank::file};
    EXPECT_DEATH(
        {
            global.lock();
            context.lock();
            global.unlock();
            file.lock();
        },
        "rank 300 taken while rank 400 is held");
    global.lock();
    context.lock();
    context.unlock();
    file.lock();
    file.unlock();
    global.unlock();
}

#endif

TEST(ManualClockTest, WakesASleeperWhenItIsMovedPastTheDeadline)
{
    ManualClock clock(1000);
    std::atomic<bool> awake = false;
    std::thread sleeper([&] {
        clock.sleepUntil(60);
        awake = true;
    });
    clock.advance(59);
    EXPECT_FALSE(awake);
    clock.setNow(1e9);
    EXPECT_FALSE(awake);
    clock.advance(1);
    sleeper.join();
    EXPECT_EQ(clock.monotonic(), 60);
}

TEST(CopyOnWriteSetTest, TellsObjectsApartByContent)
{
    ZRCopyOnWriteSet<Ref<const String>> set;
    const auto first = String::make("a");
    set.addObject(first);
    set.addObject(String::make("a"));
    EXPECT_EQ(set.count(), 1U);
    EXPECT_EQ(set.member(String::make("a")), first);
    EXPECT_EQ(set.member(String::make("b")), nullptr);
    set.removeObject(String::make("a"));
    EXPECT_FALSE(set.containsObject(first));
    EXPECT_TRUE(set.allObjects().empty());
}

// A block that fails must not keep the set it read alive, nor the lock.
TEST(CopyOnWriteSetTest, LetsTheSetGoWhenAReaderThrows)
{
    ZRCopyOnWriteSet<std::shared_ptr<int>> set;
    const auto member = std::make_shared<int>(1);
    set.addObject(member);
    EXPECT_THROW(
        set.useReadOnlySet([](const auto&) -> int { throw std::runtime_error("x"); }), std::runtime_error);
    set.removeObject(member);
    EXPECT_EQ(member.use_count(), 1);
}

} // namespace
