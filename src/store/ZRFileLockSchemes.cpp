// The two ways in which a file lock is held on the disk: by the kernel, and by a marker file and its age.
#include "store/ZRFileLockSchemes.h"

#include "core/ZRFailure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/run/Clock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <initializer_list>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using platform::FileDescriptor;

namespace {

constexpr mode_t privateFile = 0600;
constexpr int contentsSize = 10;
using Contents = std::array<char, contentsSize>;

std::function<int(const std::string&)> kernelLockFault;

std::string reason(int code) { return std::generic_category().message(code); }

/// The process id, a newline and a zero byte; blanks behind.
Contents ownContents()
{
    Contents contents;
    contents.fill(' ');
    const auto end = fmt::format_to_n(contents.begin(), contents.size() - 1, "{}\n", getpid()).out;
    *end = '\0';
    return contents;
}

/// An empty marker: somebody holds the lock by the old scheme, or did when it ended.
bool isHeldByOldScheme(const std::string& path)
{
    struct stat marker { };
    return stat(path.c_str(), &marker) == 0 && marker.st_size == 0;
}

/// These say that the volume has no kernel locks, not that something is wrong.
bool meansNoKernelLocks(int code)
{
    const auto codes = {EOPNOTSUPP, ENOTSUP, EWOULDBLOCK, EHOSTUNREACH, ENOLCK};
    return std::ranges::find(codes, code) != codes.end();
}

/// Waits for the kernel lock; 0, or the error number of its refusal.
int lockByKernel(const FileDescriptor& file, const std::string& path)
{
    if (const int code = kernelLockFault ? kernelLockFault(path) : 0)
        return code;
    while (flock(file.get(), LOCK_EX) != 0)
        if (errno != EINTR)
            return errno;
    return 0;
}

/// Whoever falls back to the old scheme removes the file, and a lock on a removed file excludes nobody.
bool isStillThere(const FileDescriptor& file, const std::string& path)
{
    struct stat held {
    }, there{};
    return fstat(file.get(), &held) == 0 && stat(path.c_str(), &there) == 0 && held.st_dev == there.st_dev
        && held.st_ino == there.st_ino;
}

/// The file with the kernel lock on it; none with `code` set.
FileDescriptor openLocked(const std::string& path, int& code)
{
    for (;;) {
        FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, privateFile));
        code = file ? lockByKernel(file, path) : errno;
        if (code != 0)
            return {};
        if (isStillThere(file, path))
            return file;
    }
}

bool goOver(ZRFileLock& lock, ZRFileLockType type)
{
    lock.useOldMechanism = true;
    unlink(lock.pathN.c_str());
    return __ZROldAcquireLock(lock, type);
}

/// Both are for the eyes of people who look into the directory; the lock holds without them.
void writeContents(const ZRFileLock& lock, int descriptor, const Contents& contents, const char* caller)
{
    if (ftruncate(descriptor, contentsSize) != 0)
        ZRFileLockNote(lock, "{}:\tftrucate:{}: '{}'******", caller, errno, reason(errno));
    std::ignore = pwrite(descriptor, contents.data(), contents.size(), 0);
}

/// A second name of `pathN` where the volume has such: a marker that is created first and written then is
/// empty for a moment, and an empty one tells others that we use the old scheme. One that is there already
/// will do.
void putMarker(const ZRFileLock& lock, const Contents& contents)
{
    if (link(lock.pathN.c_str(), lock.path.c_str()) == 0 || errno == EEXIST)
        return;
    const FileDescriptor marker(
        open(lock.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_TRUNC | O_CLOEXEC, privateFile));
    if (marker)
        std::ignore = write(marker.get(), contents.data(), contents.size());
}

bool waitForMarkerToGo(const ZRFileLock& lock, const char* caller)
{
    const auto& clock = platform::Clock::current();
    for (std::int32_t seconds = 1; seconds < lock.timeout;) {
        struct stat marker { };
        if (lstat(lock.path.c_str(), &marker) != 0)
            return true;
        const auto age = static_cast<std::int64_t>(clock.now()) - marker.st_mtime;
        ZRFileLockNote(lock, "\t{}:\tdiff is {}", caller, age);
        if (age >= lock.timeout) {
            ZRFileLockNote(lock, "\t{}:\tgot lock", caller);
            unlink(lock.path.c_str());
            return true;
        }
        ++seconds;
        clock.sleepUntil(clock.monotonic() + seconds);
    }
    return false;
}

} // namespace

void ZRSetKernelLockFault(std::function<int(const std::string& pathN)> fault)
{
    kernelLockFault = std::move(fault);
}

bool __ZRNewAcquireFileLock(ZRFileLock& lock, ZRFileLockType type)
{
    zrRequire(lock.lockfd == -1, "lock->lockfd == -1");
    ZRFileLockNote(lock, "\t{}:\twaiting for {}", __func__,
        type == READ_WRITE_FILELOCK ? "READ_WRITE_FILELOCK" : "READ_ONLY_FILELOCK");
    if (isHeldByOldScheme(lock.path)) {
        ZRFileLockNote(lock, "\t{}:\tlooks like we should use old locking mechamism size == 0", __func__);
        return goOver(lock, type);
    }
    int code = 0;
    FileDescriptor file = openLocked(lock.pathN, code);
    if (!file && meansNoKernelLocks(code)) {
        ZRFileLockNote(lock,
            "\t{}:\tlooks like we should use old locking mechamism (O_EXLOCK not supported {}:'{}')******",
            __func__, code, reason(code));
        return goOver(lock, type);
    }
    if (!file) {
        ZRFileLockNote(
            lock, "\t{}:\tCounldn't acquire the lock ({}:'{}')******", __func__, code, reason(code));
        errno = code;
        return false;
    }
    ZRFileLockNote(lock, "\t{}:\tgot READ_WRITE_FILELOCK", __func__);
    const Contents contents = ownContents();
    writeContents(lock, file.get(), contents, __func__);
    if (type == READ_WRITE_FILELOCK)
        putMarker(lock, contents);
    lock.lockfd = file.release();
    return true;
}

// The marker goes while the kernel lock still holds, lest it be that of the next holder. Unlocking comes
// before closing because a child that the host forked meanwhile keeps the file open.
void __ZRNewReleaseFileLock(const ZRFileLock& lock, ZRFileLockType type, int descriptor)
{
    if (descriptor < 0)
        return;
    const FileDescriptor file(descriptor);
    if (type == READ_WRITE_FILELOCK)
        unlink(lock.path.c_str());
    Contents blanks;
    blanks.fill(' ');
    std::ignore = pwrite(file.get(), blanks.data(), blanks.size(), 0);
    flock(file.get(), LOCK_UN);
}

bool __ZROldAcquireLock(const ZRFileLock& lock, ZRFileLockType type)
{
    const bool isGranted = waitForMarkerToGo(lock, __func__);
    if (type == READ_ONLY_FILELOCK)
        return isGranted;
    const FileDescriptor marker(
        open(lock.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, privateFile));
    return true;
}

void __ZROldReleaseFileLock(const ZRFileLock& lock, ZRFileLockType type)
{
    if (type == READ_WRITE_FILELOCK && unlink(lock.path.c_str()) != 0)
        ZRFileLockNote(lock, "\t{}:\t{} {}******", __func__, errno, reason(errno));
}
