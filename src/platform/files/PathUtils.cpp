// Directories by path or URL, and a file copy that reports and goes on.
#include "platform/files/PathUtils.h"

#include "platform/files/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

using platform::FileDescriptor;

namespace {

constexpr std::size_t kLongestPath = 1024;
constexpr std::size_t kSmallestBlock = 4096;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string percentDecoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low < 0) {
            decoded += text[i];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

/// The plain path of a path or "file:" URL, without slashes at its end.
std::string plainPath(std::string_view url)
{
    std::string path(url);
    if (url.starts_with("file:")) {
        url.remove_prefix(5);
        if (url.starts_with("//")) // the host, if any, is this one
            url.remove_prefix(std::min(url.find('/', 2), url.size()));
        path = percentDecoded(url);
    }
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

bool makeOne(const std::string& path, mode_t mode)
{
    std::error_code failure;
    const auto absolute = std::filesystem::absolute(path, failure).string();
    if (path.empty() || failure || absolute.size() > kLongestPath)
        return false;
    struct stat info { };
    return stat(absolute.c_str(), &info) == 0 || mkdir(absolute.c_str(), mode) == 0;
}

std::optional<std::string> parentOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || path == "/")
        return std::nullopt;
    const auto end = path.find_last_not_of('/', slash);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

/// Reports the step unless it worked.
bool reported(bool worked, const char* failure)
{
    if (!worked)
        std::perror(failure);
    return worked;
}

bool copyBlocks(int from, int to, off_t size, std::size_t blockSize)
{
    bool worked = true;
    std::string block(blockSize, '\0');
    for (off_t at = 0; at < size; at += static_cast<off_t>(blockSize)) {
        const auto count = pread(from, block.data(), blockSize, at);
        worked &= reported(count >= 0, "ZRPathUtils_CopyFile can't read from src");
        for (ssize_t done = 0; done < count;) {
            const auto written =
                pwrite(to, block.data() + done, static_cast<std::size_t>(count - done), at + done);
            worked &= reported(written > 0, "ZRPathUtils_CopyFile can't write to dest");
            if (written <= 0)
                break;
            done += written;
        }
    }
    return worked;
}

} // namespace

bool ZRPathUtils_MakePath(std::string_view url, mode_t mode) { return makeOne(plainPath(url), mode); }

bool ZRPathUtils_MakeCompletePath(std::string_view url, mode_t mode)
{
    const auto path = plainPath(url);
    if (makeOne(path, mode))
        return true;
    const auto parent = parentOf(path);
    if (!parent)
        return false;
    ZRPathUtils_MakeCompletePath(*parent, mode);
    return makeOne(path, mode);
}

bool ZRPathUtils_CopyFile(std::string_view source, std::string_view destination)
{
    FileDescriptor from(open(plainPath(source).c_str(), O_RDONLY | O_CLOEXEC));
    if (!reported(bool(from), "ZRPathUtils_CopyFile can't open src"))
        return false;
    FileDescriptor to(open(plainPath(destination).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    bool worked = reported(bool(to), "ZRPathUtils_CopyFile can't open dst");
    struct stat info { };
    worked = worked && reported(fstat(from.get(), &info) == 0, "ZRPathUtils_CopyFile can't fstat src");
    worked = worked
        && reported(ftruncate(to.get(), info.st_size) == 0, "ZRPathUtils_CopyFile can't ftruncate dst file");
    worked = worked
        && copyBlocks(from.get(), to.get(), info.st_size,
            std::max(kSmallestBlock, static_cast<std::size_t>(info.st_blksize)));
    worked &= reported(to.close(), "ZRPathUtils_CopyFile can't close dest");
    worked &= reported(from.close(), "ZRPathUtils_CopyFile can't close src");
    return worked;
}
