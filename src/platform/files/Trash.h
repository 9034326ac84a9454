// Where removed things go when the user may want them back: the desktop's trash.
#pragma once

#include "platform/value/Error.h"

#include <string>

namespace platform {

/// Moves a file or directory to the trash, as the freedesktop.org trash specification 1.0 says: to the one in
/// the user's data home, or, from another file system, to ".Trash-UID" at its top. Answers where it lies now.
/// On an error it lies where it was.
Result<std::string> moveToTrash(const std::string& path);

} // namespace platform
