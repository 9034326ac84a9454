// What is left when processes are killed while they and others edit one roster?
#include "processes/Crowd.h"

#include "platform/files/FileDescriptor.h"
#include "store/ZRProcessSharedLock.h"

#include <csignal>
#include <iostream>
#include <sqlite3.h>
#include <sys/file.h>

#include <gtest/gtest.h>

namespace {

using namespace test;

#ifdef SLOW_BUILD
constexpr int kUsualKills = 24;
#else
constexpr int kUsualKills = 60;
#endif
constexpr std::size_t kSurvivors = 2, kVictims = 4;
constexpr std::size_t kMostSavesBefore = 6;
constexpr std::size_t kMostMicroseconds = 12'000;

/// Tries the lock, in a process of its own, and tells whether it was free.
const Role triesSharedLock("try the shared lock", [](const Words&) {
    return Json(platform::makeRef<ZRProcessSharedLock>("org.quillon.Roster.ManyProcesses")->tryLock()).dump();
});

bool isFileLockFree(const std::string& path)
{
    const platform::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    return file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

bool isDatabaseFree(const std::string& path)
{
    sqlite3* connection = nullptr;
    const bool isFree =
        sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK
        && sqlite3_exec(connection, "BEGIN EXCLUSIVE; ROLLBACK", nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(connection);
    return isFree;
}

/// Editors of which some are killed again and again, each at a moment that nobody chose.
class KilledCrowd : public testing::Test {
protected:
    struct Editor {
        int number;
        std::unique_ptr<Process> process;
    };

    Editor start()
    {
        const int number = crowd.editors();
        return {number, crowd.startEditor(0)};
    }

    std::size_t bytesLogged(int editor) const
    {
        std::error_code missing;
        const auto size = fs::file_size(crowd.logOf(editor), missing);
        return missing ? 0 : size;
    }

    /// Lets it save a few times, then kills it.
    void kill(Editor& editor)
    {
        constexpr std::size_t bytesPerSave = 150;
        const std::size_t bytes = 1 + dice() % kMostSavesBefore * bytesPerSave;
        waitUntil("editor " + std::to_string(editor.number) + " has saved",
            [&] { return bytesLogged(editor.number) >= bytes || editor.process->hasEnded(); });
        ::usleep(static_cast<useconds_t>(dice() % kMostMicroseconds));
        ASSERT_FALSE(editor.process->hasEnded()) << editor.process->wait().err;
        editor.process->kill(SIGKILL);
        editor.process->wait();
    }

    /// Puts the saves of one editor into the replay. `number` is what the roster keeps of its last one.
    void addSaves(Replay& replay, int editor, const Json& numbers)
    {
        const auto saves = readSaveLog(crowd.logOf(editor));
        if (saves.empty() || !numbers.contains(cardOf(saves)))
            return addWithout(replay, saves);
        const Json& number = numbers.at(cardOf(saves));
        const auto kept = number.at("saves").get<std::size_t>();
        ASSERT_LE(kept, saves.size());
        for (std::size_t i = 0; i < saves.size(); ++i) {
            if (saves[i].commit) {
                ASSERT_LT(i, kept) << "a save that had returned true is lost";
                replay.add(saves[i], *saves[i].commit);
            } else if (i < kept) {
                replay.add(saves[i], number.at("commit").get<std::int64_t>());
                ++untold;
            }
        }
    }

    /// An editor of whom the roster knows nothing never had a save that returned.
    static void addWithout(Replay& replay, const std::vector<LoggedSave>& saves)
    {
        for (const auto& save : saves)
            if (save.commit) {
                ADD_FAILURE() << "a save that had returned true is lost: " << save.edits;
                replay.add(save, *save.commit);
            }
    }

    /// The card that keeps the editor's number: the last edit of each save sets it.
    static std::string cardOf(const std::vector<LoggedSave>& saves)
    {
        return saves.front().edits.back().at("set").get<std::string>();
    }

    Crowd crowd;
    std::mt19937 dice{20261121};
    int untold = 0;
};

TEST_F(KilledCrowd, GoesOnAndKeepsEverySaveThatReturned)
{
    const int kills = chosenSize("ROSTER_KILLS", kUsualKills);
    std::vector<Editor> survivors, victims;
    for (std::size_t i = 0; i < kSurvivors; ++i)
        survivors.push_back(start());
    for (std::size_t i = 0; i < kVictims; ++i)
        victims.push_back(start());
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        SCOPED_TRACE("kill " + std::to_string(i));
        Editor& victim = victims[dice() % victims.size()];
        kill(victim);
        victim = start();
    }
    for (auto& victim : victims)
        kill(victim);

    crowd.raise("stop");
    for (const auto& survivor : survivors)
        waitUntil("the survivors have saved", [&] {
            return crowd.isRaised("saved " + std::to_string(survivor.number)) || survivor.process->hasEnded();
        });
    crowd.raise("all saved");
    std::vector<Json> told;
    for (const auto& survivor : survivors)
        told.push_back(toldBy(*survivor.process));

    const std::string store = crowd.home().storeFile().string();
    EXPECT_TRUE(isFileLockFree((crowd.home().rosterDirectory() / ".database.lockN").string()));
    EXPECT_TRUE(isDatabaseFree(store));
    EXPECT_EQ(crowd.ask("try the shared lock"), Json(true));
    const Json file = crowd.ask("look");
    EXPECT_EQ(file.at("problems"), Json::array());
    Process::Start check{{ROSTER_TOOL, "--roster", crowd.home().rosterDirectory().string(), "check"}};
    check.environment = crowd.home().stage().environment;
    const Ended checked = run(check);
    EXPECT_EQ(checked.status, 0) << checked.out << checked.err;

    Replay replay;
    for (int editor = 0; editor < crowd.editors(); ++editor)
        addSaves(replay, editor, file.at("numbers"));
    const Lines lines = file.at("fetched");
    EXPECT_EQ(replay.differencesTo(lines), "");
    for (const auto& memory : told) {
        EXPECT_EQ(differences(memory.at("held"), linesOf(memory.at("held"), lines)), "");
        EXPECT_EQ(differences(memory.at("fetched"), lines), "");
    }
    std::cout << kills << " kills, " << replay.count() << " saves, " << untold
              << " of them committed and told to nobody\n";
}

} // namespace
