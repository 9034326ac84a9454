// The bytes of a file to import, without holding a large one in memory.
#pragma once

#include "platform/value/Error.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace interchange {

/// The path that means standard input. A file of that name is "./-".
inline constexpr std::string_view kStandardInput = "-";

/// A file that was opened to be read from front to back.
///
/// A large plain file is mapped; everything else (small files, pipes, standard input) is read whole. Whoever
/// cuts a mapped file short while it is being read ends the process, as with any mapping; what was committed
/// by then stays.
///
/// Ownership: owns its bytes or its mapping.
/// Threads:   any; the bytes never change.
/// Errors:    a file that cannot be opened or read is answered with the system's error number and a
///            reason without the path, which the caller knows.
class ImportFile {
public:
    /// Files up to this size are read, not mapped.
    static constexpr std::size_t kLargestReadWhole = 4U << 20;

    static platform::Result<std::shared_ptr<const ImportFile>> open(const std::string& path);
    ~ImportFile();
    ImportFile(const ImportFile&) = delete;
    ImportFile& operator=(const ImportFile&) = delete;

    std::string_view bytes() const { return _mapping ? std::string_view(_mapping, _mappedSize) : _contents; }
    /// The first `count` bytes are not needed soon: their memory may go back to the system.
    void passed(std::size_t count) const;

private:
    ImportFile() = default;

    std::string _contents;
    const char* _mapping = nullptr;
    std::size_t _mappedSize = 0;
};

} // namespace interchange
