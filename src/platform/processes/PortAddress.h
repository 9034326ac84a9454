// Where the name of a port, or of anything else outside, lives in the file system.
#pragma once

#include "platform/value/Error.h"

#include <string>
#include <string_view>

namespace platform {

/// A file name for any text: the text itself where it is short and plain, else as much of it as is, and a sum
/// of all of it. At most 60 bytes, never hidden, never with a slash; the same text has the same name.
std::string plainFileName(std::string_view text);

/// The socket of the port called `name`, in the user's run-time directory. Refused where that directory is,
/// and where the path is longer than a socket's can be.
Result<std::string> portSocketPath(std::string_view name);

} // namespace platform
