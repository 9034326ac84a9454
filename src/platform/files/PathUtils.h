// Making the directories of a path, and copying a file, by plain paths or "file:" URLs.
#pragma once

#include <string_view>
#include <sys/types.h>

/// Makes one directory with `mode`. Answers true also when something is there already; false when it cannot
/// be made, or when the absolute path has more than 1024 bytes.
bool ZRPathUtils_MakePath(std::string_view url, mode_t mode);

/// The same with all directories above it. What was made before a failure stays.
bool ZRPathUtils_MakeCompletePath(std::string_view url, mode_t mode);

/// Copies the bytes of `source` over `destination`, which is made with mode octal 600 if missing. Each
/// failing step is reported on standard error. A failed read or write is reported and the copy goes on;
/// answers whether every step worked.
bool ZRPathUtils_CopyFile(std::string_view source, std::string_view destination);
