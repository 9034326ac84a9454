// How any text becomes the name of a file.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// A file name for any text: the text itself where it is short and plain, else as much of it as is, and a sum
/// of all of it. At most 60 bytes, never hidden, never with a slash; the same text has the same name.
std::string plainFileName(std::string_view text);

} // namespace platform
