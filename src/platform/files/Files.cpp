// How a file is replaced in one step, and the other simple things done with files.
#include "platform/files/Files.h"

#include "platform/files/Directories.h"
#include "platform/files/FileDescriptor.h"
#include "platform/run/NeverDestroyed.h"

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

FileFault& faultOfTest()
{
    static const NeverDestroyed<FileFault> fault;
    return *fault;
}

/// The error number with which the step has to fail, or 0.
int injected(FileStep step, const std::string& path) { return faultOfTest() ? faultOfTest()(step, path) : 0; }

/// Writes all of it, or answers the error number.
int writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return errno;
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

std::string folderOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// The file itself, where `path` is a link to one that the user keeps elsewhere.
std::string behindLinks(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : path;
}

int syncDirectory(const std::string& path)
{
    const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder && fsync(folder.get()) == 0 ? 0 : errno;
}

/// The new file beside the old one; removed unless it was put in the old one's place.
class NewFile {
public:
    explicit NewFile(const std::string& target) : _name(target + ".XXXXXX") { }
    ~NewFile()
    {
        if (_file)
            unlink(_name.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int create(mode_t mode)
    {
        _file = FileDescriptor(mkostemp(_name.data(), O_CLOEXEC));
        return _file && fchmod(_file.get(), mode) == 0 ? 0 : errno;
    }
    int write(std::string_view bytes) { return writeAll(_file.get(), bytes); }
    int sync() { return fsync(_file.get()) == 0 ? 0 : errno; }
    int renameTo(const std::string& target)
    {
        if (rename(_name.c_str(), target.c_str()) != 0)
            return errno;
        _file = FileDescriptor();
        return 0;
    }

private:
    std::string _name;
    FileDescriptor _file;
};

/// So many files are open at once.
constexpr std::size_t kWrittenTogether = 64;

struct Replacement {
    explicit Replacement(const FileContents& wanted)
        : contents(wanted), target(behindLinks(wanted.path)), file(target)
    {
    }

    const FileContents& contents;
    std::string target;
    NewFile file;
};

/// Each step for all files before the next step: what the disk has to write is then waiting for it when the
/// first of them asks, and the others find it done.
Result<void> replaceTogether(std::span<const FileContents> files, mode_t mode)
{
    std::deque<Replacement> replacements(files.begin(), files.end());
    std::string synced;
    const struct {
        FileStep step;
        const char* failure;
        std::function<int(Replacement&)> run;
    } steps[] = {
        {FileStep::create, "cannot make a new file beside it", [&](auto& r) { return r.file.create(mode); }},
        {FileStep::write, "cannot write", [](auto& r) { return r.file.write(r.contents.bytes); }},
        {FileStep::sync, "cannot write to the disk", [](auto& r) { return r.file.sync(); }},
        {FileStep::rename, "cannot replace", [](auto& r) { return r.file.renameTo(r.target); }},
        {FileStep::syncDirectory, "cannot write its directory to the disk",
            [&](auto& r) {
                const auto folder = folderOf(r.target);
                return folder == std::exchange(synced, folder) ? 0 : syncDirectory(folder);
            }},
    };
    for (const auto& [step, failure, run] : steps)
        for (auto& replacement : replacements) {
            const int fault = injected(step, replacement.contents.path);
            if (const int code = fault ? fault : run(replacement))
                return fileError(replacement.contents.path, failure, code);
        }
    return {};
}

} // namespace

Error fileError(std::string_view path, std::string_view what, int code)
{
    std::string text(path);
    text.append(": ").append(what).append(": ").append(std::generic_category().message(code));
    return {kZRFileErrorDomain, code, std::move(text)};
}

Result<std::string> readFile(const std::string& path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info { };
    if (!file || fstat(file.get(), &info) != 0)
        return fileError(path, "cannot open", errno);
    std::string bytes(static_cast<std::size_t>(std::max<off_t>(info.st_size, 0)) + 1, '\0');
    std::size_t length = 0;
    for (;;) {
        const auto count = read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            return fileError(path, "cannot read", errno);
        length += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        if (length == bytes.size())
            bytes.resize(bytes.size() * 2);
    }
    bytes.resize(length);
    return bytes;
}

Result<void> writeFileAtomically(const std::string& path, std::string_view bytes, mode_t mode)
{
    const FileContents contents{path, bytes};
    return replaceTogether({&contents, 1}, mode);
}

Result<void> writeFilesAtomically(std::span<const FileContents> files, mode_t mode)
{
    while (!files.empty()) {
        const auto few = files.first(std::min(files.size(), kWrittenTogether));
        if (auto written = replaceTogether(few, mode); !written)
            return written;
        files = files.subspan(few.size());
    }
    return {};
}

Result<void> makePrivateDirectory(const std::string& path)
{
    for (std::size_t end = 1; end <= path.size(); ++end) {
        end = std::min(path.find('/', end), path.size());
        const auto part = path.substr(0, end);
        if (mkdir(part.c_str(), 0700) == 0)
            continue;
        const int code = errno;
        if (!isDirectory(part))
            return fileError(part, "cannot make the directory", code);
    }
    return {};
}

bool fileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool isDirectory(const std::string& path)
{
    struct stat info { };
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isPlainFile(const std::string& path)
{
    struct stat info { };
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

Result<void> removeFile(const std::string& path)
{
    std::error_code failure;
    std::filesystem::remove_all(path, failure);
    if (failure)
        return fileError(path, "cannot remove", failure.value());
    return {};
}

namespace {

/// Whether nothing is to be done: no part is empty or begins with a full stop.
bool isStandard(std::string_view path)
{
    return path.size() > 1 && path.starts_with('/') && !path.ends_with('/') && path.find("//") == path.npos
        && path.find("/.") == path.npos;
}

} // namespace

// Each look at a preference asks for its path.
std::string standardizedPath(std::string_view path)
{
    if (isStandard(path))
        return std::string(path);
    std::string expanded;
    if (path == "~" || path.starts_with("~/")) {
        expanded = Directories::current()->home();
        path.remove_prefix(1);
    }
    expanded += path;

    const bool absolute = expanded.starts_with('/');
    std::vector<std::string_view> parts;
    for (std::string_view rest = expanded; !rest.empty();) {
        const auto part = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        if (part.empty() || part == ".")
            continue;
        if (part != ".." || !absolute)
            parts.push_back(part);
        else if (!parts.empty())
            parts.pop_back();
    }
    std::string result = absolute ? "/" : "";
    for (const auto part : parts)
        result.append(result.empty() || result == "/" ? "" : "/").append(part);
    return result.empty() && !expanded.empty() ? "." : result;
}

void setFileFault(FileFault fault) { faultOfTest() = std::move(fault); }

} // namespace platform
