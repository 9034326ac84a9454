// What is left of a store when its writer is killed at any moment?
#include "objectstore/Generations.h"
#include "support/FaultyVfs.h"
#include "support/Forked.h"
#include "support/SQL.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

namespace {

using namespace test;

constexpr int kKills = 300;
constexpr int kKillsInCommit = 50;
constexpr int kSaves = 8;
/// What a writer says when it stands inside a commit, waiting to be killed.
constexpr int kInCommit = -1;

/// A process that saves generation after generation and tells each one that was saved.
class Writer {
public:
    /// With `stopAt`, it stops for ever at that write or sync, counted over its saves.
    Writer(const std::string& path, int stopAt)
    {
        int ends[2];
        if (pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        _child = forkAmongSleepers();
        if (_child == 0) {
            close(ends[0]);
            work(path, stopAt, ends[1]);
            _exit(0);
        }
        close(ends[1]);
        _pipe = ends[0];
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer()
    {
        close(_pipe);
        waitpid(_child, nullptr, 0);
    }

    /// Waits until the writer stands in a commit or has ended, at most so long; then kills it. Answers
    /// whether it stood in a commit.
    bool killAfter(std::chrono::microseconds most)
    {
        const auto end = std::chrono::steady_clock::now() + most;
        bool isInCommit = false;
        for (auto left = most; !isInCommit && left.count() > 0;
             left = std::chrono::duration_cast<std::chrono::microseconds>(
                 end - std::chrono::steady_clock::now())) {
            const timespec time{left.count() / 1000000, left.count() % 1000000 * 1000};
            pollfd ready{_pipe, POLLIN, 0};
            if (ppoll(&ready, 1, &time, nullptr) > 0 && !hear(isInCommit))
                break;
        }
        kill(_child, SIGKILL);
        while (hear(isInCommit)) { }
        return isInCommit;
    }

    /// The last generation that it said was saved.
    int told() const { return _told; }

private:
    bool hear(bool& isInCommit)
    {
        int word = 0;
        if (::read(_pipe, &word, sizeof word) != sizeof word)
            return false;
        word == kInCommit ? static_cast<void>(isInCommit = true) : static_cast<void>(_told = word);
        return true;
    }

    static void work(const std::string& path, int stopAt, int pipe)
    {
        const auto tell = [pipe](int word) { return ::write(pipe, &word, sizeof word) == sizeof word; };
        FaultyVfs vfs;
        const Store store(path);
        const auto context = store.makeContext();
        Generations generations(context);
        const int before = Generations::generationOf(generations.read());
        int calls = 0;
        const auto stop = [&](FaultyVfs::Operation operation, std::string_view) {
            const bool isOfCommit =
                operation == FaultyVfs::Operation::write || operation == FaultyVfs::Operation::sync;
            if (isOfCommit && ++calls == stopAt) {
                tell(kInCommit);
                for (;;)
                    pause();
            }
            return SQLITE_OK;
        };
        for (int g = before + 1; g <= before + kSaves; ++g) {
            generations.write(g);
            vfs.setHook(stop);
            const auto saved = context->save();
            vfs.letPass();
            if (!saved || !tell(g))
                _exit(1);
        }
    }

    pid_t _child = -1;
    int _pipe = -1;
    int _told = 0;
};

class Kill : public testing::Test {
protected:
    /// The store opens, is sound, and holds all of the last save or, when that was under way, of the next.
    void check(const Writer& writer)
    {
        ASSERT_EQ(runSQL(path, "PRAGMA integrity_check"), "ok");
        const Store store(path);
        const auto lines = Generations(store.makeContext()).read();
        const int now = Generations::generationOf(lines);
        ASSERT_NE(now, -1) << "a half save: " << testing::PrintToString(lines);
        const int least = std::max(generation, writer.told());
        EXPECT_GE(now, least) << "a save that was told is lost";
        EXPECT_LE(now, least + 1);
        generation = now;
    }

    Dice dice{51};
    const std::string path = freshPath();
    int generation = 0;
};

TEST_F(Kill, LeavesEverySaveWholeAtAnyMoment)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    std::chrono::microseconds run;
    {
        const auto start = std::chrono::steady_clock::now();
        Writer unharmed(path, 0);
        unharmed.killAfter(std::chrono::minutes(1));
        run = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
        check(unharmed);
        ASSERT_EQ(generation, kSaves);
    }
    for (int i = 0; i < kKills - kKillsInCommit && !HasFailure(); ++i) {
        Writer writer(path, 0);
        writer.killAfter(std::chrono::microseconds(dice.below(static_cast<std::size_t>(run.count()))));
        check(writer);
    }
    EXPECT_GT(generation, kSaves * 20) << "the kills came before there was anything to lose";
}

TEST_F(Kill, LeavesEverySaveWholeInsideACommit)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    for (int i = 0; i < kKillsInCommit && !HasFailure(); ++i) {
        Writer writer(path, static_cast<int>(1 + dice.below(60)));
        ASSERT_TRUE(writer.killAfter(std::chrono::minutes(1))) << "no commit was so long";
        check(writer);
    }
}

} // namespace
