// Which process of this user holds a name: a kernel lock on a file of that name in the run-time directory.
#include "platform/files/NamedClaim.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/PlainFileName.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace platform {

Result<std::optional<NamedClaim>> NamedClaim::take(std::string_view name)
{
    constexpr mode_t privateFile = 0600;
    const auto directory = Directories::current()->runtime();
    if (!directory)
        return directory.error();
    const std::string path = *directory + "/" + plainFileName(name) + ".claim";
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
