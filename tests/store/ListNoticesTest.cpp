// What others change drops the lists; and how the user of the lists saves, and hears why a save failed.
#include "store/ListWorld.h"

#include "platform/notify/NotificationCenter.h"
#include "platform/run/MainQueue.h"
#include "store/ZRServices.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <unistd.h>

namespace test {

namespace {

using platform::NotificationCenter;

Value infoOf(const std::vector<std::pair<const char*, std::vector<std::string>>>& lists)
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& [key, classes] : lists) {
        std::vector<Value> ids;
        for (const auto& recordClass : classes)
            ids.emplace_back("3F2504E0-4F89-41D3-9A0C-0305E82C3301:" + recordClass);
        entries.emplace_back(key, Value::array(std::move(ids)));
    }
    return Value::dictionary(std::move(entries));
}

/// Lists whose user hears what was reset.
class HeardLists final : public ZRDBCache {
public:
    explicit HeardLists(Ref<ZRRoster> roster) : ZRDBCache(std::move(roster)) { }
    void resetCachesForPeople(bool people, bool groups, bool maintainSelection) override
    {
        ZRDBCache::resetCachesForPeople(people, groups, maintainSelection);
        heard += std::string(people ? "people " : "") + (groups ? "groups " : "")
            + (maintainSelection ? "" : "anew");
    }
    std::string heard;

private:
    ~HeardLists() override = default;
};

/// Serves the main queue until that holds; false when it did not come to hold in a minute.
bool serveUntil(const std::function<bool()>& holds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        platform::MainQueue::shared().runOnce(0.05);
    }
    return true;
}

// ---- other processes

const Role adds("add somebody", [](const Words& words) {
    const auto roster = openShared();
    named(roster, words.at(0));
    return std::string(roster->save() ? "saved" : roster->lastSaveError().text);
});

const Role lists("list while another adds", [](const Words&) {
    static_cast<void>(platform::MainQueue::shared().fileDescriptor());
    const auto roster = openShared();
    named(roster, "Bo");
    roster->save();
    const auto cache = roster->dbCache();
    const auto before = cache->allPeople();
    if (cache != ZRDBCache::sharedDBCache() || play("add somebody", {"Ana"}).answer != "saved")
        return std::string("no world");
    if (!serveUntil([&] { return cache->allPeople() != before; }))
        return std::string("kept its list");
    std::string text;
    for (const auto& name : namesOf(cache->allPeople()->records()))
        text += name + " ";
    return text;
});

// ---- saving

/// The roster of this process, whose alerts are kept, and how saves end.
struct SavingWorld {
    SavingWorld()
    {
        static_cast<void>(platform::MainQueue::shared().fileDescriptor());
        services.runAlert = [this](const ZRAlert& alert) {
            alerts += alert.messageKey
                + (alert.message.empty() || alert.title.empty() || alert.button.empty()
                            || alert.message == alert.messageKey
                        ? " without its texts; "
                        : "; ");
            onMainThread = onMainThread && platform::MainQueue::shared().isMainThread();
        };
        roster = openShared();
        cache = roster->dbCache();
    }
    void failSaves(bool fail)
    {
        services.saveMailRecents = fail ? [] { return false; } : std::function<bool()>();
    }

    ZRServices& services = ZRServices::registered();
    std::string alerts;
    std::atomic<bool> onMainThread = true;
    Ref<ZRRoster> roster;
    Ref<ZRDBCache> cache;
};

const Role savesByThreads("save by two threads", [](const Words&) {
    SavingWorld world;
    constexpr int rounds = 50;
    if (!world.cache->threadedSave())
        return std::string("nothing to save is no failure");
    const auto work = [&](const char* name) {
        for (int i = 0; i < rounds; ++i) {
            named(world.roster, name, std::to_string(i));
            world.cache->threadedSave();
        }
    };
    std::thread other([&] { work("Bo"); });
    work("Ana");
    other.join();
    if (!serveUntil([&] { return !world.roster->hasUnsavedChanges(); }))
        return std::string("never saved");
    return world.alerts;
});

const Role counts("count people", [](const Words&) { return std::to_string(openShared()->people().size()); });

const Role failsToSave("fail to save", [](const Words& words) {
    SavingWorld world;
    const std::string file = world.roster->rosterObjectStoreDatabaseFile();
    named(world.roster, "Ana");
    world.failSaves(true);
    std::string text = world.cache->nonThreadedSave() ? "saved " : "not saved ";
    if (words.at(0) == "large")
        fs::resize_file(file, fs::space(file).available / 2);
    if (words.at(0) == "locked up")
        fs::permissions(file, fs::perms::none);
    if (words.at(0) == "gone")
        fs::remove(file);
    text += world.alerts;
    world.alerts.clear();
    named(world.roster, "Bo");
    const std::size_t before = world.alerts.size();
    world.cache->threadedSave();
    if (words.at(0) == "gone") {
        world.cache->_saveFailed();
        return text + "then " + world.alerts;
    }
    if (!serveUntil([&] { return world.alerts.size() != before; }))
        return text + "then silence";
    return text + "then " + world.alerts + (world.onMainThread ? "" : "on another thread");
});

const Role savesReadOnly("save what may only be read", [](const Words&) {
    SavingWorld world;
    named(world.roster, "Bo");
    std::string text = world.cache->nonThreadedSave() ? "saved" : "not saved";
    world.cache->_threadedSave();
    platform::MainQueue::shared().drain();
    return text + (world.alerts.empty() ? ", not told" : ", " + world.alerts);
});

} // namespace

// ---- notices

TEST(ListNotices, AreToldApartByTheirIds)
{
    struct Case {
        Value info;
        const char* changed;
    };
    const char *in = kZRInsertedRecords, *up = kZRUpdatedRecords, *out = kZRDeletedRecords;
    const Case cases[] = {
        {infoOf({{in, {"ZRPerson"}}}), "people"},
        {infoOf({{up, {"ZRSubscribedPerson"}}}), "people"},
        {infoOf({{up, {"ZRPerson", "ZRSubscribedPerson"}}}), "people"},
        {infoOf({{out, {"ZRGroup"}}}), "groups"},
        {infoOf({{out, {"ZRSubscribedGroup"}}}), "groups"},
        {infoOf({{in, {"ZRGroup"}}, {out, {"ZRPerson"}}}), "people groups"},
        {infoOf({{up, {"ZRSmartGroup", "ZRInfo"}}}), ""},
        {infoOf({{in, {}}}), ""},
        {infoOf({}), "people groups"},
        {Value(), "people groups"},
        {Value::dictionary({{"ZRReloadRecords", Value(true)}}), "people groups"},
    };
    for (const auto& [info, changed] : cases) {
        bool groups = false, people = false;
        ZRDBCache::databaseChangedForUserInfo(info, groups, people);
        EXPECT_EQ(
            std::string(people ? "people" : "") + (people && groups ? " " : "") + (groups ? "groups" : ""),
            changed)
            << info.description();
    }
}

TEST(ListNotices, DropEveryList)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster(), other = ZRRoster::emptyMemoryBackedRoster();
    const auto cache = ZRDBCache::initWithRoster<HeardLists>(roster);
    const auto club = group(roster, "club");
    struct Case {
        const char* name;
        Ref<const platform::Object> about;
        Value info;
        const char* heard;
    };
    const Case cases[] = {
        {kZRDatabaseChangedExternallyNotification, roster, infoOf({{kZRUpdatedRecords, {"ZRPerson"}}}),
            "people "},
        {kZRDatabaseChangedExternallyNotification, roster, infoOf({{kZRUpdatedRecords, {"ZRSmartGroup"}}}),
            ""},
        {kZRRosterWasResetPrivateNotification, roster, Value(), "people groups anew"},
        {kZRRosterDidResetPriv, roster, Value(), "people groups anew"},
    };
    for (const auto& [name, about, info, heard] : cases) {
        const auto people = cache->allPeople(), members = cache->membersOfGroup(club);
        cache->allGroups();
        const auto late = group(roster, "late");
        NotificationCenter::shared().post({name, about, info});
        EXPECT_EQ(std::exchange(cache->heard, {}), heard) << name;
        EXPECT_NE(cache->allPeople(), people) << name;
        EXPECT_NE(cache->membersOfGroup(club), members) << name;
        EXPECT_THAT(cache->allGroups(), testing::Contains(Ref<ZRRecord>(late))) << name;
    }
    const auto people = cache->allPeople();
    NotificationCenter::shared().post({kZRRosterWasResetPrivateNotification, other, Value()});
    EXPECT_EQ(cache->allPeople(), people) << "another roster's reset";
}

TEST(ListNotices, OfAnotherProcessBringItsPeople)
{
    const Home home;
    const auto outcome = home.play("list while another adds");
    EXPECT_EQ(outcome.answer, "Ana Bo ") << outcome.log;
}

// ---- saving

TEST(ListSaving, WritesWhatSeveralThreadsSave)
{
    const Home home;
    const auto outcome = home.play("save by two threads");
    EXPECT_EQ(outcome.status, 0) << outcome.log;
    EXPECT_EQ(outcome.answer, "") << outcome.log;
    EXPECT_EQ(home.play("count people").answer, "100");
}

TEST(ListSaving, TellsTheUserWhyItFailed)
{
    constexpr uid_t nobody = 65534;
    for (const auto& [file, told] :
        {std::pair{"sound", "not saved DB_CORRUPT; then DB_CORRUPT; "},
            {"large", "not saved DB_CORRUPT; then LOW_DISK_SPACE; "}, {"gone", "not saved DB_CORRUPT; then "},
            {"locked up", "not saved DB_CORRUPT; then DB_ADJUST_PERMISSIONS; "}}) {
        const Home home;
        const auto outcome = play("fail to save", {file}, home.stage({}, geteuid() == 0 ? nobody : 0));
        EXPECT_EQ(outcome.status, 0) << file << "\n" << outcome.log;
        EXPECT_EQ(outcome.answer, told) << file << "\n" << outcome.log;
    }
}

TEST(ListSaving, IsRefusedWhereNothingMayBeWritten)
{
    const Home home;
    ASSERT_EQ(home.play("add somebody", {"Ana"}).answer, "saved");
    fs::permissions(home.storeFile(), fs::perms::owner_read);
    const auto outcome = home.play("save what may only be read");
    EXPECT_EQ(outcome.answer, "not saved, not told") << outcome.log;
}

} // namespace test
