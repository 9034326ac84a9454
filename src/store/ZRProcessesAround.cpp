// Which other processes there are, and which of them have a file open: as /proc tells.
#include "store/ZRProcessesAround.h"

#include "platform/files/Files.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Process = ZRRosterStanding::Process;

constexpr char kProcesses[] = "/proc";

/// Nothing for an entry that is no process.
std::optional<std::int64_t> numberOf(const fs::path& entry)
{
    constexpr std::size_t mostDigits = 10;
    const std::string name = entry.filename().string();
    const bool isNumber = !name.empty() && name.size() <= mostDigits
        && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? std::optional(std::stoll(name)) : std::nullopt;
}

bool isOfThisUser(const fs::path& process)
{
    struct stat status { };
    return stat(process.c_str(), &status) == 0 && status.st_uid == geteuid();
}

/// Whether the process has that file open; absent when that is not shown.
std::optional<bool> hasOpen(const fs::path& process, const struct stat& file)
{
    std::error_code failure;
    fs::directory_iterator at(process / "fd", failure);
    if (failure)
        return {};
    for (; !failure && at != fs::directory_iterator(); at.increment(failure)) {
        struct stat opened { };
        if (stat(at->path().c_str(), &opened) == 0 && opened.st_dev == file.st_dev
            && opened.st_ino == file.st_ino)
            return true;
    }
    return false;
}

/// A process that ended while it was looked at hides nothing.
bool isThere(const fs::path& process)
{
    std::error_code ignored;
    return fs::exists(process, ignored);
}

} // namespace

Process zrProcessNumbered(std::int64_t process)
{
    const auto name = platform::readFile(std::string(kProcesses) + "/" + std::to_string(process) + "/comm");
    return {process, name ? name->substr(0, name->find('\n')) : std::string()};
}

ZRRosterStanding::Holders zrHoldersOfFile(const std::string& path)
{
    ZRRosterStanding::Holders holders;
    struct stat file { };
    std::error_code failure;
    fs::directory_iterator at(kProcesses, failure);
    if (failure || stat(path.c_str(), &file) != 0) {
        holders.problem = failure ? std::string(kProcesses) + " cannot be read" : path + " is not there";
        return holders;
    }
    for (; !failure && at != fs::directory_iterator(); at.increment(failure)) {
        const auto number = numberOf(at->path());
        if (!number || *number == getpid() || !isOfThisUser(at->path()))
            continue;
        const auto has = hasOpen(at->path(), file);
        if (has && *has)
            holders.processes.push_back(zrProcessNumbered(*number));
        else if (!has && isThere(at->path()))
            ++holders.unseen;
    }
    std::ranges::sort(holders.processes, {}, &Process::id);
    return holders;
}
