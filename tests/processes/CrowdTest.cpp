// Is anything lost when eight processes edit one roster at once?
#include "processes/Crowd.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace test;

#ifdef SLOW_BUILD
constexpr int kUsualSaves = 30;
#else
constexpr int kUsualSaves = 500;
#endif
constexpr int kEditors = 8;

TEST(Crowd, LosesNothingAndEverybodyEndsWithTheSame)
{
    const int saves = chosenSize("ROSTER_SAVES", kUsualSaves);
    Crowd crowd;
    std::vector<std::unique_ptr<Process>> editors;
    for (int i = 0; i < kEditors; ++i)
        editors.push_back(crowd.startEditor(saves));
    for (int i = 1; i <= kEditors; ++i)
        waitUntil("editor " + std::to_string(i) + " has saved", [&] {
            const bool isDone = crowd.isRaised("saved " + std::to_string(i));
            return isDone || editors[static_cast<std::size_t>(i - 1)]->hasEnded();
        });
    crowd.raise("all saved");

    std::vector<Json> told;
    for (const auto& editor : editors)
        told.push_back(toldBy(*editor));
    const Json file = crowd.ask("look");
    Replay replay;
    for (int i = 0; i < crowd.editors(); ++i)
        for (const auto& save : readSaveLog(crowd.logOf(i)))
            replay.add(save, save.commit.value());
    EXPECT_EQ(replay.count(), static_cast<std::size_t>(1 + kEditors * saves));

    const Lines lines = file.at("fetched");
    EXPECT_EQ(replay.differencesTo(lines), "");
    for (const auto& memory : told) {
        EXPECT_EQ(differences(memory.at("held"), linesOf(memory.at("held"), lines)), "");
        EXPECT_EQ(differences(memory.at("fetched"), lines), "");
    }
    EXPECT_EQ(file.at("problems"), Json::array());
    std::cout << replay.count() << " saves left " << lines.size() << " records\n";
}

} // namespace
