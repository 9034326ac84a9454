// Whether the process is in the middle of writing: a counter that hosts and tests can read.
#pragma once

namespace platform::suddentermination {

/// Between `disable` and the matching `enable` the process should not be ended. Calls nest; any thread.
void disable() noexcept;
void enable() noexcept;
/// How many `disable` still wait for their `enable`; below zero when there were too many of the latter.
long balance() noexcept;

} // namespace platform::suddentermination
