// Where the sync tool writes down what it did.
#include "SyncLog.h"

#include "platform/files/Directories.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"

#include <cerrno>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t longestLog = off_t(256) << 10;

std::string directory() { return platform::Directories::current()->cacheHome() + "/org.quillon.Roster"; }

/// Such as "2026-11-21T18:15:09Z".
std::string timeText()
{
    const auto now = static_cast<std::time_t>(platform::Clock::current().now());
    std::tm time{};
    char text[32] = "";
    gmtime_r(&now, &time);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &time)};
}

} // namespace

std::string syncLogPath() { return directory() + "/RosterSync.log"; }

platform::Result<void> appendToSyncLog(std::string_view line)
{
    if (auto made = platform::makePrivateDirectory(directory()); !made)
        return made.error();
    const std::string path = syncLogPath();
    const platform::FileDescriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        return platform::fileError(path, "cannot be opened", errno);
    struct stat found { };
    if (fstat(file.get(), &found) == 0 && found.st_size > longestLog && ftruncate(file.get(), 0) != 0)
        return platform::fileError(path, "cannot begin anew", errno);
    const std::string whole = timeText() + " " + std::string(line) + "\n";
    if (write(file.get(), whole.data(), whole.size()) != static_cast<ssize_t>(whole.size()))
        return platform::fileError(path, "cannot be written", errno);
    return {};
}
