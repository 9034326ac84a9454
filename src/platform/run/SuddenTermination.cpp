// The count behind sudden termination.
#include "platform/run/SuddenTermination.h"

#include <atomic>

namespace platform::suddentermination {

namespace {
std::atomic<long> disabled = 0;
}

void disable() noexcept { ++disabled; }
void enable() noexcept { --disabled; }
long balance() noexcept { return disabled; }

} // namespace platform::suddentermination
