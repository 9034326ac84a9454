// What the spool keeps, hands out once, and never lets anybody run.
#include "platform/processes/Spool.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <thread>

using namespace platform;
using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

SpooledAction actionAt(double date, std::string action = "sync", std::vector<std::string> arguments = {})
{
    return {"org.example", std::move(action), "/bin/true", std::move(arguments), {date}};
}

class SpoolTest : public testing::Test {
protected:
    ~SpoolTest() override { static_cast<void>(removeFile(directory)); }

    void schedule(const SpooledAction& action) const
    {
        const auto done = spool.put(action);
        ASSERT_TRUE(done) << done.error().text;
    }

    /// The actions that are due at `now`, by name and date.
    std::vector<std::string> due(double now) const
    {
        std::vector<std::string> names;
        for (const auto& taken : spool.takeDue({now})) {
            names.push_back(taken.action.action + "@" + std::to_string(int(taken.action.fireDate.seconds)));
            spool.finish(taken);
        }
        return names;
    }

    std::string onlyFile() const { return std::filesystem::directory_iterator(directory)->path().string(); }

    bool isEmpty() const { return std::filesystem::is_empty(directory); }

    const std::string directory = freshPath("spool");
    const Spool spool{directory};
};

TEST_F(SpoolTest, KeepsACommandAsItWasPut)
{
    const std::vector<std::string> words{"--tricklesync", "a b", "", "ünïcode\n", "$(id)"};
    schedule(actionAt(1234567890.25, "sync", words));
    const auto found = spool.find("org.example", "sync");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->command, "/bin/true");
    EXPECT_EQ(found->arguments, words);
    EXPECT_EQ(found->fireDate.seconds, 1234567890.25);
    EXPECT_FALSE(spool.find("org.example", "other"));
    EXPECT_FALSE(spool.find("org", "example/sync"));
    EXPECT_EQ(modeOf(onlyFile()), 0600U);
    EXPECT_EQ(modeOf(directory), 0700U);
}

TEST_F(SpoolTest, HandsOutWhatIsDueOnceAndLeavesTheRest)
{
    schedule(actionAt(10, "a"));
    schedule(actionAt(20, "b"));
    schedule(actionAt(30, "c"));
    EXPECT_EQ(spool.nextDate()->seconds, 10);
    EXPECT_THAT(due(9.5), IsEmpty());
    EXPECT_THAT(due(20), testing::UnorderedElementsAre("a@10", "b@20"));
    EXPECT_THAT(due(20), IsEmpty());
    EXPECT_EQ(spool.nextDate()->seconds, 30);
    ASSERT_TRUE(spool.remove("org.example", "c"));
    ASSERT_TRUE(spool.remove("org.example", "c"));
    EXPECT_FALSE(spool.nextDate());
}

TEST_F(SpoolTest, ReplacesThePairsFormerOne)
{
    schedule(actionAt(10));
    schedule(actionAt(99));
    EXPECT_THAT(due(50), IsEmpty());
    schedule(actionAt(20));
    EXPECT_THAT(due(50), ElementsAre("sync@20"));
    EXPECT_TRUE(isEmpty());
}

TEST_F(SpoolTest, GivesWhatADeadServerTookToTheNext)
{
    schedule(actionAt(10, "a"));
    schedule(actionAt(10, "b"));
    ASSERT_EQ(spool.takeDue({10}).size(), 2U);
    EXPECT_THAT(due(10), IsEmpty());
    schedule(actionAt(99, "b"));
    spool.recover();
    EXPECT_THAT(due(10), ElementsAre("a@10"));
    EXPECT_EQ(spool.nextDate()->seconds, 99);
}

TEST_F(SpoolTest, RefusesACommandWithoutAnAbsolutePath)
{
    auto action = actionAt(10);
    for (const auto* command : {"", "true", "./true"}) {
        action.command = command;
        EXPECT_FALSE(spool.put(action)) << command;
    }
}

TEST_F(SpoolTest, NeverRunsWhatIsNotTheUsersOwnOrSaysNothing)
{
    const auto good = [&] {
        schedule(actionAt(10));
        return onlyFile();
    };
    const auto elsewhere = freshPath("elsewhere");
    const auto holding = [](std::string bytes) {
        return [bytes = std::move(bytes)](const std::string& file) { put(file, bytes); };
    };
    using std::filesystem::file_size, std::filesystem::resize_file;
    const std::map<std::string, std::function<void(const std::string&)>> cases{
        {"garbage", holding("garbage")},
        {"empty", holding("")},
        {"cut off", [](const auto& file) { resize_file(file, file_size(file) / 2); }},
        {"no command", holding("<plist><dict/></plist>")},
        {"no date", holding("<plist><dict><key>command</key><string>/bin/true</string></dict></plist>")},
        {"huge", [](const auto& file) { resize_file(file, kLargestSpooledAction + 1); }},
        {"others may write it", [](const auto& file) { chmod(file.c_str(), 0622); }},
        {"a link to a good one",
            [&](const auto& file) {
                std::filesystem::rename(file, elsewhere);
                std::filesystem::create_symlink(elsewhere, file);
            }},
        {"a pipe",
            [](const auto& file) {
                std::filesystem::remove(file);
                ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
            }},
    };
    for (const auto& [what, spoil] : cases) {
        spoil(good());
        const LogCapture log;
        EXPECT_FALSE(spool.find("org.example", "sync")) << what;
        EXPECT_FALSE(spool.nextDate()) << what;
        EXPECT_THAT(due(99), IsEmpty()) << what;
        EXPECT_TRUE(log.contains("is no scheduled command")) << what;
        EXPECT_TRUE(isEmpty()) << what;
    }
}

// The pair is put again and again while its server takes what is due: each of the due ones is run or was
// replaced by a newer one, and the last, which is not due, is still there.
TEST_F(SpoolTest, LosesNothingThatIsReplacedWhileItIsTaken)
{
    std::atomic<bool> stop = false;
    std::thread server([&] {
        while (!stop)
            for (const auto& taken : spool.takeDue({10})) {
                EXPECT_LE(taken.action.fireDate.seconds, 10);
                spool.finish(taken);
            }
    });
    for (int round = 0; round < 200; ++round) {
        schedule(actionAt(10));
        schedule(actionAt(99));
        ASSERT_TRUE(eventually([&] { return spool.find("org.example", "sync").has_value(); })) << round;
    }
    stop = true;
    server.join();
    EXPECT_EQ(spool.nextDate()->seconds, 99);
}

} // namespace
