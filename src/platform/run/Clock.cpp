// The system's clock, and how threads wait on whichever clock is installed.
#include "platform/run/Clock.h"

#include "platform/run/NeverDestroyed.h"

#include <algorithm>

#include <ctime>

namespace platform {

namespace {

// A day: long enough never to matter, short enough for every wait function.
constexpr double kLongestSleep = 86400;
// How soon a waiter notices that a clock was moved by hand.
constexpr double kManualSlice = 0.001;

double seconds(clockid_t id)
{
    timespec time{};
    clock_gettime(id, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

class SystemClock final : public Clock {
public:
    double now() const override { return seconds(CLOCK_REALTIME); }
    double monotonic() const override { return seconds(CLOCK_MONOTONIC); }
    double realSecondsUntil(double deadline) const override
    {
        return std::clamp(deadline - monotonic(), 0.0, kLongestSleep);
    }
};

Clock& systemClock()
{
    static const NeverDestroyed<SystemClock> clock;
    return *clock;
}

std::atomic<Clock*> installed = nullptr;

} // namespace

Clock& Clock::current()
{
    Clock* const clock = installed;
    return clock ? *clock : systemClock();
}

Clock* Clock::install(Clock* clock) { return installed.exchange(clock); }

bool Clock::wait(Condition& condition, Mutex& mutex, double deadline) const
{
    const double left = realSecondsUntil(deadline);
    if (left <= 0)
        return false;
    condition.waitFor(mutex, left);
    return realSecondsUntil(deadline) > 0;
}

void Clock::sleepUntil(double deadline) const
{
    Mutex mutex;
    Condition never;
    Lock lock(mutex);
    while (wait(never, mutex, deadline)) { }
}

double ManualClock::realSecondsUntil(double deadline) const
{
    return deadline <= _monotonic ? 0 : kManualSlice;
}

} // namespace platform
