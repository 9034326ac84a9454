// An open file that closes itself.
#pragma once

#include <utility>

#include <unistd.h>

namespace platform {

/// Owns a file descriptor, or none.
///
/// Ownership: closes at its end.
/// Threads:   like any plain value.
/// Errors:    none; who must know whether closing worked closes with `close`.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) { }
    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) { }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            _descriptor = std::exchange(other._descriptor, -1);
        }
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const { return _descriptor; }
    explicit operator bool() const { return _descriptor >= 0; }
    /// Hands the descriptor to the caller, who closes it.
    int release() { return std::exchange(_descriptor, -1); }
    /// Answers false, with errno set, when the system says that something was lost.
    bool close() { return _descriptor < 0 || ::close(std::exchange(_descriptor, -1)) == 0; }

private:
    int _descriptor = -1;
};

} // namespace platform
