// Whether the process that writes a step of the history is still at work on it.
#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/value/Error.h"

#include <cstdint>
#include <string>

namespace history {

/// A kernel lock on the byte of a step in one file beside the store. It ends with its holder, however that
/// ends, so that a killed import can be taken back at once.
///
/// Ownership: gives the lock back at its end.
/// Threads:   like any plain value; two holders in one process exclude each other too.
/// Errors:    a file that cannot be locked (a file system without locks) counts as nobody at work.
class StepInUse {
public:
    StepInUse() = default;
    /// Marks the step as this process's.
    StepInUse(const std::string& directory, std::int64_t step);

    /// Whether somebody else is at work on it.
    static bool isHeld(const std::string& directory, std::int64_t step);

private:
    platform::FileDescriptor _file;
};

} // namespace history
