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
    std::vector<Crowd::Editor> editors;
    for (int i = 0; i < kEditors; ++i)
        editors.push_back(crowd.startEditor(saves));
    const std::vector<Json> told = crowd.end(editors);
    const Json file = crowd.ask("look");
    Replay replay;
    for (int i = 0; i < crowd.editors(); ++i)
        for (const auto& save : readSaveLog(crowd.logOf(i)))
            replay.add(save, save.commit.value());
    EXPECT_EQ(replay.count(), static_cast<std::size_t>(1 + kEditors * saves));
    EXPECT_EQ(disagreements(replay, file, told), "");
    std::cout << replay.count() << " saves left " << file.at("fetched").size() << " records\n";
}

} // namespace
