// How a file is read whole or mapped.
#include "interchange/import/ImportFile.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace interchange {

namespace {

platform::FileDescriptor openForReading(const std::string& path)
{
    if (path == kStandardInput)
        return platform::FileDescriptor(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
    return platform::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
}

/// Answers 0, or the system's error number.
int readAll(int descriptor, std::string& contents)
{
    std::array<char, 1U << 16> buffer;
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0)
            contents.append(buffer.data(), static_cast<std::size_t>(count));
        else if (count == 0)
            return 0;
        else if (errno != EINTR)
            return errno;
    }
}

platform::Error refusal(const char* what, int code)
{
    return {
        platform::kZRFileErrorDomain, code, std::string(what) + ": " + std::generic_category().message(code)};
}

} // namespace

platform::Result<std::shared_ptr<const ImportFile>> ImportFile::open(const std::string& path)
{
    const auto descriptor = openForReading(path);
    struct stat status = {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
        return refusal("cannot be opened", errno);
    if (S_ISDIR(status.st_mode))
        return refusal("cannot be read", EISDIR);

    const std::shared_ptr<ImportFile> file(new ImportFile);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (S_ISREG(status.st_mode) && size > kLargestReadWhole) {
        void* const mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor.get(), 0);
        if (mapping != MAP_FAILED) {
            static_cast<void>(::madvise(mapping, size, MADV_SEQUENTIAL));
            file->_mapping = static_cast<const char*>(mapping);
            file->_mappedSize = size;
            return std::shared_ptr<const ImportFile>(file);
        }
    }
    if (const int failure = readAll(descriptor.get(), file->_contents); failure != 0)
        return refusal("cannot be read", failure);
    return std::shared_ptr<const ImportFile>(file);
}

ImportFile::~ImportFile()
{
    if (_mapping)
        ::munmap(const_cast<char*>(_mapping), _mappedSize);
}

void ImportFile::passed(std::size_t count) const
{
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    if (_mapping)
        static_cast<void>(::madvise(
            const_cast<char*>(_mapping), std::min(count, _mappedSize) / page * page, MADV_DONTNEED));
}

} // namespace interchange
