// How the name of a port becomes a path.
#include "platform/processes/PortAddress.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/PlainFileName.h"

#include <cerrno>

#include <sys/un.h>

namespace platform {

Result<std::string> portSocketPath(std::string_view name)
{
    const auto directory = Directories::current()->runtime();
    if (!directory)
        return directory.error();
    auto path = *directory + "/" + plainFileName(name);
    if (path.size() >= sizeof(sockaddr_un::sun_path))
        return fileError(path, "is too long for a socket", ENAMETOOLONG);
    return path;
}

} // namespace platform
