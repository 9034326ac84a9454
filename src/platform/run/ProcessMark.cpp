// How forks are counted.
#include "platform/run/ProcessMark.h"

#include <atomic>

#include <pthread.h>

namespace platform {

namespace {

std::atomic<unsigned> forks = 0;

unsigned watchedGeneration()
{
    static const int watching = pthread_atfork(nullptr, nullptr, [] { ++forks; });
    return watching == 0 ? forks.load() : 0;
}

} // namespace

ProcessMark::ProcessMark() : _generation(watchedGeneration()) { }

bool ProcessMark::isForeign() const noexcept { return forks.load(std::memory_order_relaxed) != _generation; }

} // namespace platform
