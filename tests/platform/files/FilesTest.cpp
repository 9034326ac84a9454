// Files are whole or not there, private, and named by one spelling.
#include "platform/files/Files.h"

#include "platform/files/Directories.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cerrno>

using namespace platform;
using namespace test;
using testing::ElementsAre;

namespace {

class FileWriting : public testing::Test {
protected:
    ~FileWriting() override { setFileFault({}); }
    TemporaryFolder folder;
};

TEST_F(FileWriting, ReplacesAFileByAPrivateOne)
{
    put(folder / "f", "old");
    std::filesystem::permissions(folder / "f", std::filesystem::perms::all);
    const std::string bytes("new\0bytes", 9);
    EXPECT_TRUE(writeFileAtomically(folder / "f", bytes));
    EXPECT_EQ(bytesOf(folder / "f"), bytes);
    EXPECT_EQ(modeOf(folder / "f"), 0600U);
    EXPECT_THAT(folder.names(), ElementsAre("f"));
}

// Every step may fail: with an old file there, and without.
TEST_F(FileWriting, LeavesTheFormerFileAndNothingElseWhenAStepFails)
{
    for (const bool isThere : {true, false})
        for (const auto failing : {FileStep::create, FileStep::write, FileStep::sync, FileStep::rename}) {
            const TemporaryFolder place;
            if (isThere)
                put(place / "f", "old");
            setFileFault([&](FileStep step, const std::string&) { return step == failing ? ENOSPC : 0; });
            const auto written = writeFileAtomically(place / "f", "new");
            const auto where = testing::Message()
                << "step " << int(failing) << (isThere ? " over a file" : "");
            ASSERT_FALSE(written) << where;
            EXPECT_EQ(written.error().code, ENOSPC) << where;
            EXPECT_THAT(written.error().text, testing::HasSubstr(place / "f")) << where;
            EXPECT_EQ(bytesOf(place / "f"), isThere ? "old" : "(none)") << where;
            EXPECT_EQ(place.names().size(), isThere ? 1U : 0U) << where;
        }
}

TEST_F(FileWriting, TellsOfAFileThatMayNotSurviveAPowerCut)
{
    setFileFault([](FileStep step, const std::string&) { return step == FileStep::syncDirectory ? EIO : 0; });
    EXPECT_FALSE(writeFileAtomically(folder / "f", "new"));
}

// More files than are written together; the last one fails.
TEST_F(FileWriting, WritesManyFilesAndLeavesEachWholeWhenOneFails)
{
    std::vector<FileContents> files;
    for (int i = 0; i < 150; ++i)
        files.push_back({folder / std::to_string(i), "old"});
    ASSERT_TRUE(writeFilesAtomically(files));
    for (auto& file : files) {
        EXPECT_EQ(bytesOf(file.path), "old");
        file.bytes = "new";
    }
    setFileFault([&](FileStep step, const std::string& path) {
        return step == FileStep::sync && path == files.back().path ? EIO : 0;
    });
    const auto written = writeFilesAtomically(files);
    ASSERT_FALSE(written);
    EXPECT_THAT(written.error().text, testing::HasSubstr(files.back().path));
    EXPECT_EQ(bytesOf(files.front().path), "new");
    EXPECT_EQ(bytesOf(files.back().path), "old");
    EXPECT_EQ(folder.names().size(), files.size()) << "nothing is left beside them";
}

TEST_F(FileWriting, FollowsTheUsersLink)
{
    put(folder / "elsewhere/f", "old");
    std::filesystem::create_symlink(folder / "elsewhere/f", folder / "link");
    EXPECT_TRUE(writeFileAtomically(folder / "link", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(bytesOf(folder / "elsewhere/f"), "new");
}

TEST_F(FileWriting, RefusesAPlaceThatIsNone)
{
    EXPECT_EQ(writeFileAtomically(folder / "missing/f", "x").error().code, ENOENT);
    std::filesystem::create_directory(folder / "d");
    EXPECT_FALSE(writeFileAtomically(folder / "d", "x"));
    EXPECT_THAT(folder.names(), ElementsAre("d"));
}

// Such files say that they are empty.
TEST(FileReading, ReadsFilesWhoseLengthIsNotKnown)
{
    const auto status = readFile("/proc/self/status");
    ASSERT_TRUE(status);
    EXPECT_THAT(*status, testing::HasSubstr("Pid:"));
}

TEST(FileReading, SaysWhyThereIsNothing)
{
    const TemporaryFolder folder;
    EXPECT_EQ(readFile(folder / "f").error(),
        (Error{"File", ENOENT, (folder / "f") + ": cannot open: No such file or directory"}));
    EXPECT_EQ(readFile(folder.path()).error().code, EISDIR);
}

TEST(PrivateDirectories, AreMadeWithAllAboveThem)
{
    const TemporaryFolder folder;
    const auto before = umask(0);
    EXPECT_TRUE(makePrivateDirectory(folder / "a//b/c/"));
    EXPECT_TRUE(makePrivateDirectory(folder / "a/b"));
    umask(before);
    EXPECT_EQ(modeOf(folder / "a"), 0700U);
    EXPECT_EQ(modeOf(folder / "a/b/c"), 0700U);
    put(folder / "file", "");
    EXPECT_EQ(makePrivateDirectory(folder / "file/d").error().code, EEXIST);
}

TEST(FileRemoval, TakesWholeTreesAndMindsNothingMissing)
{
    const TemporaryFolder folder;
    put(folder / "d/e/f", "x");
    put(folder / "g", "x");
    std::filesystem::create_symlink(folder / "g", folder / "d/link");
    EXPECT_TRUE(removeFile(folder / "d"));
    EXPECT_TRUE(removeFile(folder / "d"));
    EXPECT_THAT(folder.names(), ElementsAre("g"));
}

TEST(StandardizedPath, HasOneSpelling)
{
    const auto home = Directories::current()->home();
    const struct {
        const char* given;
        std::string expected;
    } cases[] = {
        {"/a/b", "/a/b"},
        {"/a//b///", "/a/b"},
        {"/a/./b/.", "/a/b"},
        {"/a/../b/c/..", "/b"},
        {"/../..", "/"},
        {"//", "/"},
        {"", ""},
        {"a/../b/", "a/../b"},
        {"./", "."},
        {"~", home},
        {"~/x/", home + "/x"},
        {"~x/y", "~x/y"},
        {"/a/~", "/a/~"},
        {"/...", "/..."},
    };
    for (const auto& [given, expected] : cases)
        EXPECT_EQ(standardizedPath(given), expected) << given;
}

} // namespace
