// Does everybody hear what was saved, also who was stopped meanwhile?
#include "processes/Crowd.h"

#include "platform/notify/NotificationCenter.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRManagedObjectContext.h"

#include <csignal>
#include <fstream>
#include <iostream>
#include <mutex>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using namespace test;

#ifdef SLOW_BUILD
constexpr int kUsualSaves = 150, kUsualSavesWhileStopped = 300;
#else
constexpr int kUsualSaves = 1000, kUsualSavesWhileStopped = 2000;
#endif
constexpr int kListeners = 4;
constexpr std::int64_t kMostBytesMore = 10 << 20;

/// Ids that observers heard of.
class Heard {
public:
    void note(const Value& info)
    {
        const std::lock_guard guard(_mutex);
        _all = _all || info[kZRReloadRecords].asBoolean();
        for (const auto& key : {zr::kZRInsertedRecords, zr::kZRUpdatedRecords})
            for (const Value& id : info[key].asArray())
                _ids.insert(std::string(id.asText()));
    }
    bool has(const std::vector<std::string>& ids)
    {
        const std::lock_guard guard(_mutex);
        return _all || std::ranges::all_of(ids, [&](const auto& id) { return _ids.contains(id); });
    }

private:
    std::mutex _mutex;
    std::set<std::string> _ids;
    bool _all = false;
};

/// Waits until its observer has heard of every card that was saved. Words: the flags' folder, its own flag.
const Role listens("listen", [](const Words& words) {
    const auto roster = openShared();
    Heard heard;
    const auto token =
        platform::NotificationCenter::shared().subscribe(kZRDatabaseChangedExternallyNotification,
            roster.get(), [&](const platform::Notification& notice) { heard.note(notice.userInfo); });
    std::ofstream(words.at(0) + "/" + words.at(1));
    const std::string file = words.at(0) + "/ids";
    waitUntil("the saves are done", [&] { return fs::exists(file); });
    const std::vector<std::string> ids = Json::parse(std::ifstream(file));
    waitUntil("every card was heard of", [&] { return heard.has(ids); });
    return fetchedLines(*roster).size() >= ids.size() ? "true" : "false";
});

/// Saves so many new cards, one by one, and answers their ids. Words: how many.
const Role savesCards("save cards", [](const Words& words) {
    const auto roster = openShared();
    Json ids = Json::array();
    for (int i = 0; i < std::stoi(words.at(0)); ++i) {
        ids.push_back(person(roster, {{zr::kZRFirstNameProperty, Value(std::to_string(i))}})->uniqueId());
        if (!roster->save())
            throw std::runtime_error(roster->lastSaveError().text);
    }
    return ids.dump();
});

TEST(Listeners, HearOfEveryRecordThatIsSaved)
{
    const Crowd crowd(1, 0);
    std::vector<std::unique_ptr<Process>> listeners;
    for (int i = 0; i < kListeners; ++i) {
        const std::string flag = "listens " + std::to_string(i);
        listeners.push_back(
            std::make_unique<Process>(crowd.start("listen", {crowd.home().path().string(), flag})));
        waitUntil(flag, [&] { return crowd.isRaised(flag) || listeners.back()->hasEnded(); });
    }
    const Json ids = crowd.ask("save cards", {std::to_string(chosenSize("ROSTER_SAVES", kUsualSaves))});
    std::ofstream(crowd.path("ids.new")) << ids.dump();
    fs::rename(crowd.path("ids.new"), crowd.path("ids"));
    for (const auto& listener : listeners)
        EXPECT_EQ(toldBy(*listener), Json(true));
}

std::int64_t residentBytes()
{
    std::int64_t pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

/// Holds every card; once the others have saved, waits until it has heard of all that by itself. Words: the
/// flags' folder.
const Role sleeps("sleep through saves", [](const Words& words) {
    const auto roster = openShared();
    const ZRRecordList held = roster->people();
    for (const auto& card : held)
        plainRecord(*card);
    const std::int64_t seen = roster->managedObjectContext()->lastSeenCommit(), before = residentBytes();
    std::ofstream(words.at(0) + "/sleeps");
    waitUntil("the others have saved", [&] { return fs::exists(words.at(0) + "/saved"); });
    waitUntilDrained(*roster);
    Lines lines;
    for (const auto& card : held)
        lines[card->uniqueId()] = plainRecord(*card).line();
    const std::int64_t after = residentBytes();
    return Json{{"held", lines}, {"grown", after - before},
        {"commits", roster->managedObjectContext()->lastSeenCommit() - seen}}
        .dump();
});

/// Words: how many saves.
const Role savesEdits("save edits", [](const Words& words) {
    const auto roster = openShared();
    const ZRRecordList cards = roster->people();
    for (int i = 0; i < std::stoi(words.at(0)); ++i) {
        cards[static_cast<std::size_t>(i) % cards.size()]->setValue(
            Value("edit " + std::to_string(i)), zr::kZRFirstNameProperty);
        if (!roster->save())
            throw std::runtime_error(roster->lastSaveError().text);
    }
    return std::string("{}");
});

TEST(Listeners, CatchUpByThemselvesWhenTheyWereStopped)
{
    const int saves = chosenSize("ROSTER_STOPPED_SAVES", kUsualSavesWhileStopped);
    const Crowd crowd(50, 0);
    Process sleeper(crowd.start("sleep through saves", {crowd.home().path().string()}));
    waitUntil("it sleeps", [&] { return crowd.isRaised("sleeps") || sleeper.hasEnded(); });
    sleeper.kill(SIGSTOP);
    crowd.ask("save edits", {std::to_string(saves)});
    crowd.raise("saved");
    sleeper.kill(SIGCONT);
    const Json told = toldBy(sleeper);
    const Lines lines = crowd.ask("look").at("fetched");
    EXPECT_EQ(differences(told.at("held"), linesOf(told.at("held"), lines)), "");
    EXPECT_GE(told.at("commits").get<int>(), saves);
#ifndef SLOW_BUILD
    EXPECT_LT(told.at("grown").get<std::int64_t>(), kMostBytesMore);
#endif
    std::cout << saves << " saves slept through, memory grown by " << told.at("grown") << " bytes\n";
}

} // namespace
