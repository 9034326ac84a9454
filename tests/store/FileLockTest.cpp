// Who gets the lock of a roster's directory, what lies there meanwhile and afterwards, and how long others
// wait.
#include "store/ZRFileLock.h"

#include "core/ZRFailure.h"
#include "store/RosterWorld.h"
#include "store/SkippingClock.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include "platform/files/FileDescriptor.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto writer = READ_WRITE_FILELOCK;
constexpr auto reader = READ_ONLY_FILELOCK;

bool acquire(ZRFileLock& lock, ZRFileLockType type = writer)
{
    return ZRAcquireFileLock(lock, type, "here", 7);
}
void release(ZRFileLock& lock, ZRFileLockType type = writer) { ZRReleaseFileLock(lock, type, "here", 7); }
bool isTaken(ZRFileLock& lock) { return ZRHaveFileLock(lock, "here", 7); }

/// With nothing to go by but files: another process answers so.
bool waitForFile(const fs::path& path)
{
    return eventually([&] { return fs::exists(path); });
}

/// Whether anybody holds the kernel lock on that file.
bool isLockedByKernel(const std::string& file)
{
    const platform::FileDescriptor look(open(file.c_str(), O_RDWR | O_CLOEXEC));
    return look && flock(look.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

void refuseKernelLocks(int code)
{
    ZRSetKernelLockFault([code](const std::string&) { return code; });
}

/// Holds the lock until it is killed. Words: the lock, the scheme.
const Role holds("hold the file lock", [](const Words& words) {
    if (words.at(1) == "old")
        refuseKernelLocks(ENOLCK);
    ZRFileLock lock;
    ZRInitFileLock(lock, words.at(0), 0, false);
    if (acquire(lock))
        std::ofstream(words.at(0) + ".held");
    for (;;)
        pause();
    return std::string();
});

/// Counts in a file, which goes wrong as soon as two do so at once. Words: the lock, the counter, how often.
const Role counts("count under the file lock", [](const Words& words) {
    ZRFileLock lock;
    ZRInitFileLock(lock, words.at(0), 0, false);
    for (int i = 0; i < std::stoi(words.at(2)); ++i) {
        acquire(lock);
        int number = 0;
        std::ifstream(words.at(1)) >> number;
        std::ofstream(words.at(1)) << number + 1;
        release(lock);
    }
    return std::string();
});

class FileLock : public testing::Test {
protected:
    FileLock() { fs::create_directories(folder); }
    ~FileLock() override
    {
        ZRSetKernelLockFault({});
        fs::remove_all(folder);
    }

    void init(std::int32_t timeout = 0) { ZRInitFileLock(lock, path, timeout, false); }

    /// An empty marker that was touched at that time.
    void mark(double time) const
    {
        std::ofstream(path).flush();
        const timespec at{static_cast<time_t>(time), 0};
        const timespec times[] = {at, at};
        utimensat(AT_FDCWD, path.c_str(), times, 0);
    }

    static time_t timeOf(const fs::path& file)
    {
        struct stat found { };
        stat(file.c_str(), &found);
        return found.st_mtime;
    }

    Process start(const std::string& role, const Words& words) const
    {
        Process::Start how{.words = {"/proc/self/exe", "--play=" + role}};
        how.words.insert(how.words.end(), words.begin(), words.end());
        return Process(how);
    }

    const fs::path folder = fs::temp_directory_path() / "locks";
    const std::string path = folder / ".database.lock", pathN = path + "N";
    ZRFileLock lock;
};

TEST_F(FileLock, ShowsItsHolderAndKeepsTheFileOfTheKernelLock)
{
    init();
    std::string own = std::to_string(getpid()) + "\n" + '\0';
    own.resize(10, ' ');
    ino_t first = 0;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(acquire(lock));
        EXPECT_EQ(bytesOf(path), own);
        EXPECT_EQ(bytesOf(pathN), own);
        for (const auto& file : {path, pathN})
            EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write) << file;
        release(lock);
        EXPECT_FALSE(fs::exists(path));
        EXPECT_EQ(bytesOf(pathN), std::string(10, ' '));
        struct stat file { };
        stat(pathN.c_str(), &file);
        EXPECT_TRUE(first == 0 || file.st_ino == first) << "round " << round;
        first = file.st_ino;
    }
}

TEST_F(FileLock, LeavesNoMarkerForAReader)
{
    init();
    ASSERT_TRUE(acquire(lock, reader));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(lock.lockfd < 0, false);
    release(lock, reader);
}

TEST_F(FileLock, IsHeldForAllThreadsAndMayBeReleasedByAnother)
{
    init();
    ASSERT_TRUE(acquire(lock));
    std::thread([this] { EXPECT_TRUE(isTaken(lock)); }).join();
    bool wasReleased = false, gotItAfterwards = false;
    std::thread next([&, this] { gotItAfterwards = acquire(lock) && wasReleased; });
    std::thread([&, this] {
        wasReleased = true;
        release(lock);
    }).join();
    next.join();
    EXPECT_TRUE(gotItAfterwards);
    EXPECT_TRUE(isTaken(lock));
    release(lock);
    EXPECT_FALSE(isTaken(lock));
}

TEST_F(FileLock, LetsOneProcessInAtATime)
{
    constexpr int rounds = 300;
    const std::string counter = folder / "counter";
    const Words words{path, counter, std::to_string(rounds)};
    auto one = start("count under the file lock", words), other = start("count under the file lock", words);
    EXPECT_EQ(one.wait().status, 0);
    EXPECT_EQ(other.wait().status, 0);
    EXPECT_EQ(bytesOf(counter), std::to_string(2 * rounds));
    EXPECT_TRUE(fs::exists(pathN)) << "somebody went over to the old scheme";
}

TEST_F(FileLock, IsFreeWhenItsHolderWasKilled)
{
    auto holder = start("hold the file lock", {path, "new"});
    ASSERT_TRUE(waitForFile(path + ".held"));
    EXPECT_TRUE(isLockedByKernel(pathN));
    holder.kill(SIGKILL);
    holder.wait();
    EXPECT_EQ(bytesOf(path).size(), 10U) << "the marker is still there";
    init();
    ASSERT_TRUE(acquire(lock));
    EXPECT_FALSE(lock.useOldMechanism);
    EXPECT_TRUE(isLockedByKernel(pathN));
    release(lock);
    EXPECT_FALSE(isLockedByKernel(pathN));
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(FileLock, OutlivesAHolderKilledInTheOldSchemeByTheTimeout)
{
    auto holder = start("hold the file lock", {path, "old"});
    ASSERT_TRUE(waitForFile(path + ".held"));
    holder.kill(SIGKILL);
    holder.wait();
    ASSERT_EQ(bytesOf(path), "");
    SkippingClock clock(static_cast<double>(timeOf(path)));
    init(10);
    EXPECT_TRUE(acquire(lock));
    EXPECT_THAT(clock.sleeps, ElementsAre(2, 3, 4, 5));
    release(lock);
}

// One that waits for a file that is removed meanwhile would be alone with its lock on it.
TEST_F(FileLock, IsNotHeldOnARemovedFile)
{
    init();
    int asked = 0;
    ZRSetKernelLockFault([&](const std::string& file) {
        if (++asked == 1)
            unlink(file.c_str());
        return 0;
    });
    ASSERT_TRUE(acquire(lock));
    struct stat held {
    }, there{};
    fstat(lock.lockfd, &held);
    ASSERT_EQ(stat(pathN.c_str(), &there), 0);
    EXPECT_EQ(held.st_ino, there.st_ino);
    release(lock);
}

TEST_F(FileLock, GoesByTheMarkerAloneOnceAVolumeRefusedTheKernelLock)
{
    for (const int code : {EOPNOTSUPP, ENOTSUP, EWOULDBLOCK, EHOSTUNREACH, ENOLCK}) {
        init();
        refuseKernelLocks(code);
        ASSERT_TRUE(acquire(lock)) << code;
        EXPECT_FALSE(fs::exists(pathN)) << code;
        EXPECT_EQ(bytesOf(path), "") << code;
        release(lock);
        EXPECT_FALSE(fs::exists(path)) << code;

        ZRSetKernelLockFault({});
        ASSERT_TRUE(acquire(lock));
        EXPECT_FALSE(fs::exists(pathN)) << "after " << code << " it went back";
        release(lock);
    }
}

TEST_F(FileLock, IsRefusedAndLeftFreeWhereItsFileCannotBeUsed)
{
    init();
    refuseKernelLocks(EIO);
    EXPECT_FALSE(acquire(lock));
    EXPECT_EQ(errno, EIO);
    EXPECT_FALSE(isTaken(lock));
    ZRSetKernelLockFault({});
    ZRInitFileLock(lock, folder / "missing/lock", 0, false);
    EXPECT_FALSE(acquire(lock));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(isTaken(lock));
}

TEST_F(FileLock, RefusesARecordThatWasTamperedWith)
{
    init();
    lock.lockfd = 0;
    EXPECT_THROW(acquire(lock), ZRInvalidArgument);
    EXPECT_FALSE(isTaken(lock));
}

TEST_F(FileLock, BreaksAnOldMarkerWithoutSleeping)
{
    SkippingClock clock(1e9);
    for (const auto type : {writer, reader}) {
        std::ofstream(pathN).flush();
        mark(clock.now() - 160);
        init();
        EXPECT_TRUE(acquire(lock, type));
        EXPECT_TRUE(lock.useOldMechanism);
        EXPECT_FALSE(fs::exists(pathN));
        EXPECT_EQ(fs::exists(path), type == writer);
        release(lock, type);
        EXPECT_THAT(clock.sleeps, IsEmpty());
    }
}

TEST_F(FileLock, IsWaitedForWhileItsMarkerIsTouchedUntilAWriterGoesAhead)
{
    for (const auto type : {writer, reader}) {
        SkippingClock clock(1e9);
        mark(clock.now());
        clock.afterSleep = [&] { mark(clock.now()); };
        init(6);
        EXPECT_EQ(acquire(lock, type), type == writer);
        EXPECT_THAT(clock.sleeps, ElementsAre(2, 3, 4, 5, 6));
        EXPECT_EQ(isTaken(lock), type == writer);
        if (type == writer)
            release(lock);
    }
}

TEST_F(FileLock, IsGrantedAsSoonAsTheMarkerGoes)
{
    SkippingClock clock(1e9);
    mark(clock.now());
    clock.afterSleep = [&] {
        if (clock.sleeps.size() == 2)
            ZRDeleteFileLock(lock);
    };
    init();
    EXPECT_TRUE(acquire(lock, reader));
    EXPECT_THAT(clock.sleeps, ElementsAre(2, 3));
    release(lock, reader);
}

TEST_F(FileLock, TellsThatItsHolderLives)
{
    init();
    mark(1e9);
    ZRUpdateFileLockTime(lock);
    EXPECT_GT(timeOf(path), 1e9);
}

const Role tellsAll("tell all about the file lock", [](const Words& words) {
    ZRFileLock lock;
    const auto begin = [&](ZRFileLockType type, int fault) {
        refuseKernelLocks(fault);
        ZRInitFileLock(lock, words.at(0), 0, true);
        if (acquire(lock, type)) {
            isTaken(lock);
            release(lock, type);
        }
        isTaken(lock);
    };
    begin(writer, 0);
    begin(reader, 0);
    begin(writer, EIO);
    begin(writer, ENOLCK);
    SkippingClock clock(1e12);
    std::ofstream(words.at(0)).flush();
    begin(reader, 0);
    std::ofstream(words.at(0)).flush();
    begin(writer, 0);
    acquire(lock);
    ZRDeleteFileLock(lock);
    release(lock);
    return std::string();
});

TEST_F(FileLock, TellsWhatItDoesWhenAsked)
{
    const std::string log = play("tell all about the file lock", {path}).log;
    for (const std::string operation : {"locking READ_WRITE_FILELOCK", "locking READ_ONLY_FILELOCK",
             "releasing READ_WRITE_FILELOCK", "have file lock YES", "have file lock NO"})
        EXPECT_THAT(log, HasSubstr(":\t" + operation + " 'here':7->'.database.lock'\n"));
    for (const std::string step : {"NewAcquireFileLock:\twaiting for READ_WRITE_FILELOCK\n",
             "NewAcquireFileLock:\twaiting for READ_ONLY_FILELOCK\n",
             "NewAcquireFileLock:\tgot READ_WRITE_FILELOCK\n",
             "NewAcquireFileLock:\tCounldn't acquire the lock (5:'Input/output error')******\n",
             "NewAcquireFileLock:\tlooks like we should use old locking mechamism (O_EXLOCK not supported "
             "37:'No locks available')******\n",
             "NewAcquireFileLock:\tlooks like we should use old locking mechamism size == 0\n",
             "OldAcquireLock:\tdiff is ", "OldAcquireLock:\tgot lock\n",
             "OldReleaseFileLock:\t2 No such file or directory******\n"})
        EXPECT_THAT(log, HasSubstr("\t__ZR" + step));
    EXPECT_THAT(log, testing::ContainsRegex("ZRAcquireFileLock [A-Z][a-z]+ [A-Z][a-z]+ .*:\tlocking"));
}

/// How often something asks for the lock of the roster's directory.
const Role asksForLock("count who asks for the file lock", [](const Words&) {
    int asked = 0;
    ZRSetKernelLockFault([&](const std::string&) { return ++asked, 0; });
    const auto times = [&](const auto& what) {
        asked = 0;
        what();
        return " " + std::to_string(asked);
    };
    Ref<ZRRoster> roster, other;
    std::string answer = "open" + times([&] { roster = openShared(); });
    const auto edit = [](const Ref<ZRRoster>& in) { person(in, {{kZRFirstNameProperty, "Ana"}}); };
    const auto nts_Save = [](ZRRoster& in) {
        return locked(in, ZRAccess::write, [&]() ZR_NTS { return in.nts_Save(); });
    };
    answer += ", nothing to save" + times([&] { nts_Save(*roster); });
    edit(roster);
    answer += ", nts_Save" + times([&] { nts_Save(*roster); });
    edit(roster);
    answer += ", save" + times([&] { roster->save(); });
    edit(roster);
    answer += ", without it" + times([&] {
        locked(*roster, ZRAccess::write, [&]() ZR_NTS { return roster->nts_SaveWithFileLock(false); });
    });
    answer += roster->hasUnsavedChanges() ? " unsaved" : "";
    const auto memory = ZRRoster::emptyMemoryBackedRoster();
    edit(memory);
    answer += ", in memory" + times([&] { nts_Save(*memory); });
    const auto elsewhere = roster->databaseDirectory() + "/elsewhere";
    answer += ", open another" + times([&] { other = ZRRoster::rosterWithDatabaseDirectory(elsewhere); });
    edit(other);
    answer += ", save it" + times([&] { nts_Save(*other); });
    const auto twin = ZRRoster::rosterWithDatabaseDirectory(roster->databaseDirectory());
    answer += twin->nts_FileLock() == &ZRRoster::zrFileLock() ? ", one record" : ", two records";
    answer += other->nts_FileLock() != &ZRRoster::zrFileLock() ? " a directory" : " for all";
    return answer + (ZRHaveFileLock(ZRRoster::zrFileLock(), "", 0) ? ", still held" : ", free");
});

TEST(FileLockOfARoster, IsTakenToOpenAndByTheSavesThatAskForIt)
{
    EXPECT_EQ(Home().play("count who asks for the file lock").answer,
        "open 1, nothing to save 0, nts_Save 1, save 0, without it 0, in memory 0, open another 1, save it "
        "1, one record a directory, free");
}

const Role opensWithoutLock("open without the file lock", [](const Words&) {
    refuseKernelLocks(EIO);
    ZRRoster::setShouldCreateEmptyDatabase(true);
    const std::string answer = ZRRoster::sharedRoster() ? "a roster, " : "no roster, ";
    return answer + ZRRoster::openingReport();
});

TEST(FileLockOfARoster, IsNeededToOpenIt)
{
    const Home home;
    const auto outcome = home.play("open without the file lock");
    EXPECT_EQ(outcome.answer,
        "no roster, " + (home.rosterDirectory() / ".database.lockN").string()
            + ": cannot be locked: Input/output error");
    EXPECT_THAT(outcome.log, HasSubstr("-[ZRRoster sharedRoster] Can't ZRACQUIRE_FILE_LOCK "));
    EXPECT_FALSE(fs::exists(home.storeFile()));
}

TEST_F(FileLock, OfARosterIsNeededToSave)
{
    const auto roster = ZRRoster::rosterWithDatabaseDirectory(folder.string());
    person(roster, {{kZRFirstNameProperty, "Ana"}});
    refuseKernelLocks(EIO);
    EXPECT_FALSE(locked(*roster, ZRAccess::write, [&]() ZR_NTS { return roster->nts_Save(); }));
    EXPECT_TRUE(roster->hasUnsavedChanges());
    EXPECT_THAT(roster->lastSaveError().text, HasSubstr("/.database.lockN: cannot be locked: "));
}

} // namespace

} // namespace test
