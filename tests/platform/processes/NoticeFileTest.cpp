// What is left of the notice file when posters die, bytes go bad and files are replaced, and what a listener
// makes of it.
#include "platform/processes/NoticeFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstring>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

using namespace platform;
using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string recordOf(const std::string& name, Value userInfo = {})
{
    return *encodeNotice({name, std::nullopt, std::move(userInfo)});
}

void append(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

class NoticeFileTest : public testing::Test {
protected:
    NoticeFileTest() { EXPECT_TRUE(tail.startAtEnd()); }
    ~NoticeFileTest() override { unlink(path.c_str()); }

    void post(const std::string& name, Value userInfo = {})
    {
        const auto posted = appendNotice(path, recordOf(name, std::move(userInfo)));
        ASSERT_TRUE(posted) << posted.error().text;
    }

    /// Everything up to the present end. A listener that goes round in a circle fails.
    std::vector<std::string> heard()
    {
        std::vector<std::string> names;
        missed = false;
        for (int turn = 0; turn < 10000; ++turn) {
            const auto batch = tail.read();
            missed = missed || batch.missed;
            for (const auto& notice : batch.notices)
                names.push_back(notice.name);
            if (!batch.more)
                return names;
        }
        ADD_FAILURE() << "no end of reading";
        return names;
    }

    const std::string path = freshPath("notices");
    NoticeTail tail{path};
    bool missed = false;
};

TEST(NoticeFormTest, ComesBackAsPosted)
{
    const DistributedNotification notices[] = {
        {"name", std::nullopt, {}},
        {"", "", {}},
        {"ünïcode", "a/b", Value::dictionary({{"ids", Value::array({"1", "2"})}, {"pid", 7}, {"on", true}})},
        {"large", "x", Value(std::string(kLargestNotice - 200, 'x'))},
    };
    for (const auto& notice : notices) {
        const auto bytes = encodeNotice(notice);
        ASSERT_TRUE(bytes) << bytes.error().text;
        const auto followed = *bytes + "rest";
        const auto record = frontNotice(followed);
        ASSERT_EQ(record.state, NoticeRecord::State::whole) << notice.name;
        EXPECT_EQ(record.length, bytes->size());
        const auto read = decodeNotice(record.payload);
        ASSERT_TRUE(read) << notice.name;
        EXPECT_EQ(read->name, notice.name);
        EXPECT_EQ(read->object, notice.object);
        EXPECT_TRUE(read->userInfo == notice.userInfo) << notice.name;
    }
}

TEST(NoticeFormTest, RefusesWhatNobodyWouldRead)
{
    const Value infos[] = {Value(std::string(kLargestNotice, 'x')),
        Value::dictionary({{"null", NullMarker()}}), Value::array(std::vector<Value>(20000, Value(true)))};
    for (const auto& info : infos)
        EXPECT_FALSE(encodeNotice({"n", std::nullopt, info}));
}

TEST_F(NoticeFileTest, IsPrivateAndHeardFromTheEndOn)
{
    post("before");
    NoticeTail second(path);
    ASSERT_TRUE(second.startAtEnd());
    post("after");
    EXPECT_THAT(heard(), ElementsAre("before", "after"));
    ASSERT_EQ(second.read().notices.size(), 1U);
    EXPECT_EQ(modeOf(path), 0600U);
}

// A poster may die after any byte: behind the last whole record, or before it moved the end.
TEST_F(NoticeFileTest, CutsATailTornAtAnyByte)
{
    const auto torn = recordOf("torn", "with something in it");
    post("first");
    ASSERT_THAT(heard(), ElementsAre("first"));
    for (std::size_t length = 1; length <= torn.size(); ++length) {
        const auto before = bytesOf(path).size();
        append(path, torn.substr(0, length));
        ASSERT_THAT(heard(), IsEmpty()) << length;
        post("next");
        ASSERT_THAT(heard(), ElementsAre("next")) << length;
        ASSERT_FALSE(missed) << length;
        ASSERT_EQ(bytesOf(path).size(), before + recordOf("next").size()) << length;
    }
}

TEST_F(NoticeFileTest, PassesOverADamagedRecordWhateverByteIsBad)
{
    const auto record = recordOf("bad"), good = recordOf("good");
    for (std::size_t at = 0; at < record.size(); ++at) {
        ASSERT_TRUE(tail.startAtEnd());
        const auto start = bytesOf(path).size();
        post("good");
        post("bad");
        post("lost");
        auto bytes = bytesOf(path);
        bytes[start + good.size() + at] ^= 0x55;
        put(path, bytes);
        ASSERT_THAT(heard(), ElementsAre("good")) << at;
        ASSERT_TRUE(missed) << at;
        post("later");
        ASSERT_THAT(heard(), ElementsAre("later")) << at;
        ASSERT_FALSE(missed) << at;
    }
}

// A record of a newer version: sound, but nothing that this one can read.
TEST_F(NoticeFileTest, LeavesOutARecordThatSaysNothingToIt)
{
    const std::string payload = "bplist?? what is this";
    std::uint32_t head[3] = {0, static_cast<std::uint32_t>(payload.size()), 2166136261U};
    std::memcpy(&head[0], recordOf("a").data(), sizeof head[0]);
    for (const char byte : payload)
        head[2] = (head[2] ^ static_cast<unsigned char>(byte)) * 16777619U;
    post("a");
    ASSERT_TRUE(appendNotice(path, std::string(reinterpret_cast<const char*>(head), sizeof head) + payload));
    post("b");
    EXPECT_THAT(heard(), ElementsAre("a", "b"));
    EXPECT_FALSE(missed);
}

TEST_F(NoticeFileTest, BeginsAnewWhenTheHeaderIsBad)
{
    for (std::size_t i = 0; i < 5; ++i) {
        post("before");
        heard();
        const auto bytes = bytesOf(path);
        const std::string damaged[5] = {"????" + bytes.substr(4), bytes.substr(0, NoticeHeader::kLength - 1),
            bytes.substr(0, NoticeHeader::kLength + 1), "", std::string(bytes.size(), '\0')};
        put(path, damaged[i]);
        ASSERT_THAT(heard(), IsEmpty()) << i;
        post("after");
        const auto names = heard();
        // What was heard from the new file, or at least that something was missed.
        ASSERT_TRUE(missed || names == std::vector<std::string>{"after"}) << i;
        post("later");
        ASSERT_THAT(heard(), ElementsAre("later")) << i;
    }
}

class NoticeRotationTest : public NoticeFileTest {
protected:
    /// Posts numbers until `files` new files were begun.
    void fill(int files)
    {
        const std::string weight(100000, 'x');
        for (auto before = inode(); files > 0; before = inode()) {
            post(std::to_string(posted++), Value(weight));
            files -= inode() != before;
        }
    }

    ino_t inode() const
    {
        struct stat info { };
        return stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
    }

    int posted = 0;
};

TEST_F(NoticeRotationTest, FinishesTheOldFileBeforeTheNew)
{
    for (int round = 0, next = 0; round < 3; ++round) {
        fill(1);
        const auto names = heard();
        EXPECT_FALSE(missed);
        for (const auto& name : names)
            ASSERT_EQ(name, std::to_string(next++));
        EXPECT_EQ(next, posted);
        EXPECT_LE(bytesOf(path).size(), kLargestNoticeFile);
    }
}

TEST_F(NoticeRotationTest, SaysThatItMissedWholeFiles)
{
    fill(3);
    const auto names = heard();
    EXPECT_TRUE(missed);
    EXPECT_EQ(names.front(), "0");
    EXPECT_EQ(names.back(), std::to_string(posted - 1));
    EXPECT_LT(names.size(), static_cast<std::size_t>(posted));
    post("later");
    EXPECT_THAT(heard(), ElementsAre("later"));
    EXPECT_FALSE(missed);
}

TEST_F(NoticeRotationTest, SaysThatItMissedAFileThatWasRemoved)
{
    post("a");
    heard();
    unlink(path.c_str());
    post("b");
    EXPECT_THAT(heard(), ElementsAre("b"));
    EXPECT_TRUE(missed);
}

TEST_F(NoticeFileTest, TellsEqualOnesInARowOnce)
{
    for (const auto* name : {"a", "a", "a", "b", "a"})
        post(name);
    EXPECT_THAT(heard(), ElementsAre("a", "b", "a"));
}

TEST_F(NoticeFileTest, ReadsAPieceAtATime)
{
    for (int i = 0; i < 2000; ++i)
        post(std::to_string(i), Value(std::string(100, 'x')));
    const auto batch = tail.read();
    EXPECT_TRUE(batch.more);
    EXPECT_LT(batch.notices.size(), NoticeTail::kPiece / 100);
    EXPECT_EQ(heard().back(), "1999");
}

TEST_F(NoticeFileTest, GivesUpOnAPosterThatWasStopped)
{
    const int other = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    const auto posted = appendNotice(path, recordOf("late"));
    ASSERT_FALSE(posted);
    EXPECT_EQ(posted.error().code, EWOULDBLOCK);
    close(other);
    post("now");
    EXPECT_THAT(heard(), ElementsAre("now"));
}

TEST(NoticePathTest, WritesToNothingButAFileOfItsOwn)
{
    const auto path = freshPath("not-a-file");
    const auto elsewhere = freshPath("elsewhere");
    put(elsewhere, "precious");
    const struct {
        const char* what;
        std::function<int()> make;
    } cases[] = {{"a pipe", [&] { return mkfifo(path.c_str(), 0600); }},
        {"a link", [&] { return symlink(elsewhere.c_str(), path.c_str()); }},
        {"a directory", [&] { return mkdir(path.c_str(), 0700); }}};
    for (const auto& [what, make] : cases) {
        ASSERT_EQ(make(), 0) << what;
        EXPECT_FALSE(appendNotice(path, recordOf("x"))) << what;
        EXPECT_FALSE(NoticeTail(path).startAtEnd()) << what;
        remove(path.c_str());
    }
    EXPECT_EQ(bytesOf(elsewhere), "precious");
}

} // namespace
