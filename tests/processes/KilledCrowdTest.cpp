// What is left when processes are killed while they and others edit one roster?
#include "processes/Crowd.h"

#include <csignal>
#include <iostream>

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

/// Editors of which some are killed again and again, each at a moment that nobody chose.
class KilledCrowd : public testing::Test {
protected:
    std::size_t bytesLogged(int editor) const
    {
        std::error_code missing;
        const auto size = fs::file_size(crowd.logOf(editor), missing);
        return missing ? 0 : size;
    }

    /// Lets it save a few times, then kills it.
    void kill(Crowd::Editor& editor)
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
        if (saves.empty())
            return;
        // An editor of whom the roster knows nothing never had a save that returned.
        const Json number = numbers.value(cardOf(saves), Json{{"saves", 0}, {"commit", 0}});
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
    std::vector<Crowd::Editor> survivors, victims;
    for (std::size_t i = 0; i < kSurvivors; ++i)
        survivors.push_back(crowd.startEditor(0));
    for (std::size_t i = 0; i < kVictims; ++i)
        victims.push_back(crowd.startEditor(0));
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        SCOPED_TRACE("kill " + std::to_string(i));
        Crowd::Editor& victim = victims[dice() % victims.size()];
        kill(victim);
        victim = crowd.startEditor(0);
    }
    for (auto& victim : victims)
        kill(victim);
    crowd.raise("stop");
    const std::vector<Json> told = crowd.end(survivors);
    const Json file = crowd.ask("look");
    Replay replay;
    for (int editor = 0; editor < crowd.editors(); ++editor)
        addSaves(replay, editor, file.at("numbers"));
    EXPECT_EQ(disagreements(replay, file, told), "");
    std::cout << kills << " kills, " << replay.count() << " saves, " << untold
              << " of them committed and told to nobody\n";
}

} // namespace
