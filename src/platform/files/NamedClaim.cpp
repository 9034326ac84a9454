// Which process of this user holds a name: a kernel lock on a file of that name in the run-time directory.
#include "platform/files/NamedClaim.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

#include <fmt/format.h>

namespace platform {

namespace {

/// Readable characters that stay as they are, so that people know the file; then a hash (FNV-1a) of the whole
/// name, for those that a file cannot be called by.
std::string fileNameFor(std::string_view name)
{
    constexpr std::size_t longestPart = 100;
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : name)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    std::string part(name.substr(0, longestPart));
    std::ranges::replace_if(
        part,
        [](char c) {
            return !((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.');
        },
        '-');
    return fmt::format("{}-{:016x}.claim", part, hash);
}

} // namespace

Result<std::optional<NamedClaim>> NamedClaim::take(std::string_view name)
{
    constexpr mode_t privateFile = 0600;
    const auto directory = Directories::current()->runtime();
    if (!directory)
        return directory.error();
    const std::string path = *directory + "/" + fileNameFor(name);
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, privateFile));
    if (!file)
        return fileError(path, "cannot be opened", errno);
    if (flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        return std::optional(NamedClaim(std::move(file)));
    if (errno == EWOULDBLOCK)
        return std::optional<NamedClaim>();
    return fileError(path, "cannot be locked", errno);
}

} // namespace platform
