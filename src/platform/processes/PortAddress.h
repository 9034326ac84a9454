// Where the name of a port lives in the file system.
#pragma once

#include "platform/value/Error.h"

#include <string>
#include <string_view>

namespace platform {

/// The socket of the port called `name`, in the user's run-time directory. Refused where that directory is,
/// and where the path is longer than a socket's can be.
Result<std::string> portSocketPath(std::string_view name);

} // namespace platform
