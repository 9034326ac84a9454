// What becomes of a store file that is missing, damaged, foreign, locked or out of reach: which roster there
// is, what lies in its folder afterwards, and what is told.
#include "store/RosterWorld.h"
#include "support/FaultyVfs.h"
#include "support/SQL.h"
#include "support/TemporaryFolder.h"

#include "platform/run/Log.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <functional>
#include <unistd.h>

namespace test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using Folder = std::map<std::string, std::string>;

constexpr uid_t nobody = 65534;
uid_t ordinaryUser() { return geteuid() == 0 ? nobody : 0; }

std::string describe(const Ref<ZRRoster>& roster)
{
    if (!roster)
        return "no roster";
    return std::string(roster->isMemoryBacked() ? "in memory" : "on file") + ", "
        + std::to_string(roster->people().size()) + " people";
}

/// Opens the shared roster twice, as a failure must be final, and tries to save a new card in it.
std::string openAndSave()
{
    ZRRoster::setShouldCreateEmptyDatabase(true);
    const auto roster = ZRRoster::sharedRoster();
    std::string answer = describe(roster);
    if (ZRRoster::sharedRoster() != roster)
        answer += ", another one at the second call";
    if (roster) {
        person(roster, {{kZRFirstNameProperty, "New"}});
        answer += roster->save() ? ", saves" : ", does not save";
    }
    return answer + "\n" + ZRRoster::openingReport();
}

const Role makes("make a roster", [](const Words&) {
    const auto roster = openShared();
    for (int i = 0; i < 200; ++i)
        person(roster,
            {{kZRFirstNameProperty, "Person " + std::to_string(i)},
                {kZRNoteProperty, std::string(300, 'n')}});
    return std::string(roster->save() ? "made" : "not made");
});

const Role opens("open", [](const Words&) { return openAndSave(); });

const Role opensOnFullDisk("open on a full disk", [](const Words&) {
    FaultyVfs disk;
    disk.setHook([](auto operation, auto) {
        return operation == FaultyVfs::Operation::write ? SQLITE_FULL : SQLITE_OK;
    });
    return openAndSave();
});

const Role opensOnBrokenDisk("open on a broken disk", [](const Words&) {
    FaultyVfs disk;
    disk.setHook([broken = 0](auto operation, auto) mutable {
        return operation == FaultyVfs::Operation::read && broken++ < 1 ? SQLITE_IOERR_READ : SQLITE_OK;
    });
    return openAndSave();
});

double secondsSlept = 0;

// The time-out of a minute passes at once: SQLite counts what it asked to sleep.
const Role opensInNoTime("open in no time", [](const Words&) {
    static sqlite3_vfs impatient = *sqlite3_vfs_find(nullptr);
    impatient.zName = "impatient";
    impatient.pNext = nullptr;
    impatient.xSleep = [](sqlite3_vfs*, int microseconds) {
        secondsSlept += microseconds / 1e6;
        return microseconds;
    };
    sqlite3_vfs_register(&impatient, 1);
    const std::string answer = openAndSave();
    return answer + (secondsSlept > 55 && secondsSlept < 70 ? " after a minute" : " at once");
});

constexpr char storeName[] = "Roster-v22.zrosdb";

class Opening : public testing::Test {
protected:
    /// A store with cards, all of it in its one file.
    void makeStore()
    {
        ASSERT_EQ(home.play("make a roster").answer, "made");
        runSQL(
            file, "PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode = DELETE; PRAGMA journal_mode = WAL");
        ASSERT_FALSE(fs::exists(file.string() + "-wal"));
    }

    Outcome open(const std::string& role = "open")
    {
        return test::play(role, {}, home.stage({}, ordinaryUser()));
    }

    /// Name and bytes of what lies in the folder, but for what SQLite keeps beside an open store and the file
    /// of the kernel lock, which stays.
    Folder folder() const
    {
        Folder files;
        for (const auto& entry : fs::directory_iterator(home.rosterDirectory()))
            if (const auto name = entry.path().filename().string(); name != std::string(storeName) + "-shm"
                && name != std::string(storeName) + "-wal" && name != ".database.lockN")
                files[name] = entry.is_regular_file() ? bytesOf(entry.path()) : "";
        return files;
    }

    const Home home;
    const fs::path file = home.storeFile();
};

/// A file that is no store of ours, and the word in its new name.
struct Damage {
    const char* name;
    const char* reason;
    std::function<void(const fs::path& store)> inflict;
};

void cutTo(const fs::path& store, std::uintmax_t size) { fs::resize_file(store, size); }

const Damage damages[] = {
    {"text", "corrupt", [](const fs::path& store) { put(store, std::string(20000, 'x')); }},
    {"a few bytes", "corrupt", [](const fs::path& store) { cutTo(store, 50); }},
    {"the header", "corrupt", [](const fs::path& store) { cutTo(store, 100); }},
    {"the first page", "corrupt", [](const fs::path& store) { cutTo(store, 4096); }},
    {"a part of the second page", "corrupt", [](const fs::path& store) { cutTo(store, 5000); }},
    {"one half", "corrupt", [](const fs::path& store) { cutTo(store, fs::file_size(store) / 8192 * 4096); }},
    {"all but the last page", "corrupt",
        [](const fs::path& store) { cutTo(store, fs::file_size(store) - 4096); }},
    {"all but the last byte", "corrupt",
        [](const fs::path& store) { cutTo(store, fs::file_size(store) - 1); }},
    {"a damaged schema", "corrupt",
        [](const fs::path& store) {
            std::string bytes = bytesOf(store);
            bytes.replace(100, 1000, std::string(1000, '\7'));
            put(store, bytes);
        }},
    {"another program's database", "incompatible",
        [](const fs::path& store) {
            fs::remove(store);
            runSQL(store, "CREATE TABLE album(title); INSERT INTO album VALUES('x')");
        }},
    {"a store of another model", "incompatible",
        [](const fs::path& store) {
            runSQL(store,
                "UPDATE store_meta SET value = 'table unheard_of' WHERE name IN ('schema', 'model_hash')");
        }},
};

} // namespace

// A crash while a store is made leaves an empty file.
TEST_F(Opening, MakesAStoreWhereNoneIs)
{
    for (const bool isEmpty : {true, false}) {
        SCOPED_TRACE(isEmpty ? "an empty file" : "no file");
        fs::remove_all(home.rosterDirectory());
        if (isEmpty)
            put(file, "");
        EXPECT_EQ(open().answer, "on file, 0 people, saves\n");
        EXPECT_EQ(open().answer, "on file, 1 people, saves\n");
        EXPECT_THAT(folder(), testing::ElementsAre(testing::Key(storeName)));
    }
    EXPECT_EQ(fs::status(home.rosterDirectory()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Opening, MovesWhatIsNoStoreAsideUnharmed)
{
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.name);
        fs::remove_all(home.rosterDirectory());
        makeStore();
        damage.inflict(file);
        const std::string before = bytesOf(file);
        const auto outcome = open();
        EXPECT_THAT(outcome.answer, testing::StartsWith("on file, 0 people, saves\n"));
        const std::string aside = std::string(storeName) + ".1." + damage.reason;
        EXPECT_THAT(outcome.answer, HasSubstr("it is kept as " + file.string() + ".1." + damage.reason));
        const auto files = folder();
        EXPECT_EQ(files.size(), 2U);
        EXPECT_TRUE(files.contains(aside) && files.at(aside) == before);
    }
}

TEST_F(Opening, MovesTheLogOfADatabaseWithIt)
{
    put(file, "");
    put(file.string() + "-wal", "frames");
    const auto outcome = open();
    EXPECT_THAT(outcome.answer, testing::StartsWith("on file, 0 people, saves\n"));
    EXPECT_EQ(bytesOf(file.string() + ".1.corrupt-wal"), "frames");
}

TEST_F(Opening, NumbersCorruptFiles)
{
    for (int i = 1; i <= 3; ++i) {
        put(file, "damage " + std::to_string(i) + std::string(5000, ' '));
        fs::remove(file.string() + "-wal");
        fs::remove(file.string() + "-shm");
        open();
        EXPECT_EQ(bytesOf(file.string() + "." + std::to_string(i) + ".corrupt").substr(0, 8),
            "damage " + std::to_string(i));
    }
}

TEST_F(Opening, TellsADiskThatCannotBeReadFromACorruptFile)
{
    makeStore();
    const std::string before = bytesOf(file);
    EXPECT_THAT(open("open on a broken disk").answer, testing::StartsWith("on file, 0 people, saves\n"));
    EXPECT_EQ(bytesOf(file.string() + ".1.unknown"), before);
}

TEST_F(Opening, RefusesADirectoryForGood)
{
    fs::create_directories(file);
    const auto outcome = open();
    EXPECT_EQ(outcome.answer, "no roster\n" + file.string() + " is a directory, not a roster");
    EXPECT_THAT(outcome.log, HasSubstr("Error: The Roster datafile is a directory!"));
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(Opening, RunsInMemoryOverAFileThatMayNotBeUsed)
{
    makeStore();
    const std::string before = bytesOf(file);
    for (const auto mode : {fs::perms::none, fs::perms::owner_read}) {
        fs::permissions(file, mode);
        if (ordinaryUser() == 0 && access(file.c_str(), W_OK) == 0)
            GTEST_SKIP() << "this user may do everything";
        const auto outcome = open();
        EXPECT_THAT(outcome.answer, testing::StartsWith("in memory, 0 people, does not save\n"))
            << outcome.log;
        EXPECT_THAT(outcome.answer, HasSubstr(file.string()));
        EXPECT_THAT(outcome.answer, HasSubstr("nothing will be saved"));
        EXPECT_EQ(folder(), (Folder{{storeName, before}}));
    }
}

// It cannot be locked, so nobody knows who else is at work there.
TEST_F(Opening, RefusesADirectoryThatMayNotBeUsed)
{
    makeStore();
    const std::string before = bytesOf(file);
    home.belongTo(ordinaryUser());
    fs::permissions(home.rosterDirectory(), fs::perms::none);
    const auto outcome = test::play("open", {}, {home.stage().environment, ordinaryUser()});
    fs::permissions(home.rosterDirectory(), fs::perms::owner_all);
    EXPECT_EQ(outcome.answer,
        "no roster\n" + (home.rosterDirectory() / ".database.lockN").string()
            + ": cannot be locked: Permission denied")
        << outcome.log;
    EXPECT_EQ(folder(), (Folder{{storeName, before}}));
}

TEST_F(Opening, LeavesAFullDiskAsItIs)
{
    const auto fresh = open("open on a full disk");
    EXPECT_THAT(fresh.answer, testing::StartsWith("no roster\n")) << fresh.log;
    EXPECT_THAT(fresh.answer, HasSubstr("full"));
    EXPECT_THAT(folder(), IsEmpty());

    makeStore();
    const std::string before = bytesOf(file);
    const auto full = open("open on a full disk");
    EXPECT_THAT(full.answer,
        testing::AnyOf(
            testing::StartsWith("no roster\n"), testing::StartsWith("on file, 200 people, does not save")));
    EXPECT_EQ(folder(), (Folder{{storeName, before}}));
}

TEST_F(Opening, WaitsForABusyStoreAndThenLetsItBe)
{
    makeStore();
    const std::string before = bytesOf(file);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(other, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
        SQLITE_OK);
    const auto outcome = open("open in no time");
    EXPECT_THAT(outcome.answer, testing::StartsWith("no roster\n" + file.string())) << outcome.log;
    EXPECT_THAT(outcome.answer, testing::EndsWith(" after a minute"));
    EXPECT_EQ(folder(), (Folder{{storeName, before}}));
    sqlite3_close(other);
    EXPECT_EQ(open().answer, "on file, 200 people, saves\n");
}

} // namespace test
