// When the server of the spool is woken, and which scheduler the process has.
#include "platform/processes/Scheduler.h"
#include "platform/processes/Helper.h"
#include "platform/run/Clock.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace platform;

namespace {

class SchedulerTest : public testing::Test {
protected:
    std::optional<double> next() const
    {
        const auto date = scheduler->nextFireDate("org.example", "sync");
        return date ? std::optional(date->seconds) : std::nullopt;
    }

    ManualClock clock{1000};
    ClockScope scope{clock};
    const std::string directory = test::freshPath("schedule");
    int wakes = 0;
    const std::shared_ptr<Scheduler> scheduler = makeSpoolScheduler(directory, [this] { ++wakes; });
};

TEST_F(SchedulerTest, KnowsWhatIsPendingAndWakesWhoServesIt)
{
    EXPECT_EQ(next(), std::nullopt);
    EXPECT_EQ(wakes, 0);
    ASSERT_TRUE(scheduler->schedule("/bin/true", {"x"}, {1500}, "org.example", "sync"));
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(next(), 1500);
    ASSERT_TRUE(scheduler->schedule("/bin/true", {}, {1200}, "org.example", "sync"));
    EXPECT_EQ(next(), 1200);
    EXPECT_EQ(wakes, 2);
    ASSERT_TRUE(scheduler->remove("org.example", "sync"));
    EXPECT_EQ(next(), std::nullopt);
    EXPECT_FALSE(scheduler->schedule("true", {}, {1200}, "org.example", "sync"));
    EXPECT_EQ(wakes, 2);
}

// The helper ended with the last session, so that what is pending would keep new work away for ever.
TEST_F(SchedulerTest, WakesTheServerForWhatIsLate)
{
    ASSERT_TRUE(scheduler->schedule("/bin/true", {}, {1500}, "org.example", "sync"));
    next();
    EXPECT_EQ(wakes, 1);
    clock.advance(500);
    EXPECT_EQ(next(), 1500);
    EXPECT_EQ(wakes, 2);
}

TEST(HelperTest, LooksForOwnProgramsOnlyWhereTheEnvironmentSays)
{
    const test::TemporaryFolder folder;
    test::ScopedVariable variable("ROSTER_HELPER_DIR", folder.path().c_str());
    EXPECT_EQ(ownProgram("tool"), std::nullopt);
    test::put(folder / "tool", "#!/bin/sh\n");
    EXPECT_EQ(ownProgram("tool"), std::nullopt);
    std::filesystem::permissions(folder / "tool", std::filesystem::perms::owner_all);
    EXPECT_EQ(ownProgram("tool"), folder / "tool");
    variable.set(nullptr);
    EXPECT_EQ(ownProgram("tool"), std::nullopt);
    const auto self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(ownProgram(self.filename()), self.string());
}

} // namespace
