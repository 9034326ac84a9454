// The locks under real threads and in a forked child, and the handles that they end.
#include "core/ReleasedHandles.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRLog.h"
#include "core/ZRProfile.h"
#include "platform/run/Clock.h"
#include "support/Forked.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <latch>
#include <optional>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

using platform::LogCapture;

void lock() { _ZR_Lock("file.cpp", 7); }
void unlock() { _ZR_Unlock("file.cpp", 8); }
bool tryLock() { return _ZR_TRY_Lock("file.cpp", 9); }

/// Runs `body` in another thread and waits for it.
void elsewhere(const std::function<void()>& body) { std::thread(body).join(); }

TEST(GlobalLock, LetsOneThreadInAtATime)
{
    const struct {
        const char* name;
        void (*take)();
        void (*release)();
    } locks[] = {
        {"global", lock, unlock},
        {"mail recents", [] { _ZR_MR_Lock("f", 1); }, [] { _ZR_MR_Unlock("f", 1); }},
        {"certificates", _ZR_IgnoreCertErrors_Lock, _ZR_IgnoreCertErrors_Unlock},
    };
    for (const auto& each : locks) {
        int counter = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int n = 0; n < 2000; ++n) {
                    each.take();
                    each.take(); // recursive
                    ++counter;
                    each.release();
                    each.release();
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(counter, 8000) << each.name;
    }
}

TEST(GlobalLock, IsTriedWithoutWaiting)
{
    EXPECT_FALSE(_ZR_IsLockedByThisThread());
    ASSERT_TRUE(tryLock());
    EXPECT_TRUE(_ZR_IsLockedByThisThread());
    EXPECT_TRUE(tryLock());
    elsewhere([] {
        EXPECT_FALSE(tryLock());
        EXPECT_FALSE(_ZR_IsLockedByThisThread());
    });
    unlock();
    elsewhere([] { EXPECT_FALSE(tryLock()); });
    unlock();
    elsewhere([] {
        EXPECT_TRUE(tryLock());
        unlock();
    });
}

TEST(GlobalLock, IsProfiledByItsOutermostHolder)
{
    __ZREnableSampling = true;
    for (int n = 0; n < 3; ++n) {
        lock();
        lock();
        unlock();
        unlock();
    }
    ASSERT_TRUE(tryLock());
    unlock();
    __ZREnableSampling = false;
    lock();
    unlock();
    const std::string text = ZRProfile::text();
    EXPECT_THAT(text, testing::ContainsRegex(" 3 [ 0-9.]* file.cpp:7\n"));
    EXPECT_THAT(text, testing::ContainsRegex(" 1 [ 0-9.]* file.cpp:9\n"));
}

TEST(GlobalLock, IsFreeAfterAnException)
{
    try {
        const ZRGlobalLockScope scope;
        throw 1;
    } catch (int) {
    }
    elsewhere([] {
        EXPECT_TRUE(tryLock());
        unlock();
    });
}

class LockDebugTest : public testing::Test {
protected:
    void SetUp() override { __ZRLockDebug = true; }
    void TearDown() override { __ZRLockDebug = false; }

    /// The lines so far with threads as T and the numbers of lock requests counted from the first one.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> all;
        std::optional<int> first;
        for (std::string line : log.lines()) {
            const auto thread = line.find("<thread ");
            line.replace(thread, line.find('>', thread) + 1 - thread, "T");
            const auto number = line.find_first_of("0123456789");
            const auto end = line.find_first_not_of("0123456789", number);
            if (const auto word = line.rfind("lock ", number);
                word != std::string::npos && word + 5 == number) {
                const int request = std::stoi(line.substr(number, end - number));
                first = first.value_or(request);
                line.replace(number, end - number, "#" + std::to_string(request - *first));
            }
            all.push_back(line);
        }
        return all;
    }

    platform::ManualClock clock;
    platform::ClockScope installed{clock};
    LogCapture log;
};

TEST_F(LockDebugTest, TellsRequestGrantAndRelease)
{
    lock();
    unlock();
    _ZR_MR_Lock("m.cpp", 1);
    _ZR_MR_Unlock("m.cpp", 2);
    _ZR_IgnoreCertErrors_Lock();
    _ZR_IgnoreCertErrors_Unlock();
    EXPECT_THAT(lines(),
        testing::ElementsAre(
            "ZRRoster global API lock #0 <requested>\tfile: 'file.cpp'\t\tline: 7 in thread: T",
            "ZRRoster global API lock #0 <granted: 0.000s>\tfile: 'file.cpp'\t\tline: 7 in thread: T",
            "ZRRoster global API unlock #0\tfile: 'file.cpp'\t\tline: 8 in thread: T",
            "ZRRoster ZRMailRecent lock #1 <requested> \tfile: 'm.cpp'\t\tline: 1 in thread: T",
            "ZRRoster ZRMailRecent lock #1 <granted: 0.000s>\tfile: 'm.cpp'\t\tline: 1 in thread: T",
            "ZRRoster ZRMailRecent unlock #1\tfile: 'm.cpp'\t\tline: 2 in thread: T",
            "ZRRoster __ZRIgnoreCertErrorsLock lock #2 <requested> in thread: T",
            "ZRRoster __ZRIgnoreCertErrorsLock lock #2 <granted: 0.000s> in thread: T"));
}

TEST_F(LockDebugTest, TellsHowLongAThreadWaited)
{
    lock();
    std::thread other([] {
        lock();
        unlock();
    });
    while (!log.contains("<requested>") || log.lines().size() < 3)
        std::this_thread::yield();
    clock.advance(1.25);
    unlock();
    other.join();
    EXPECT_TRUE(log.contains("<granted: 1.250s>"));
}

// The reversed sense is what programs that run with this switch have always seen.
TEST_F(LockDebugTest, ReversesTheAnswerOfATry)
{
    EXPECT_FALSE(tryLock());
    EXPECT_TRUE(_ZR_IsLockedByThisThread());
    elsewhere([] { EXPECT_TRUE(tryLock()); });
    unlock();
    EXPECT_THAT(lines(),
        testing::ElementsAre("ZRRoster TRY lock\tfile: 'file.cpp'\t\tline: 9 in thread: T",
            "ZRRoster global API TRY lock #0 <requested & denied>\tfile: 'file.cpp'\t\tline: 9 in thread: T",
            "ZRRoster TRY lock\tfile: 'file.cpp'\t\tline: 9 in thread: T",
            "ZRRoster global API TRY lock #0 <requested & granted>\tfile: 'file.cpp'\t\tline: 9 in thread: T",
            "ZRRoster global API unlock #0\tfile: 'file.cpp'\t\tline: 8 in thread: T"));
}

// A thread of the parent may have held the lock at the fork, and nobody is left to unlock it.
TEST(GlobalLock, RefusesAForkedChildInsteadOfHanging)
{
    std::latch held(1), done(1);
    std::thread holder([&] {
        lock();
        held.count_down();
        done.wait();
        unlock();
    });
    held.wait();
    const std::pair<const char*, void (*)()> operations[] = {{"lock", lock}, {"try", [] { tryLock(); }},
        {"mail recents", [] { _ZR_MR_Lock("f", 1); }}, {"certificates", _ZR_IgnoreCertErrors_Lock}};
    for (const auto& [name, operation] : operations) {
        const bool isRefused = test::inForkedChild([run = operation] {
            alarm(20);
            try {
                run();
            } catch (const ZRForkedProcess&) {
                // What unwinding calls must not fail again.
                unlock();
                _ZR_MR_Unlock("f", 1);
                _ZR_IgnoreCertErrors_Unlock();
                return !_ZR_IsLockedByThisThread();
            }
            return false;
        });
        EXPECT_TRUE(isRefused) << name;
    }
    done.count_down();
    holder.join();
}

std::atomic<int> hookRuns = 0;

TEST(GlobalLock, RunsItsHooksAtTheOutermostLockOnly)
{
    const ZRLockHook hook = []() noexcept {
        EXPECT_TRUE(_ZR_IsLockedByThisThread());
        ++hookRuns;
    };
    ZRAddLockHook(hook);
    ZRAddLockHook(hook);
    hookRuns = 0;
    lock();
    lock();
    EXPECT_EQ(hookRuns, 1);
    unlock();
    lock();
    EXPECT_EQ(hookRuns, 1);
    unlock();
    unlock();
    ASSERT_TRUE(tryLock());
    EXPECT_EQ(hookRuns, 2);
    elsewhere([] { tryLock(); });
    EXPECT_EQ(hookRuns, 2);
    unlock();
}

class CountedHandle final : public ReleasedHandle {
public:
    explicit CountedHandle(std::function<void()> end) : _end(std::move(end)) { }

private:
    void finishRelease() noexcept override
    {
        const auto end = std::move(_end);
        delete this;
        end();
    }

    std::function<void()> _end;
};

TEST(ReleasedHandles, EndInOrderUnderTheNextLock)
{
    ReleasedHandles& handles = ReleasedHandles::shared();
    std::vector<int> ended;
    for (int i = 0; i < 3; ++i)
        handles.push(*new CountedHandle([&ended, i] {
            EXPECT_TRUE(_ZR_IsLockedByThisThread());
            ended.push_back(i);
        }));
    EXPECT_TRUE(ended.empty());
    lock();
    EXPECT_THAT(ended, testing::ElementsAre(0, 1, 2));
    EXPECT_TRUE(handles.isEmpty());
    unlock();
}

// The end of a record may release its roster's last handle on another.
TEST(ReleasedHandles, EndWhatTheirEndReleases)
{
    ReleasedHandles& handles = ReleasedHandles::shared();
    int ended = 0;
    std::function<void(int)> chain = [&](int left) {
        ++ended;
        if (left > 0)
            handles.push(*new CountedHandle([&chain, left] { chain(left - 1); }));
    };
    handles.push(*new CountedHandle([&] { chain(3); }));
    lock();
    unlock();
    EXPECT_EQ(ended, 4);
}

TEST(ReleasedHandles, AreNeitherLostNorEndedTwice)
{
    constexpr int kThreads = 4, kEach = 5000;
    int ended = 0; // guarded by the lock
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < kEach; ++n) {
                ReleasedHandles::shared().push(*new CountedHandle([&] { ++ended; }));
                if (n % 7 == 0) {
                    lock();
                    unlock();
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    lock();
    unlock();
    EXPECT_EQ(ended, kThreads * kEach);
}

} // namespace
