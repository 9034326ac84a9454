// When the sync tool is started, scheduled or left alone after a save, and what is told of it.
#include "store/ZRSyncManager.h"

#include "core/ZRInfo.h"
#include "store/RosterWorld.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include "platform/files/Files.h"
#include "platform/files/Preferences.h"
#include "platform/files/UserDefaults.h"
#include "platform/processes/Scheduler.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace test {

namespace {

using platform::Date;
using platform::Result;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char noTool[] = "Sync would have been attempted, but the sync tool could not be located.";
constexpr char attempt[] = "Could not launch sync task: ";

/// Keeps one command, and counts how often it was asked to forget.
class FakeScheduler final : public platform::Scheduler {
public:
    struct Command {
        std::string program;
        std::vector<std::string> arguments;
        double fireDate = 0;
        std::string domain, action;
    };

    Result<void> schedule(const std::string& program, const std::vector<std::string>& arguments,
        Date fireDate, const std::string& domain, const std::string& action) override
    {
        pending = {program, arguments, fireDate.seconds, domain, action};
        return {};
    }
    std::optional<Date> nextFireDate(const std::string& domain, const std::string& action) override
    {
        const bool isIts = pending && pending->domain == domain && pending->action == action;
        return isIts ? std::optional(Date{pending->fireDate}) : std::nullopt;
    }
    Result<void> remove(const std::string& domain, const std::string& action) override
    {
        if (nextFireDate(domain, action))
            pending.reset();
        return {};
    }

    std::optional<Command> pending;
};

void putProgram(const fs::path& path, std::string_view text)
{
    fs::create_directories(path.parent_path());
    ASSERT_TRUE(platform::writeFileAtomically(path.string(), text, 0700));
}

/// A program that every attempt to start it fails on, and so tells of itself at once.
void putBrokenTool(const fs::path& folder) { putProgram(folder / "RosterSync", "no program"); }

class SyncManager : public testing::Test {
protected:
    SyncManager() : _before(platform::Scheduler::install(scheduler))
    {
        fs::create_directories(folder);
        setenv("ROSTER_HELPER_DIR", folder.c_str(), 1);
    }
    ~SyncManager() override
    {
        platform::Scheduler::install(_before);
        allow();
        unsetenv("ROSTER_FRAMEWORKS_DIR");
        fs::remove_all(folder);
    }

    /// Takes back whatever forbids a sync.
    static void allow()
    {
        ZRRoster::setIsInert(false);
        ZRSyncManager::setSandboxCheck({});
        __shouldDisableSync = -1;
        platform::UserDefaults::standard().removeObjectForKey("ZRDisableSync");
    }
    bool wasAttempted() const { return log.contains(attempt); }

    ZRSyncManager& manager = ZRSyncManager::sharedSyncManager();
    const std::shared_ptr<FakeScheduler> scheduler = std::make_shared<FakeScheduler>();
    const fs::path folder = fs::temp_directory_path() / "sync helpers";
    const FakeScheduler::Command some{"/bin/true", {}, 5000, "org.quillon.Roster.sync", "tricklesync"};
    platform::LogCapture log;

private:
    const std::shared_ptr<platform::Scheduler> _before;
};

TEST_F(SyncManager, StartsTheToolAndTellsOfItsFailure)
{
    putProgram(folder / "RosterSync", "#!/bin/sh\nprintf '%s, ' \"$@\" >> \"$0.calls\"\nexit 2\n");
    manager.scheduleTrickleSync();
    ASSERT_TRUE(eventually([&] { return log.contains("RosterSync exited with 2"); }));
    EXPECT_THAT(log.lines(), ElementsAre("RosterSync exited with 2"));
    EXPECT_EQ(bytesOf(folder / "RosterSync.calls"), "--tricklesync, org.quillon.Roster, ");
    EXPECT_FALSE(scheduler->pending);
}

TEST_F(SyncManager, TellsOfExitStatusesAboveOneOnly)
{
    for (const int status : {-1, 0, 1, 2, 139})
        manager._zrSyncProcessDied(status);
    EXPECT_THAT(log.lines(), ElementsAre("RosterSync exited with 2", "RosterSync exited with 139"));
}

TEST_F(SyncManager, SchedulesAnotherTry)
{
    platform::ManualClock clock(1000);
    const platform::ClockScope scope(clock);
    putBrokenTool(folder);
    manager.scheduleTrickleSyncRetry(15);
    ASSERT_TRUE(scheduler->pending);
    EXPECT_EQ(scheduler->pending->program, folder / "RosterSync");
    EXPECT_THAT(
        scheduler->pending->arguments, ElementsAre("--tricklesync", "org.quillon.Roster", "--retry", "15"));
    EXPECT_EQ(scheduler->pending->fireDate, 1000 + 15 * 60);
    EXPECT_TRUE(manager.isSyncScheduled());
    EXPECT_FALSE(wasAttempted());
}

TEST_F(SyncManager, LeavesWhatIsScheduledToItsTime)
{
    putBrokenTool(folder);
    scheduler->pending = some;
    manager.scheduleTrickleSync();
    manager.scheduleTrickleSyncRetry(5);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(scheduler->pending->fireDate, some.fireDate);
    manager.removeExisitingSyncSchedule();
    EXPECT_FALSE(manager.isSyncScheduled());
    manager.scheduleTrickleSync();
    EXPECT_TRUE(wasAttempted());
}

TEST_F(SyncManager, StartsNothingAndRemovesTheScheduleWhereItMayNot)
{
    const std::pair<const char*, std::function<void()>> reasons[] = {
        {"override", [] { __shouldDisableSync = 1; }},
        {"preference", [] { platform::UserDefaults::standard().setBool(true, "ZRDisableSync"); }},
        {"inert", [] { ZRRoster::setIsInert(true); }},
        {"sandbox",
            [] {
                ZRSyncManager::setSandboxCheck([](const char* operation) {
                    return Result<bool>(std::string_view(operation) != "process-exec");
                });
            }},
    };
    putBrokenTool(folder);
    for (const auto& [name, forbid] : reasons) {
        forbid();
        for (const int minutes : {0, 5}) {
            scheduler->pending = some;
            manager.scheduleTrickleSyncRetry(minutes);
            EXPECT_FALSE(scheduler->pending) << name;
            EXPECT_THAT(log.lines(), IsEmpty()) << name;
        }
        allow();
    }
    manager.scheduleTrickleSync();
    EXPECT_TRUE(wasAttempted());
}

TEST_F(SyncManager, IsEnabledByTheProcessWhateverThePreferenceSays)
{
    platform::UserDefaults::standard().setBool(true, "ZRDisableSync");
    EXPECT_TRUE(ZRRoster::shouldDisableSync());
    __shouldDisableSync = 0;
    EXPECT_FALSE(ZRRoster::shouldDisableSync());
}

TEST_F(SyncManager, GoesOnWhereTheSandboxCannotBeAsked)
{
    putBrokenTool(folder);
    ZRSyncManager::setSandboxCheck([](const char*) {
        return Result<bool>(platform::Error{"Sandbox", 1, "nobody answers"});
    });
    manager.scheduleTrickleSync();
    EXPECT_THAT(
        log.lines(), ElementsAre("sandbox_check error: nobody answers", testing::StartsWith(attempt)));
}

TEST_F(SyncManager, FindsTheToolAmongOurProgramsOrTheFrameworks)
{
    const auto frameworks = folder / "frameworks",
               inBundle = frameworks / "RosterSync.app/Contents/Tools/RosterSync";
    manager.scheduleTrickleSync();
    manager.scheduleTrickleSyncRetry(1);
    EXPECT_THAT(log.lines(), ElementsAre(noTool, noTool));
    EXPECT_FALSE(scheduler->pending);

    setenv("ROSTER_FRAMEWORKS_DIR", frameworks.c_str(), 1);
    EXPECT_EQ(ZRSyncManager::toolPath(), std::nullopt);
    putProgram(inBundle, "no program");
    EXPECT_EQ(ZRSyncManager::toolPath(), inBundle);
    putBrokenTool(folder);
    EXPECT_EQ(ZRSyncManager::toolPath(), folder / "RosterSync");
}

const Role tellsClient("tell the sync client", [](const Words& words) {
    if (!words.empty())
        platform::Preferences::shared().setArgument("ZRAlternateDataStoreDirectory", Value(words.at(0)));
    return ZRSyncManager::clientID();
});

TEST(SyncClient, IsNamedAfterADirectoryThatIsNotTheDefaultOne)
{
    const Home home;
    EXPECT_EQ(home.play("tell the sync client").answer, "org.quillon.Roster");
    EXPECT_EQ(home.play("tell the sync client", {home.rosterDirectory()}).answer, "org.quillon.Roster");
    EXPECT_EQ(home.play("tell the sync client", {"/else/where/"}).answer, "org.quillon.Roster:/else/where");
}

Ref<ZRRoster> rosterFor(const std::string& how)
{
    if (how == "in memory")
        return ZRRoster::emptyMemoryBackedRoster();
    if (how == "elsewhere")
        return ZRRoster::rosterWithDatabaseDirectory(openShared()->databaseDirectory() + "/other");
    return how == "clone" ? openShared()->parallelUniverseRoster() : openShared();
}

/// Saves a new card once, and ends at once.
const Role saves("save and be synchronised", [](const Words& words) {
    const std::string& how = words.at(0);
    const auto roster = rosterFor(how);
    if (how != "nothing new")
        person(roster, {{kZRFirstNameProperty, "Ana"}});
    return std::string(roster->saveAndTriggerSync(how != "without sync", {}) ? "saved" : "not saved");
});

TEST(SyncAfterASave, IsOfTheSharedRosterAndWhatSharesItsStore)
{
    const std::pair<const char*, bool> ways[] = {{"shared", true}, {"clone", true}, {"nothing new", false},
        {"without sync", false}, {"elsewhere", false}, {"in memory", false}};
    for (const auto& [how, isSynchronised] : ways) {
        const Home home;
        putBrokenTool(home.path() / "helpers");
        const auto outcome = test::play(
            "save and be synchronised", {how}, home.stage({{"ROSTER_HELPER_DIR", home.path() / "helpers"}}));
        EXPECT_EQ(outcome.answer, "saved") << how;
        EXPECT_EQ(outcome.log.find(attempt) != std::string::npos, isSynchronised) << how << "\n"
                                                                                  << outcome.log;
    }
}

constexpr int manySaves = 200;

const Role savesOften("save often", [](const Words&) {
    const auto roster = openShared();
    for (int i = 0; i < manySaves; ++i) {
        person(roster, {{kZRFirstNameProperty, "Ana"}});
        roster->save();
    }
    return std::string();
});

TEST(SyncAfterASave, IsOneForManySavesInARow)
{
    const Home home;
    putBrokenTool(home.path() / "helpers");
    const auto outcome =
        test::play("save often", {}, home.stage({{"ROSTER_HELPER_DIR", home.path() / "helpers"}}));
    int attempts = 0;
    for (std::size_t at = 0; (at = outcome.log.find(attempt, at)) != std::string::npos; ++at)
        ++attempts;
    EXPECT_GE(attempts, 1);
    EXPECT_LT(attempts, manySaves / 2);
}

TEST(SyncAnchors, AreTheTextThatTheInfoRecordKeeps)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    EXPECT_EQ(textOf(roster->syncAnchors()), "absent");
    for (const auto& [anchor, expected] : {std::pair<Value, const char*>{"unsynched", "absent"},
             {{}, "{org.quillon.contacts.Contact = \"\"; }"},
             {"a-7", "{org.quillon.contacts.Contact = \"a-7\"; }"}}) {
        roster->setSyncAnchorsFromString(anchor);
        EXPECT_EQ(textOf(roster->syncAnchors()), expected);
    }
    const auto info = locked(*roster, ZRAccess::read, [&]() ZR_NTS { return roster->nts_Info(); });
    EXPECT_EQ(info->valueForProperty("SyncAnchor"), Value("a-7"));
}

} // namespace

} // namespace test
