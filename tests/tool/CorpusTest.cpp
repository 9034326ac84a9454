// Files of other programs through the tool.
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace test;

// No file crashes or hangs, and what cannot be read is refused in words.
TEST(CorpusTest, EveryFileIsReadOrRefused)
{
    const std::string folder = sharedFolder("corpus");
    if (folder.empty())
        GTEST_SKIP() << "no corpus; name its folder in ROSTER_CORPUS";
    const ToolWorld world;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        const auto ended = world.tool("--json import '" + entry.path().string() + "'");
        SCOPED_TRACE(entry.path().string() + "\n" + ended.err);
        EXPECT_LE(ended.status, 1);
        EXPECT_FALSE(Json::parse(ended.out, nullptr, false).is_discarded());
        EXPECT_EQ(ended.status == 1, !ended.err.empty());
    }
    EXPECT_EQ(world.tool("check").status, 0);
}

} // namespace
