// Who is at the other end of a local socket, and where it is.
#pragma once

#include <algorithm>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

/// The address of a socket file, whose path is short enough.
inline sockaddr_un portAddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy_n(path.begin(), std::min(path.size(), sizeof address.sun_path - 1), address.sun_path);
    return address;
}

inline bool isSameUser(int socket)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == geteuid();
}

} // namespace platform
