// Directories by path or URL, and copies that report each failing step.
#include "platform/files/PathUtils.h"

#include "platform/files/Files.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace test;
using testing::HasSubstr;

namespace {

TEST(MakePath, MakesOneDirectoryOrFindsSomethingThere)
{
    const TemporaryFolder folder;
    put(folder / "file", "");
    EXPECT_TRUE(ZRPathUtils_MakePath(folder / "a", 0750));
    EXPECT_EQ(modeOf(folder / "a"), 0750U);
    EXPECT_TRUE(ZRPathUtils_MakePath(folder / "a", 0700));
    EXPECT_TRUE(ZRPathUtils_MakePath(folder / "file", 0700));
    EXPECT_FALSE(ZRPathUtils_MakePath(folder / "b/c", 0700));
    EXPECT_FALSE(ZRPathUtils_MakePath("", 0700));
}

TEST(MakePath, TakesPathsOfAtMost1024Bytes)
{
    const TemporaryFolder folder;
    auto path = folder.path();
    while (path.size() < 900)
        path += "/" + std::string(90, 'x');
    ASSERT_TRUE(ZRPathUtils_MakeCompletePath(path, 0700));
    const auto longest = path + "/" + std::string(1023 - path.size(), 'y');
    EXPECT_TRUE(ZRPathUtils_MakePath(longest, 0700));
    EXPECT_FALSE(ZRPathUtils_MakePath(longest + "y", 0700));
}

TEST(MakeCompletePath, MakesEverythingAbove)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ZRPathUtils_MakeCompletePath(folder / "a//b/c/", 0700));
    EXPECT_EQ(modeOf(folder / "a/b/c"), 0700U);
    EXPECT_TRUE(ZRPathUtils_MakeCompletePath("file://localhost" + (folder / "d%20e/f%25"), 0700));
    EXPECT_TRUE(ZRPathUtils_MakeCompletePath("file://" + (folder / "g%zz"), 0700));
    EXPECT_THAT(folder.names(), testing::ElementsAre("a", "d e", "g%zz"));
    EXPECT_TRUE(platform::isDirectory(folder / "d e/f%"));
    put(folder / "file", "");
    EXPECT_FALSE(ZRPathUtils_MakeCompletePath(folder / "file/x/y", 0700));
}

TEST(CopyFile, MakesAnExactPrivateCopyOverWhatIsThere)
{
    const TemporaryFolder folder;
    // Empty, less than a block, exactly one, and some more; over something longer and over nothing.
    for (const std::size_t size : {0, 100, 4096, 100'000})
        for (const bool isThere : {false, true}) {
            std::string bytes(size, '\0');
            for (std::size_t i = 0; i < size; ++i)
                bytes[i] = static_cast<char>(i * 7 + i / 256);
            put(folder / "from", bytes);
            std::filesystem::remove(folder / "to");
            if (isThere)
                put(folder / "to", std::string(200'000, 'x'));
            EXPECT_TRUE(ZRPathUtils_CopyFile(folder / "from", "file://" + (folder / "to")));
            EXPECT_TRUE(bytesOf(folder / "to") == bytes) << size;
            EXPECT_TRUE(isThere || modeOf(folder / "to") == 0600);
        }
}

TEST(CopyFile, ReportsTheStepThatFails)
{
    const TemporaryFolder folder;
    put(folder / "from", "x");
    std::filesystem::create_directory(folder / "d");
    const struct {
        std::string from, to;
        const char* report;
    } cases[] = {
        {folder / "missing", folder / "to", "ZRPathUtils_CopyFile can't open src: No such file"},
        {folder / "from", folder / "d", "ZRPathUtils_CopyFile can't open dst: Is a directory"},
        {folder / "from", "/dev/full", "ZRPathUtils_CopyFile can't ftruncate dst file: Invalid argument"},
        {folder / "d", folder / "to", "ZRPathUtils_CopyFile can't read from src: Is a directory"},
    };
    for (const auto& [from, to, report] : cases) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(ZRPathUtils_CopyFile(from, to));
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(report));
    }
}

} // namespace
