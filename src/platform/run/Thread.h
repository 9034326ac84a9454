// How the library starts a thread in somebody else's process.
#pragma once

#include "platform/run/Executor.h"

namespace platform {

/// Runs `body` on a new thread that nobody waits for, called `name` (at most 15 characters) in debuggers. It
/// takes no signals: those belong to the host. Answers false when the system has no thread to give.
bool startThread(const char* name, Block body);

} // namespace platform
