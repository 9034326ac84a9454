// Who of several objects and processes holds a name, and what the lock says about it.
#include "store/ZRProcessSharedLock.h"

#include "store/SkippingClock.h"
#include "support/Process.h"
#include "support/Role.h"
#include "support/Waiting.h"

#include "platform/files/UserDefaults.h"
#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

const Role holdsName("hold a name", [](const Words& words) {
    ZRProcessSharedLock lock(words.at(0));
    lock.lock();
    std::ofstream(words.at(1)).flush();
    for (;;)
        pause();
    return std::string();
});

class ProcessSharedLock : public testing::Test {
protected:
    ProcessSharedLock() { platform::UserDefaults::standard().setBool(true, "ZRPSLLogEnabled"); }
    ~ProcessSharedLock() override
    {
        platform::UserDefaults::standard().removeObjectForKey("ZRPSLLogEnabled");
    }

    platform::LogCapture log;
};

TEST_F(ProcessSharedLock, BelongsToOneObjectAsOftenAsItWasTaken)
{
    ZRProcessSharedLock one("a/name"), same("a/name"), other("a.name");
    EXPECT_TRUE(one.tryLock());
    EXPECT_TRUE(one.tryLock());
    EXPECT_TRUE(other.tryLock()) << "of another name";
    EXPECT_FALSE(same.tryLock());
    one.unlock();
    EXPECT_FALSE(same.tryLock());
    one.unlock();
    EXPECT_TRUE(same.tryLock());
    same.unlock();
    other.unlock();
}

TEST_F(ProcessSharedLock, UsesOneNameWhereNoneIsGiven)
{
    ZRProcessSharedLock one;
    const auto other =
        ZRProcessSharedLock::initWithIdentifier("org.quillon.Roster.ZRDefaultProcessSharedLock");
    ASSERT_TRUE(one.tryLock());
    EXPECT_FALSE(other->tryLock());
    one.unlock();
}

TEST_F(ProcessSharedLock, TellsWhatItDoes)
{
    ZRProcessSharedLock one("name"), other("name");
    one.lock();
    one.tryLock();
    other.tryLock();
    one.unlock();
    one.unlock();
    one.unlock();
    EXPECT_THAT(log.lines(),
        ElementsAre(MatchesRegex(R"(\[PSL\] Attempting to lock <ZRProcessSharedLock 0x[0-9a-f]+>)"),
            MatchesRegex(R"(\[PSL\] Try-locked <ZRProcessSharedLock 0x[0-9a-f]+> name)"),
            MatchesRegex(R"(\[PSL\] Locked <ZRProcessSharedLock 0x[0-9a-f]+> \(count 1\))"),
            MatchesRegex(R"(\[PSL\] Try-locked <ZRProcessSharedLock 0x[0-9a-f]+> )"),
            MatchesRegex(R"(\[PSL\] Unlocked <ZRProcessSharedLock 0x[0-9a-f]+> \(count 1\))"),
            MatchesRegex(R"(\[PSL\] Unlocked <ZRProcessSharedLock 0x[0-9a-f]+> \(count 0\))"),
            MatchesRegex(R"(\[PSL\] Unlocked <ZRProcessSharedLock 0x[0-9a-f]+> \(count 0\))")));
}

// The count of 1 after a failed attempt is what callers of old have seen; it shows in this line alone.
TEST_F(ProcessSharedLock, IsToldOffWhenItEndsLockedOrAfterAFailedAttempt)
{
    constexpr char line[] =
        "An instance of ZRProcessSharedLock was deallocated while it was still locked. In "
        "the future, this will become a hard error.";
    const auto isToldOff = [&](auto use) {
        const platform::LogCapture ending;
        {
            ZRProcessSharedLock lock("name");
            use(lock);
        }
        return ending.contains(line);
    };
    EXPECT_FALSE(isToldOff([](auto&) {}));
    EXPECT_TRUE(isToldOff([](auto& lock) { lock.tryLock(); }));
    EXPECT_FALSE(isToldOff([](auto& lock) { lock.tryLock(), lock.unlock(); }));
    ZRProcessSharedLock holder("name");
    ASSERT_TRUE(holder.tryLock()) << "the name of one that ended locked is free";
    EXPECT_TRUE(isToldOff([](auto& lock) { lock.tryLock(); }));
    holder.unlock();
}

TEST_F(ProcessSharedLock, IsTriedUntilItsDate)
{
    ZRProcessSharedLock holder("name"), late("name");
    ASSERT_TRUE(holder.tryLock());
    SkippingClock clock(1000);
    EXPECT_FALSE(late.lockBeforeDate(1000));
    EXPECT_THAT(clock.sleeps, IsEmpty());
    EXPECT_FALSE(late.lockBeforeDate(1000.0105));
    EXPECT_THAT(clock.sleeps, testing::SizeIs(11));
    EXPECT_THAT(clock.sleeps, testing::Each(testing::DoubleNear(0.001, 1e-9)));
    clock.afterSleep = [&] { holder.unlock(); };
    EXPECT_TRUE(late.lockBeforeDate(2000));
    late.unlock();
}

TEST_F(ProcessSharedLock, IsFreeWhenItsHolderWasKilled)
{
    const auto sign = std::filesystem::temp_directory_path() / "holds-a-name";
    Process holder({.words = {"/proc/self/exe", "--play=hold a name", "name", sign}});
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(sign); }));
    ZRProcessSharedLock lock("name");
    EXPECT_FALSE(lock.tryLock());
    holder.kill(SIGKILL);
    holder.wait();
    EXPECT_TRUE(lock.tryLock());
    lock.unlock();
}

} // namespace

} // namespace test
