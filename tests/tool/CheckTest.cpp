// What `roster check` says of the locks, versions and processes around a roster.
#include "tool/OtherProcess.h"

#include "platform/processes/Scheduler.h"
#include "store/ZRFileLock.h"
#include "store/ZRRosterStanding.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <csignal>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

namespace {

using testing::HasSubstr;

/// Holds the file lock as a writer until its file of words is gone. Words: the lock, that file.
const Role holds("hold the lock of a directory", [](const Words& words) {
    ZRFileLock lock;
    ZRInitFileLock(lock, words.at(0), 0, false);
    ZRAcquireFileLock(lock, READ_WRITE_FILELOCK, "here", 7);
    std::ofstream(words.at(1)) << getpid() << std::flush;
    eventually([&] { return access(words.at(1).c_str(), F_OK) != 0; });
    ZRReleaseFileLock(lock, READ_WRITE_FILELOCK, "here", 7);
    return std::string();
});

class CheckTest : public testing::Test {
protected:
    void SetUp() override { changeRoster(world.roster(), {"+Ana"}); }

    std::string lockFile() const { return world.roster() + "/.database.lock"; }

    /// Another process that holds the lock, and its number.
    std::pair<std::unique_ptr<Process>, int> holder() const
    {
        const std::string words = world.path("holder");
        auto process = std::make_unique<Process>(Process::Start{
            .words = {"/proc/self/exe", "--play=hold the lock of a directory", lockFile(), words}});
        EXPECT_TRUE(eventually([&] { return !bytesOf(words, "").empty(); }));
        return {std::move(process), std::stoi("0" + bytesOf(words, ""))};
    }

    /// An empty marker, as those leave who do without kernel locks, of that age.
    void mark(int seconds) const
    {
        std::ofstream(lockFile()).flush();
        const timespec at{time(nullptr) - seconds, 0};
        const timespec times[] = {at, at};
        utimensat(AT_FDCWD, lockFile().c_str(), times, 0);
    }

    ToolWorld world;
};

TEST_F(CheckTest, TellsProgramsHowTheRosterStands)
{
    const Json first = world.json("check");
    EXPECT_EQ(first.at("sound"), true);
    EXPECT_EQ(first.at("lock"),
        Json({{"held", false}, {"process", nullptr}, {"markerAge", nullptr}, {"staleMarker", false}}));
    EXPECT_EQ(first.at("holders"), Json({{"processes", Json::array()}, {"unseen", 0}, {"problem", nullptr}}));
    EXPECT_THAT(first.at("notices").at("file").get<std::string>(), HasSubstr("/roster-notices"));
    EXPECT_EQ(first.at("notices").at("problem"), nullptr);
    EXPECT_EQ(first.at("versions").at("database"), 0.03);
    EXPECT_EQ(first.at("versions").at("lastSavedBy"), first.at("versions").at("library"));
    EXPECT_EQ(first.at("versions").at("sqlite"), sqlite3_libversion());
    EXPECT_EQ(first.at("versions").at("collationIsOurs"), true);

    changeRoster(world.roster(), {"+Bo"});
    const Json second = world.json("check");
    EXPECT_EQ(second.at("versions").at("commit"), first.at("versions").at("commit").get<int>() + 1);
    EXPECT_EQ(second.at("versions").at("store"), first.at("versions").at("store"));
}

TEST_F(CheckTest, NamesTheProcessesThatHaveTheStoreOpen)
{
    RunningTool watch(world, "watch");
    ASSERT_TRUE(watch.waitForErr("watching"));
    const Json processes = world.json("check").at("holders").at("processes");
    ASSERT_EQ(processes.size(), 1U) << processes;
    EXPECT_EQ(processes[0].at("name"), "roster");
    // That very process: ended, it is gone from the list.
    ::kill(processes[0].at("id").get<pid_t>(), SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
    EXPECT_EQ(world.json("check").at("holders").at("processes"), Json::array());
}

TEST_F(CheckTest, SaysWhomItWaitsFor)
{
    const auto [process, number] = holder();
    RunningTool check(world, "--json check", "check");
    const std::string who = "held by process " + std::to_string(number) + " (";
    EXPECT_TRUE(check.waitForErr(who)) << check.err();
    EXPECT_FALSE(check.hasEnded());
    std::filesystem::remove(world.path("holder"));
    EXPECT_EQ(check.wait(), 0);
    const Json lock = Json::parse(check.out()).at("lock");
    EXPECT_EQ(lock.at("held"), true);
    EXPECT_EQ(lock.at("process").at("id"), number);
}

TEST_F(CheckTest, TellsTheMarkerOfAWriterThatWasKilled)
{
    const auto [process, number] = holder();
    process->kill(SIGKILL);
    process->wait();
    const Json lock = world.json("check").at("lock");
    EXPECT_EQ(lock.at("held"), false);
    EXPECT_EQ(lock.at("staleMarker"), true);
    EXPECT_EQ(lock.at("process"), Json({{"id", number}, {"name", nullptr}}));
    EXPECT_EQ(world.json("check").at("lock").at("staleMarker"), false) << "opening takes it over";
}

TEST_F(CheckTest, JudgesAMarkerWithoutANumberByItsAge)
{
    const struct {
        int age;
        bool isHeld;
    } cases[] = {{0, true}, {100, true}, {200, false}};
    for (const auto& [age, isHeld] : cases) {
        mark(age);
        const auto lock = zrStandingOfFileLock(lockFile());
        ASSERT_TRUE(lock);
        EXPECT_EQ(lock->isHeld, isHeld) << age;
        EXPECT_EQ(lock->hasStaleMarker(), !isHeld) << age;
        EXPECT_FALSE(lock->process) << age;
    }
    EXPECT_THAT(world.tool("check").out, HasSubstr("left by a process that does not say which"));
}

TEST_F(CheckTest, LookingAtALockMakesNoFile)
{
    const auto lock = zrStandingOfFileLock(world.path("nowhere/.database.lock"));
    EXPECT_TRUE(lock && !lock->isHeld && !lock->markerAge);
    EXPECT_FALSE(std::filesystem::exists(world.path("nowhere")));
}

TEST_F(CheckTest, TellsWhenNoticesCannotBeHeard)
{
    auto start = world.start("--json check");
    const auto runtime = world.path("run");
    std::filesystem::create_directories(runtime + "/roster-notices");
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    start.environment["XDG_RUNTIME_DIR"] = runtime;
    const auto ended = run(start);
    EXPECT_EQ(ended.status, 0) << ended.err;
    const Json notices = Json::parse(ended.out).at("notices");
    EXPECT_EQ(notices.at("file"), runtime + "/roster-notices");
    EXPECT_TRUE(notices.at("problem").is_string());
}

TEST_F(CheckTest, TellsWhenTheNextSyncIs)
{
    constexpr platform::Date newYear2100{4102444800};
    const auto scheduler = platform::Scheduler::shared();
    ASSERT_TRUE(scheduler->schedule("/bin/true", {}, newYear2100, "org.quillon.Roster.sync", "tricklesync"));
    EXPECT_THAT(world.json("check").at("sync").at("next").get<std::string>(), HasSubstr("2100-01-01"));
    ASSERT_TRUE(scheduler->remove("org.quillon.Roster.sync", "tricklesync"));
    EXPECT_EQ(world.json("check").at("sync").at("next"), nullptr);
    EXPECT_EQ(world.json("--default ZRDisableSync=true check").at("sync").at("enabled"), false);
}

TEST_F(CheckTest, EndsWithOneWhereTheStoreIsNotSound)
{
    sqlite3* store = nullptr;
    ASSERT_EQ(sqlite3_open((world.roster() + "/Roster-v22.zrosdb").c_str(), &store), SQLITE_OK);
    EXPECT_EQ(
        sqlite3_exec(store, "UPDATE contact_index SET stringForIndexing = 'x'", nullptr, nullptr, nullptr),
        SQLITE_OK);
    sqlite3_close(store);
    const auto ended = world.tool("check");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("text index"));
    EXPECT_THAT(ended.out, HasSubstr("File lock"));
}

} // namespace

} // namespace test
