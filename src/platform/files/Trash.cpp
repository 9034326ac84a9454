// How a file is moved to a trash directory with the note that lets it be put back.
#include "platform/files/Trash.h"

#include "platform/files/Directories.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"

#include <cerrno>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

std::string percentEncoded(std::string_view path)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    static constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string encoded;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (kPlain.find(c) != std::string_view::npos)
            encoded += c;
        else
            encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return encoded;
}

std::string note(std::string_view path)
{
    const auto now = static_cast<std::time_t>(Clock::current().now());
    std::tm local{};
    localtime_r(&now, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(path) + "\nDeletionDate=" + date + "\n";
}

/// Moves `path` into `trash`; `original` is what the note says about its place. The note comes first: it
/// reserves the name among all processes.
Result<std::string> moveInto(const std::string& trash, const std::string& path, std::string_view original)
{
    for (const char* folder : {"/files", "/info"})
        if (auto made = makePrivateDirectory(trash + folder); !made)
            return made.error();
    const auto stem = path.substr(path.rfind('/') + 1);
    for (int attempt = 1;; ++attempt) {
        const auto name = attempt == 1 ? stem : stem + "." + std::to_string(attempt);
        const auto info = trash + "/info/" + name + ".trashinfo", place = trash + "/files/" + name;
        FileDescriptor file(open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!file && errno == EEXIST)
            continue;
        if (!file)
            return fileError(info, "cannot make the note of a removed file", errno);
        const auto text = note(original);
        const bool noted =
            write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) && file.close();
        // Never over something that lies there without a note.
        if (noted && renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0)
            return place;
        const int code = errno;
        unlink(info.c_str());
        if (!noted || code != EEXIST)
            return fileError(path, "cannot move to the trash", code);
    }
}

/// The directory in which the file system of `path` begins.
std::string topOfFileSystem(const std::string& path)
{
    struct stat here {
    }, above{};
    auto top = path;
    if (lstat(path.c_str(), &here) != 0)
        return "/";
    while (top != "/") {
        const auto slash = top.rfind('/');
        const auto parent = slash == 0 ? "/" : top.substr(0, slash);
        if (stat(parent.c_str(), &above) != 0 || above.st_dev != here.st_dev)
            break;
        top = parent;
    }
    return top;
}

} // namespace

Result<std::string> moveToTrash(const std::string& given)
{
    const auto path = standardizedPath(given);
    if (!path.starts_with('/') || path == "/")
        return fileError(given, "cannot move to the trash", EINVAL);
    struct stat info { };
    if (lstat(path.c_str(), &info) != 0)
        return fileError(path, "cannot move to the trash", errno);
    auto moved = moveInto(Directories::current()->dataHome() + "/Trash", path, path);
    if (moved || moved.error().code != EXDEV)
        return moved;
    const auto top = topOfFileSystem(path);
    const auto prefix = top == "/" ? top : top + "/";
    return moveInto(prefix + ".Trash-" + std::to_string(geteuid()), path, path.substr(prefix.size()));
}

} // namespace platform
