// Does a process take in what was saved while it was stopped?
#include "processes/Crowd.h"

#include "store/ZRManagedObjectContext.h"

#include <csignal>
#include <fstream>
#include <iostream>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using namespace test;

#ifdef SLOW_BUILD
constexpr int kUsualSaves = 300;
#else
constexpr int kUsualSaves = 2000;
#endif
constexpr std::int64_t kMostBytesMore = 10 << 20;

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
    const int saves = chosenSize("ROSTER_STOPPED_SAVES", kUsualSaves);
    const Crowd crowd(50, 0);
    Process sleeper(crowd.start("sleep through saves", {crowd.home().path().string()}));
    crowd.awaitFlag("sleeps", sleeper);
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
