// What `roster watch` says of the saves of others, and how it ends.
#include "tool/OtherProcess.h"

#include <gmock/gmock.h>

#include <climits>
#include <csignal>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string shortForm(const Json& line)
{
    return line.at("kind").get<std::string>() + " " + line.at("names").dump();
}

std::vector<std::string> shortForms(const std::vector<Json>& lines)
{
    std::vector<std::string> texts;
    for (const auto& line : lines)
        texts.push_back(shortForm(line));
    return texts;
}

class WatchTest : public testing::Test {
protected:
    void SetUp() override { changeRoster(world.roster(), {"+Ana", "+Bo"}); }

    ToolWorld world;
};

TEST_F(WatchTest, TellsEverySaveOfOthersUntilASignal)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        RunningTool watch(world, "watch");
        ASSERT_TRUE(watch.waitForErr("watching " + world.roster())) << watch.err();
        changeRoster(world.roster(), {"+Cy"});
        changeRoster(world.roster(), {"~Cy", "&Club"});
        changeRoster(world.roster(), {"-Cy"});
        const auto lines = watch.waitForLines(4);
        EXPECT_THAT(shortForms(lines),
            ElementsAre("inserted [\"Cy\"]", "inserted [\"Club\"]", "updated [\"Cy\"]", "deleted [\"Cy\"]"));
        ASSERT_EQ(lines.size(), 4U);
        EXPECT_EQ(lines[0].at("ids"), lines[3].at("ids"));
        EXPECT_EQ(lines[1].at("process"), lines[2].at("process"));
        EXPECT_NE(lines[0].at("process").at("id"), lines[1].at("process").at("id"));
        EXPECT_EQ(lines[0].at("process").at("name"), "tool_watch_test");
        EXPECT_FALSE(watch.hasEnded());
        watch.kill(signal);
        EXPECT_EQ(watch.wait(), 0);
    }
}

TEST_F(WatchTest, EndsAfterTheFirstChangeWhenAskedTo)
{
    RunningTool watch(world, "watch --once");
    ASSERT_TRUE(watch.waitForErr("watching"));
    // What is saved in another directory is no change of this roster.
    changeRoster(world.path("other"), {"+Di"});
    changeRoster(world.roster(), {"+Cy", "~Bo", "-Ana"});
    EXPECT_EQ(watch.wait(), 0);
    EXPECT_THAT(shortForms(watch.waitForLines(3)),
        ElementsAre("inserted [\"Cy\"]", "updated [\"Bo\"]", "deleted [\"Ana\"]"));
}

TEST_F(WatchTest, TellsAReloadForWhatIsTooMuchToName)
{
    RunningTool watch(world, "watch");
    ASSERT_TRUE(watch.waitForErr("watching"));
    changeRoster(world.roster(), {"*1001"});
    changeRoster(world.roster(), {"-Bo"});
    const auto lines = watch.waitForLines(2);
    EXPECT_THAT(shortForms(lines), ElementsAre("reload []", "deleted [\"Bo\"]"));
    EXPECT_TRUE(!lines.empty() && lines[0].at("ids") == Json::array() && lines[0].at("process").is_object());
}

TEST_F(WatchTest, EndsQuietlyWithItsReader)
{
    const std::string err = world.path("err"), status = world.path("status");
    Process pipeline({.words = {"/bin/sh", "-c",
                          std::string("(") + ROSTER_TOOL + " --roster " + world.roster() + " watch 2> " + err
                              + "; echo $? > " + status + ") | head -n 1"}});
    ASSERT_TRUE(eventually([&] { return bytesOf(err, "").find("watching") != std::string::npos; }));
    changeRoster(world.roster(), {"+Cy"});
    EXPECT_THAT(pipeline.wait().out, HasSubstr("Cy"));
    EXPECT_EQ(bytesOf(status, ""), "0\n");
    EXPECT_EQ(bytesOf(err, ""), "roster: watching " + world.roster() + "\n");
}

TEST_F(WatchTest, SaysThatItCannotWrite)
{
    const std::string err = world.path("err");
    Process watch({.words = {"/bin/sh", "-c",
                       std::string("exec ") + ROSTER_TOOL + " --roster " + world.roster()
                           + " watch > /dev/full 2> " + err}});
    ASSERT_TRUE(eventually([&] { return bytesOf(err, "").find("watching") != std::string::npos; }));
    changeRoster(world.roster(), {"+Cy"});
    EXPECT_EQ(watch.wait().status, 1);
    EXPECT_THAT(bytesOf(err, ""), HasSubstr("standard output"));
}

// Half a megabyte waits behind a pipe that nobody reads: a signal ends it all the same.
TEST_F(WatchTest, EndsAtASignalWhileItsReaderSleeps)
{
    const std::string pipe = world.path("running.out");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    RunningTool watch(world, "watch");
    ASSERT_TRUE(watch.waitForErr("watching"));
    for (int i = 0; i < 5; ++i)
        changeRoster(world.roster(), {"*1000"});
    const int most = fcntl(reader, F_GETPIPE_SZ) - PIPE_BUF;
    EXPECT_TRUE(eventually([&] {
        int waiting = 0;
        return ioctl(reader, FIONREAD, &waiting) == 0 && waiting >= most;
    }));
    watch.kill(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
    close(reader);
}

} // namespace

} // namespace test
