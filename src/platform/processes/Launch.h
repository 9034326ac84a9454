// How another program is started and left to itself, or heard of again when it ends.
#pragma once

#include "platform/value/Error.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace platform {

/// Which program to start, and with what.
struct LaunchRequest {
    /// An absolute path: nothing is searched, and no shell is asked.
    std::string program;
    /// Without the program's own name.
    std::vector<std::string> arguments = {};
    /// Added to the environment of this process.
    std::map<std::string, std::string> environment = {};
};

/// Told of a program that could be started and has ended: its exit status, 128 plus the number of the signal
/// that ended it, or -1 where the host of this process took the status for itself.
using LaunchEnd = std::function<void(int status)>;

/// Starts the program in a session of its own, in the root directory, with standard input, output and error
/// at /dev/null, every other descriptor closed, and every signal as a fresh process has it. It goes on when
/// this process ends. Answers once it runs, without waiting for it: a few milliseconds at most.
///
/// It leaves no zombie and touches nobody's SIGCHLD: a thread waits for this one process. That thread calls
/// `onExit`, which may be empty, unless this process ends first.
///
/// Threads:   any.
/// Errors:    a program that cannot be started is refused with the system's error number and its path.
Result<void> launch(const LaunchRequest& request, LaunchEnd onExit = {});

} // namespace platform
