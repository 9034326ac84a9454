// What is thrown away can be put back by any desktop.
#include "platform/files/Trash.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cerrno>

using namespace platform;
using namespace test;

namespace {

class TrashTest : public testing::Test {
protected:
    ~TrashTest() override { EXPECT_TRUE(removeFile(trash)); }

    std::string trash = Directories::current()->dataHome() + "/Trash";
    ManualClock clock{1'000'000'000};
    ClockScope scope{clock};
    TemporaryFolder folder;
};

TEST_F(TrashTest, KeepsTheFileAndANoteOfWhereItLay)
{
    const auto path = folder / "Zoë %1.db";
    put(path, "x");
    const auto moved = moveToTrash(path);
    ASSERT_TRUE(moved) << moved.error().text;
    EXPECT_EQ(*moved, trash + "/files/Zoë %1.db");
    EXPECT_EQ(bytesOf(*moved), "x");
    EXPECT_FALSE(fileExists(path));
    EXPECT_EQ(bytesOf(trash + "/info/Zoë %1.db.trashinfo"),
        "[Trash Info]\nPath=" + folder.path() + "/Zo%C3%AB%20%251.db\nDeletionDate=2001-09-09T01:46:40\n");
    EXPECT_EQ(modeOf(trash + "/files"), 0700U);
}

TEST_F(TrashTest, KeepsThingsOfOneNameApart)
{
    std::vector<std::string> places;
    for (const char* content : {"1", "2", "3"}) {
        put(folder / "same", content);
        places.push_back(*moveToTrash(folder / "same"));
    }
    std::filesystem::create_directories(folder / "same/inner");
    places.push_back(*moveToTrash(folder / "same/"));
    EXPECT_THAT(places,
        testing::ElementsAre(trash + "/files/same", trash + "/files/same.2", trash + "/files/same.3",
            trash + "/files/same.4"));
    EXPECT_EQ(bytesOf(places[1]), "2");
    EXPECT_TRUE(isDirectory(places[3] + "/inner"));
}

// Another program may have left a file there without its note.
TEST_F(TrashTest, NeverReplacesWhatLiesThere)
{
    put(trash + "/files/orphan", "theirs");
    put(folder / "orphan", "ours");
    EXPECT_EQ(*moveToTrash(folder / "orphan"), trash + "/files/orphan.2");
    EXPECT_EQ(bytesOf(trash + "/files/orphan"), "theirs");
    EXPECT_FALSE(fileExists(trash + "/info/orphan.trashinfo"));
}

TEST_F(TrashTest, LeavesEverythingWhereItIsWhenItCannot)
{
    EXPECT_EQ(moveToTrash(folder / "missing").error().code, ENOENT);
    EXPECT_EQ(moveToTrash("relative").error().code, EINVAL);
    EXPECT_EQ(moveToTrash("/").error().code, EINVAL);
    // The trash's place is taken by a file.
    put(folder / "f", "x");
    put(folder / "data/Trash", "");
    const std::string data = folder / "data";
    const auto before = Directories::install(makeXDGDirectories(
        [&](const char* name) { return name == std::string("XDG_DATA_HOME") ? data.c_str() : "/"; }));
    EXPECT_FALSE(moveToTrash(folder / "f"));
    Directories::install(before);
    EXPECT_EQ(bytesOf(folder / "f"), "x");
}

TEST_F(TrashTest, OfAnotherFileSystemLiesAtItsTop)
{
    struct stat here {
    }, there{};
    if (stat(folder.path().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0
        || here.st_dev == there.st_dev || access("/dev/shm", W_OK) != 0)
        GTEST_SKIP() << "there is no second file system";
    const TemporaryFolder other("/dev/shm");
    put(other / "f", "x");
    const auto moved = moveToTrash(other / "f");
    ASSERT_TRUE(moved) << moved.error().text;
    const std::string top = "/dev/shm/.Trash-" + std::to_string(geteuid());
    const auto note = top + "/info/" + moved->substr(moved->rfind('/') + 1) + ".trashinfo";
    EXPECT_TRUE(moved->starts_with(top + "/files/f"));
    EXPECT_THAT(bytesOf(note),
        testing::HasSubstr("Path=" + other.path().substr(std::string("/dev/shm/").size()) + "/f\n"));
    EXPECT_TRUE(removeFile(*moved));
    EXPECT_TRUE(removeFile(note));
    for (const char* part : {"/files", "/info", ""})
        rmdir((top + part).c_str());
}

} // namespace
