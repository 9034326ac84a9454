// Which process of this user holds a name just now.
#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/value/Error.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A name that at most one holder of this user has at a time, in any process: for programs of which one is
/// enough. Nobody waits for a claim.
///
/// Ownership: gives the name back at its end, or with its process, however that ends.
/// Threads:   like any plain value; two claims of one process exclude each other too.
/// Errors:    only where the user has no run-time directory to keep claims in.
class NamedClaim {
public:
    /// The claim; absent while another holds the name. Any text is a name.
    static Result<std::optional<NamedClaim>> take(std::string_view name);

private:
    explicit NamedClaim(FileDescriptor file) : _file(std::move(file)) { }

    FileDescriptor _file;
};

} // namespace platform
