// What the helper program does with scheduled commands, alone and as the one that others start.
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/processes/Helper.h"
#include "platform/processes/MessagePort.h"
#include "platform/processes/PortAddress.h"
#include "platform/processes/PortPeer.h"
#include "platform/processes/Scheduler.h"
#include "platform/processes/Spool.h"
#include "platform/run/Clock.h"
#include "support/Process.h"
#include "support/Role.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>

using namespace platform;
using testing::HasSubstr;

namespace {

double now() { return Clock::current().now(); }

/// The process that holds the helper's name; 0 when none does.
pid_t helperProcess()
{
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto address = portAddressOf(*portSocketPath(kHelperPort));
    ucred peer{};
    socklen_t length = sizeof peer;
    const bool known = connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
        && getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0;
    return known ? peer.pid : 0;
}

/// Schedules a command as a program does that ends right after.
const test::Role passerBy("schedule-and-end", [](const test::Words& words) {
    const auto done = Scheduler::shared()->schedule(
        "/usr/bin/touch", {words.at(0)}, {now() + std::stod(words.at(1))}, "org.example", "brief");
    return std::string(done ? "scheduled" : done.error().text);
});

class ZrdTest : public testing::Test {
protected:
    ZrdTest() { setenv("ROSTER_HELPER_DIR", "/nowhere", 1); }
    ~ZrdTest() override
    {
        if (const pid_t left = helperProcess(); left > 0)
            kill(left, SIGTERM);
        EXPECT_TRUE(test::eventually([] { return helperProcess() == 0; }));
        static_cast<void>(removeFile(userSpoolDirectory()));
    }

    /// Has `name` made when its time has come.
    std::string touchAt(double date, const std::string& name) const
    {
        auto path = test::freshPath(name);
        EXPECT_TRUE(spool().put({"org.example", name, "/usr/bin/touch", {path}, {date}}));
        return path;
    }
    static Spool spool() { return Spool(userSpoolDirectory()); }
    static test::Process::Start zrd(std::vector<std::string> words)
    {
        words.insert(words.begin(), ZRD);
        return {.words = std::move(words)};
    }
    static bool appears(const std::string& path)
    {
        return test::eventually([&] { return fileExists(path); });
    }
};

TEST_F(ZrdTest, RunsWhatIsDueAndLeavesTheRest)
{
    const auto due = touchAt(now() - 1, "due"), later = touchAt(now() + 3600, "later");
    ASSERT_TRUE(spool().put({"org.example", "failing", "/bin/false", {}, {now() - 1}}));
    ASSERT_TRUE(spool().put({"org.example", "missing", "/no/such/program", {}, {now() - 1}}));
    ASSERT_TRUE(writeFileAtomically(userSpoolDirectory() + "/broken.action", "nonsense"));
    const auto ended = test::run(zrd({"--once"}));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_TRUE(fileExists(due));
    EXPECT_FALSE(fileExists(later));
    for (const auto* line : {"org.example due: ended with 0", "org.example failing: ended with 1",
             "org.example missing: /no/such/program: cannot be started", "broken.action"})
        EXPECT_THAT(ended.err, HasSubstr(line));
    EXPECT_TRUE(spool().find("org.example", "later"));
    for (const auto* gone : {"due", "failing", "missing"})
        EXPECT_FALSE(spool().find("org.example", gone)) << gone;
    EXPECT_EQ(test::run(zrd({"--once"})).err, "");
}

TEST_F(ZrdTest, IsTheOnlyOneAndLooksWhenTold)
{
    test::Process first(zrd({"--foreground", "--idle", "1000"}));
    ASSERT_TRUE(test::eventually([] { return helperProcess() > 0; }));
    for (const auto* mode : {"--foreground", "--once"}) {
        const auto second = test::run(zrd({mode}));
        EXPECT_EQ(second.status, 0) << second.err;
    }
    const auto due = touchAt(now() - 1, "due");
    EXPECT_TRUE(tellHelper());
    EXPECT_TRUE(appears(due));
    // Nobody tells it when the time has come.
    const auto soon = touchAt(now() + 0.5, "soon");
    EXPECT_TRUE(tellHelper());
    EXPECT_TRUE(appears(soon));
    EXPECT_FALSE(first.hasEnded());
}

TEST_F(ZrdTest, EndsWhenItHasBeenIdle)
{
    touchAt(now() + 3600, "later");
    test::Process process(zrd({"--foreground", "--idle", "0"}));
    ASSERT_TRUE(test::eventually([] { return helperProcess() > 0; }));
    ASSERT_TRUE(spool().remove("org.example", "later"));
    // It may have looked already.
    tellHelper();
    ASSERT_TRUE(test::eventually([&] { return process.hasEnded(); }));
    EXPECT_EQ(process.wait().status, 0);
    EXPECT_FALSE(tellHelper());
}

TEST_F(ZrdTest, EndsWhenNobodyCanReachIt)
{
    test::Process process(zrd({"--foreground", "--idle", "1000"}));
    ASSERT_TRUE(test::eventually([] { return helperProcess() > 0; }));
    auto port = *MessagePort::connect(kHelperPort);
    ASSERT_EQ(unlink(portSocketPath(kHelperPort)->c_str()), 0);
    // It may have noticed by the caller above, and be gone.
    static_cast<void>(port.send(kLookAfterYourWork, {}, 60, 0, MessagePort::Reply::none));
    ASSERT_TRUE(test::eventually([&] { return process.hasEnded(); }));
    EXPECT_EQ(process.wait().status, 0);
}

TEST_F(ZrdTest, RunsWhatAKilledOneTook)
{
    const auto due = touchAt(now() - 1, "due");
    ASSERT_EQ(spool().takeDue({now()}).size(), 1U);
    EXPECT_EQ(test::run(zrd({"--once"})).status, 0);
    EXPECT_TRUE(fileExists(due));
}

TEST_F(ZrdTest, IsStartedByWhoeverSchedulesAndOutlivesThem)
{
    setenv("ROSTER_HELPER_DIR", std::filesystem::path(ZRD).parent_path().c_str(), 1);
    const auto path = test::freshPath("outlived");
    const auto scheduled = test::play("schedule-and-end", {path, "0.5"});
    ASSERT_EQ(scheduled.answer, "scheduled") << scheduled.log;
    EXPECT_TRUE(appears(path));
    const pid_t helper = helperProcess();
    ASSERT_GT(helper, 0);
    EXPECT_EQ(getsid(helper), helper);
    // Not started twice.
    const auto again = test::freshPath("again");
    ASSERT_EQ(test::play("schedule-and-end", {again, "0"}).answer, "scheduled");
    EXPECT_TRUE(appears(again));
    EXPECT_EQ(helperProcess(), helper);
}

TEST_F(ZrdTest, GoesToTheBackgroundByItself)
{
    EXPECT_EQ(test::run(zrd({})).status, 0);
    EXPECT_TRUE(test::eventually([] { return helperProcess() > 0; }));
}

TEST_F(ZrdTest, SaysHowItIsUsed)
{
    EXPECT_THAT(test::run(zrd({"--help"})).out, HasSubstr("usage: zrd"));
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"--what"}, {"--idle"}, {"--idle", "x"}, {"--idle", "-1"}, {"word"}}) {
        const auto ended = test::run(zrd(words));
        EXPECT_EQ(ended.status, 2) << words.front();
        EXPECT_THAT(ended.err, HasSubstr("usage: zrd"));
    }
}

} // namespace
