// What is left, on disk and in memory, when any one call of a save fails?
#include "objectstore/Generations.h"
#include "objectstore/StoreErrors.h"
#include "support/FaultyVfs.h"
#include "support/Forked.h"
#include "support/SQL.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace test;
using Fault = FaultyVfs::Fault;
using Operation = FaultyVfs::Operation;

const Fault kFaults[]{
    {"WriteFails", Operation::write, SQLITE_IOERR_WRITE, false},
    {"DiskIsFull", Operation::write, SQLITE_FULL, false},
    {"SyncFails", Operation::sync, SQLITE_IOERR_FSYNC, false},
    {"TruncateFails", Operation::truncate, SQLITE_IOERR_TRUNCATE, true},
    {"LockIsBusy", Operation::lock, SQLITE_BUSY, true},
    {"LockFails", Operation::lock, SQLITE_IOERR_SHMLOCK, false},
};

/// The store as it was before the save that fails: a database and, perhaps, its write-ahead log.
struct Before {
    const char* name;
    int generation;
    /// The log is so long that the save's commit is followed by a checkpoint.
    bool checkpoints;
};

/// SQLite checkpoints after the commit that makes the log so long.
constexpr std::uintmax_t kCheckpointedLog = 1000 * 4120;

std::uintmax_t sizeOf(const std::string& path)
{
    std::error_code missing;
    const auto size = std::filesystem::file_size(path, missing);
    return missing ? 0 : size;
}

/// Written by a process that ends without closing, so that its log stays.
int writeUntil(const std::string& path, const Before& before)
{
    const pid_t child = forkAmongSleepers();
    if (child == 0) {
        const Store store(path);
        const auto context = store.makeContext();
        Generations generations(context);
        int g = 0;
        std::uintmax_t size = 0, growth = 0;
        while (before.checkpoints ? size + growth < kCheckpointedLog : g < before.generation) {
            generations.write(++g);
            if (!context->save())
                _exit(0);
            growth = sizeOf(path + "-wal") - size;
            size += growth;
        }
        _exit(g);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

class FaultyDisk : public testing::TestWithParam<std::tuple<Fault, Before>> {
protected:
    void SetUp() override
    {
        generation = writeUntil(original, std::get<Before>(GetParam()));
        ASSERT_GT(generation, 0);
    }

    std::string copy()
    {
        const std::string path = freshPath();
        for (const char* suffix : {"", "-wal"})
            if (std::filesystem::exists(original + suffix))
                std::filesystem::copy_file(original + suffix, path + suffix);
        return path;
    }

    static int generationAt(const std::string& path)
    {
        const Store store(path);
        return Generations::generationOf(Generations(store.makeContext()).read());
    }

    /// Saves with the n-th call failing; false when the save has no so many calls.
    bool saveWithFault(const Fault& fault, int n)
    {
        const std::string path = copy();
        bool hasFailed = false;
        {
            const Store store(path);
            const auto context = store.makeContext();
            Generations generations(context);
            generations.write(generation + 1);
            databaseWrites = 0;
            vfs.setHook([&, seen = 0](Operation operation, std::string_view file) mutable {
                databaseWrites += operation == Operation::write && file.ends_with(".db");
                const bool fails = operation == fault.operation && ++seen == n;
                hasFailed |= fails;
                return fails ? fault.code : SQLITE_OK;
            });
            const auto result = context->save();
            vfs.letPass();
            checkAfter(fault, hasFailed, result, path, *context, generations);
        }
        EXPECT_EQ(generationAt(path), generation + 1) << "after the store was closed and opened again";
        EXPECT_EQ(runSQL(path, "PRAGMA integrity_check"), "ok");
        return hasFailed;
    }

    void checkAfter(const Fault& fault, bool hasFailed, const platform::Result<void>& result,
        const std::string& path, os::StoreContext& context, Generations& generations)
    {
        const int onDisk = generationAt(path);
        if (result) {
            EXPECT_EQ(onDisk, generation + 1) << "the save said true";
            EXPECT_FALSE(context.hasChanges());
            return;
        }
        refused += 1;
        EXPECT_TRUE(hasFailed) << result.error().text;
        if (fault.operation != Operation::sync || onDisk != generation + 1) {
            EXPECT_EQ(onDisk, generation) << "the save said " << result.error().text;
        }
        EXPECT_TRUE(context.hasChanges());
        EXPECT_EQ(Generations::generationOf(generations.read()), generation + 1) << "unsaved edits are lost";
        const auto second = context.save();
        EXPECT_TRUE(second) << second.error().text;
        EXPECT_EQ(Generations::generationOf(generations.read()), generation + 1);
    }

    FaultyVfs vfs;
    const std::string original = freshPath();
    int generation = 0;
    int refused = 0;
    int databaseWrites = 0;
};

TEST_P(FaultyDisk, AtAnyCallOfASaveLeavesAllOfItOrNothing)
{
    const Fault& fault = std::get<Fault>(GetParam());
    int n = 1;
    for (bool hasFailed = true; hasFailed && !HasFailure(); n += hasFailed) {
        SCOPED_TRACE("call " + std::to_string(n));
        hasFailed = saveWithFault(fault, n);
    }
    // The last save met no fault, so it shows what a save does.
    EXPECT_EQ(databaseWrites > 0, std::get<Before>(GetParam()).checkpoints);
    std::cout << "calls: " << n - 1 << ", saves refused: " << refused << "\n";
    if (fault.operation != Operation::truncate) {
        EXPECT_GT(n, 1) << "the save makes no such call";
    }
    if (n > 1 && !fault.mayPass) {
        EXPECT_GT(refused, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(EachCall, FaultyDisk,
    testing::Combine(testing::ValuesIn(kFaults),
        testing::Values(Before{"ShortLog", 3, false}, Before{"LongLog", 0, true})),
    [](const auto& test) {
        return std::string(std::get<0>(test.param).name) + "With" + std::get<1>(test.param).name;
    });

} // namespace
