// How the lock on a step is taken and looked at.
#include "history/StepInUse.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace history {

namespace {

constexpr mode_t kPrivateFile = 0600;

platform::FileDescriptor openLockFile(const std::string& directory)
{
    if (directory.empty())
        return {};
    return platform::FileDescriptor(open(
        (directory + "/.history.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivateFile));
}

struct flock byteOf(std::int64_t step)
{
    struct flock range { };
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = step;
    range.l_len = 1;
    return range;
}

} // namespace

StepInUse::StepInUse(const std::string& directory, std::int64_t step) : _file(openLockFile(directory))
{
    struct flock range = byteOf(step);
    if (_file)
        static_cast<void>(fcntl(_file.get(), F_OFD_SETLK, &range));
}

bool StepInUse::isHeld(const std::string& directory, std::int64_t step)
{
    const auto file = openLockFile(directory);
    struct flock range = byteOf(step);
    return file && fcntl(file.get(), F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
}

} // namespace history
