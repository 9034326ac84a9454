// Is anything lost when many processes edit one roster at once, and when some of them are killed meanwhile?
#include "processes/Crowd.h"

#include <csignal>
#include <iostream>

#include <gtest/gtest.h>

namespace {

using namespace test;

#ifdef SLOW_BUILD
constexpr int kUsualSaves = 30, kUsualKills = 24;
#else
constexpr int kUsualSaves = 500, kUsualKills = 60;
#endif
constexpr int kEditors = 8;
constexpr std::size_t kSurvivors = 2, kVictims = 4;
constexpr std::size_t kMostSavesBefore = 6;
constexpr std::size_t kMostMicroseconds = 12'000;

/// Editors of one roster, and what they saved.
class CrowdTest : public testing::Test {
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

    /// What all editors saved, by their logs and by what the roster keeps of the last save of each.
    Replay replayOf(const Json& numbers)
    {
        Replay replay;
        for (int editor = 0; editor < crowd.editors(); ++editor)
            addSaves(replay, editor, numbers);
        return replay;
    }

    /// Saves that its log calls committed must be in the roster; the last of a killed editor may be.
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

TEST_F(CrowdTest, LosesNothingAndEverybodyEndsWithTheSame)
{
    const int saves = chosenSize("ROSTER_SAVES", kUsualSaves);
    std::vector<Crowd::Editor> editors;
    for (int i = 0; i < kEditors; ++i)
        editors.push_back(crowd.startEditor(saves));
    const std::vector<Json> told = crowd.end(editors);
    const Json file = crowd.ask("look");
    const Replay replay = replayOf(file.at("numbers"));
    EXPECT_EQ(untold, 0);
    EXPECT_EQ(replay.count(), static_cast<std::size_t>(1 + kEditors * saves));
    EXPECT_EQ(disagreements(replay, file, told), "");
    std::cout << replay.count() << " saves left " << file.at("fetched").size() << " records\n";
}

// Each at a moment that nobody chose.
TEST_F(CrowdTest, KeepsEverySaveThatReturnedWhenEditorsAreKilledAgainAndAgain)
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
    const Replay replay = replayOf(file.at("numbers"));
    EXPECT_EQ(disagreements(replay, file, told), "");
    std::cout << kills << " kills, " << replay.count() << " saves, " << untold
              << " of them committed and told to nobody\n";
}

} // namespace
