// Who hears a notice when several processes post and listen at once, and one of them dies, stops or forks.
#include "platform/processes/NoticeLog.h"
#include "platform/files/Directories.h"
#include "platform/processes/NoticeForm.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "support/Forked.h"
#include "support/Process.h"
#include "support/Role.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include <fcntl.h>
#include <sys/resource.h>

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Posts NAME 0, NAME 1, … COUNT-1, each with as many bytes as asked for.
const test::Role poster("notice-poster", [](const test::Words& words) {
    const auto center = makeNoticeLog(words.at(0));
    const Value weight(std::string(std::stoul(words.at(3)), 'x'));
    for (long i = 0, count = std::stol(words.at(2)); i < count; ++i)
        center->post({words.at(1) + " " + std::to_string(i), std::nullopt, weight});
    return std::string();
});

/// Listens until "last"; answers how many notices it heard, or "missed" when it was told that it missed some.
const test::Role listener("notice-listener", [](const test::Words& words) {
    std::atomic<long> heard = 0;
    std::atomic<bool> missed = false, ended = false;
    const auto center = makeNoticeLog(words.at(0));
    const auto token = center->subscribe({}, {}, [&](const DistributedNotification& notice) {
        ++heard;
        missed = missed || notice.name == kNoticesMissed;
        ended = notice.name == "last";
    });
    std::ofstream(words.at(1)) << "listens";
    if (!test::eventually([&] { return ended.load(); }))
        throw std::runtime_error("never heard the last");
    return missed ? std::string("missed") : std::to_string(heard);
});

bool hasKernelWatch()
{
    return std::ranges::any_of(std::filesystem::directory_iterator("/proc/self/fd"), [](const auto& entry) {
        std::error_code gone;
        return std::filesystem::read_symlink(entry.path(), gone) == "anon_inode:inotify";
    });
}

/// Answers whether the kernel watched for it at once, and when it was told of the first notice.
const test::Role briefListener("brief-listener", [](const test::Words& words) {
    const auto center = makeNoticeLog(words.at(0));
    std::atomic<bool> isTold = false;
    const auto token = center->subscribe({}, {}, [&](const auto&) { isTold = true; });
    center->post({"between", std::nullopt, {}});
    const std::string atOnce = hasKernelWatch() ? "watched" : "unwatched";
    return atOnce + (test::eventually([&] { return isTold.load(); }) && hasKernelWatch() ? ", watched" : "");
});

class NoticeLogTest : public testing::Test {
protected:
    ~NoticeLogTest() override { unlink(path.c_str()); }

    Subscription hear(std::optional<std::string> name = {}, std::optional<std::string> object = {})
    {
        return center->subscribe(std::move(name), std::move(object),
            [this](const DistributedNotification& notice) { heard.add(notice.name); });
    }
    void post(const std::string& name, std::optional<std::string> object = {}, Value userInfo = {})
    {
        center->post({name, std::move(object), std::move(userInfo)});
    }
    test::Process::Start poster(const std::string& name, long count, std::size_t weight = 10) const
    {
        return {.words = test::roleWords(
                    "notice-poster", {path, name, std::to_string(count), std::to_string(weight)})};
    }

    const std::string path = test::freshPath("log");
    std::shared_ptr<DistributedNotificationCenter> center = makeNoticeLog(path);
    test::Heard heard;
};

TEST_F(NoticeLogTest, TellsThePosterItselfByNameAndObject)
{
    post("before anybody listens");
    test::Heard byObject;
    const auto named = hear("A", "x");
    const auto about = center->subscribe({}, "x", [&](const DistributedNotification& notice) {
        byObject.add(notice.name + "=" + notice.userInfo.description());
    });
    post("A");
    post("A", "y");
    post("B", "x", 7);
    post("A", "x", "text");
    ASSERT_TRUE(heard.waitFor(1));
    ASSERT_TRUE(byObject.waitFor(2));
    EXPECT_THAT(heard.texts(), ElementsAre("A"));
    EXPECT_THAT(byObject.texts(), ElementsAre("B=7", "A=text"));
}

TEST_F(NoticeLogTest, HearsNothingThatWasPostedWhileNobodyListened)
{
    {
        const auto brief = hear();
    }
    post("nobody");
    const auto token = hear();
    post("somebody");
    ASSERT_TRUE(heard.waitFor(1));
    EXPECT_THAT(heard.texts(), ElementsAre("somebody"));
}

// The kernel takes its time to let go of a watch: a command that ends at once is not to have one.
TEST_F(NoticeLogTest, WatchesOnlyForThoseWhoStayAndTellsThemWhatCameBetween)
{
    const std::string wanted = "unwatched, watched";
    std::string answer;
    // A machine at work may take that twentieth of a second by itself.
    for (int tries = 0; tries < 5 && answer != wanted; ++tries)
        answer = test::play("brief-listener", {path}).answer;
    EXPECT_EQ(answer, wanted);
}

TEST_F(NoticeLogTest, RefusesATooLargeNoticeWithALine)
{
    const LogCapture log;
    const auto token = hear();
    post("huge", {}, Value(std::string(kLargestNotice + 1, 'x')));
    post("small");
    ASSERT_TRUE(heard.waitFor(1));
    EXPECT_THAT(heard.texts(), ElementsAre("small"));
    EXPECT_TRUE(log.contains("huge"));
}

TEST_F(NoticeLogTest, HearsEachOfManyPostersInItsOrder)
{
    constexpr std::size_t kPosters = 8, kEach = 300;
    const auto token = hear();
    std::array<std::unique_ptr<test::Process>, kPosters> posters;
    for (std::size_t i = 0; i < kPosters; ++i)
        posters[i] = std::make_unique<test::Process>(poster(std::to_string(i), kEach));
    for (const auto& process : posters)
        EXPECT_EQ(process->wait().status, 0);
    ASSERT_TRUE(heard.waitFor(kPosters * kEach));
    std::map<int, int> next;
    for (const auto& text : heard.texts()) {
        int who = 0, number = 0;
        ASSERT_EQ(std::sscanf(text.c_str(), "%d %d", &who, &number), 2) << text;
        ASSERT_EQ(number, next[who]++) << text;
    }
    EXPECT_EQ(heard.count(), kPosters * kEach);
}

TEST_F(NoticeLogTest, CatchesUpAfterItWasStopped)
{
    const auto ready = test::freshPath("ready");
    test::Process stopped({.words = test::roleWords("notice-listener", {path, ready})});
    ASSERT_TRUE(test::eventually([&] { return std::filesystem::exists(ready); }));
    stopped.kill(SIGSTOP);
    // More than two files full.
    ASSERT_EQ(test::run(poster("p", 10000, 1000)).status, 0);
    post("last");
    stopped.kill(SIGCONT);
    const auto ended = stopped.wait();
    ASSERT_EQ(ended.status, 0) << ended.err;
    EXPECT_THAT(ended.out, testing::AnyOf("missed", "10001"));
}

TEST_F(NoticeLogTest, KeepsTheOrderWhenACallbackServesTheQueue)
{
    int number = 0;
    const auto token = center->subscribe({}, {}, [&](const DistributedNotification& notice) {
        heard.add(notice.name);
        if (notice.name == "0")
            for (; number < 20; ++number) {
                post(std::to_string(number + 3));
                MainQueue::shared().runOnce(0);
            }
    });
    MainQueue::shared().sync([&] {
        for (int i = 0; i < 3; ++i)
            post(std::to_string(i));
    });
    ASSERT_TRUE(heard.waitFor(23));
    for (int i = 0; i < 23; ++i)
        EXPECT_EQ(heard.texts()[static_cast<std::size_t>(i)], std::to_string(i));
}

TEST_F(NoticeLogTest, DoesNothingInAForkedChild)
{
    const auto token = hear();
    EXPECT_TRUE(test::inForkedChild([&] {
        post("from the child");
        return !hear();
    }));
    post("from the parent");
    ASSERT_TRUE(heard.waitFor(1));
    EXPECT_THAT(heard.texts(), ElementsAre("from the parent"));
}

// A user has only so many watches; the listener then looks from time to time.
TEST_F(NoticeLogTest, HearsWithoutAWatchOfTheKernel)
{
    // Everything else has been used once: sanitizers want descriptors for what they see for the first time.
    post("first");
    {
        const auto token = hear();
        auto ran = std::make_shared<std::atomic<bool>>(false);
        MainQueue::shared().after(0, [ran] { *ran = true; }).detach();
        ASSERT_TRUE(test::eventually([&] { return ran->load(); }));
    }
    const auto other = std::exchange(center, makeNoticeLog(path));
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    // Room for the notice file itself and no more.
    const rlimit narrow{static_cast<rlim_t>(next) + 1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &narrow), 0);
    const auto token = hear();
    setrlimit(RLIMIT_NOFILE, &before);
    post("seen");
    ASSERT_TRUE(heard.waitFor(1));
    EXPECT_THAT(heard.texts(), ElementsAre("seen"));
}

TEST(UserNoticeLogTest, IsOneForTheProcessInTheRuntimeDirectory)
{
    const auto log = userNoticeLog();
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(userNoticeLog(), log);
    log->post({"x", std::nullopt, {}});
    EXPECT_TRUE(std::filesystem::exists(*Directories::current()->runtime() + "/roster-notices"));
}

} // namespace
