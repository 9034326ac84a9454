// Reading, writing and looking at files, so that a file is either the old one or the new one, never half of
// it.
#pragma once

#include "platform/value/Error.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {

/// The domain of the errors here; their code is the system's error number.
inline constexpr char kZRFileErrorDomain[] = "File";

/// The Error of the system's error number `code`: "path: what: reason".
Error fileError(std::string_view path, std::string_view what, int code);

/// The whole of a file.
Result<std::string> readFile(const std::string& path);

/// Puts `bytes` at `path`, in place of any file there. When it returns without an error they survive a power
/// cut; on an error the former file is untouched and nothing is left beside it. (Only when the very last
/// step, writing the directory to the disk, fails, does the new file lie there already.) A link is followed.
Result<void> writeFileAtomically(const std::string& path, std::string_view bytes, mode_t mode = 0600);

/// What a file is to hold; the bytes are borrowed.
struct FileContents {
    std::string path;
    std::string_view bytes;
};

/// The same for many files, which wait for the disk together instead of one after the other. On an error some
/// of them may be in place already, each of them whole.
Result<void> writeFilesAtomically(std::span<const FileContents> files, mode_t mode = 0600);

/// Makes a directory with all those above it, each new one with mode octal 700. One that exists will do.
Result<void> makePrivateDirectory(const std::string& path);

bool fileExists(const std::string& path);
bool isDirectory(const std::string& path);
bool isPlainFile(const std::string& path);

/// Removes a file, or a directory with everything in it. What is not there is removed already.
Result<void> removeFile(const std::string& path);

/// `path` without "~", doubled or last slashes, and "." parts; ".." parts are resolved in absolute paths. By
/// text alone: links are not followed.
std::string standardizedPath(std::string_view path);

/// The steps of writing a file, for tests that let one fail.
enum class FileStep { create, write, sync, rename, syncDirectory };
/// Answers the error number with which the step is to fail, or 0.
using FileFault = std::function<int(FileStep step, const std::string& path)>;
/// Asks `fault` before every step from now on; an empty one ends that. Tests only, one thread.
void setFileFault(FileFault fault);

} // namespace platform
