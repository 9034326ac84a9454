// What time it is: every reader of time asks here, so that a test can move it by hand.
#pragma once

#include "platform/run/Mutex.h"

#include <atomic>

namespace platform {

/// Where time comes from. The process has one, the system's unless a test installed another.
///
/// Ownership: an installed clock is borrowed and must outlive its use; see `ClockScope`.
/// Threads:   any.
/// Errors:    none.
class Clock {
public:
    virtual ~Clock() = default;

    /// Seconds since 1 January 1970 UTC. It jumps when the user sets the clock.
    virtual double now() const = 0;
    /// Seconds that only grow, from an unspecified start: for intervals and deadlines.
    virtual double monotonic() const = 0;
    /// How long a thread may sleep in real seconds before it must look at `monotonic` again, when it waits
    /// for the monotonic time `deadline`. Zero once that has come.
    virtual double realSecondsUntil(double deadline) const = 0;

    /// Waits on `condition` until it is notified or the monotonic time `deadline` has come.
    /// Answers false when that has come. It may end early: the caller looks again.
    bool wait(Condition& condition, Mutex& mutex, double deadline) const ZR_REQUIRES(mutex);
    /// Sleeps until the monotonic time `deadline`.
    void sleepUntil(double deadline) const;

    static Clock& current();
    /// Replaces the clock of the process; null brings the system's back. Answers the one that was installed.
    static Clock* install(Clock* clock);
};

/// A clock that stands until it is moved.
///
/// Whoever waits on it in another thread sees a move within a few milliseconds of real time.
class ManualClock final : public Clock {
public:
    explicit ManualClock(double now = 0) : _now(now) { }

    double now() const override { return _now; }
    double monotonic() const override { return _monotonic; }
    double realSecondsUntil(double deadline) const override;

    /// Moves both times.
    void advance(double seconds)
    {
        _now.fetch_add(seconds);
        _monotonic.fetch_add(seconds);
    }
    /// Sets the calendar only, as a user does.
    void setNow(double seconds) { _now = seconds; }

private:
    std::atomic<double> _now;
    std::atomic<double> _monotonic = 0;
};

/// Keeps a clock installed for a scope.
class ClockScope {
public:
    explicit ClockScope(Clock& clock) : _before(Clock::install(&clock)) { }
    ~ClockScope() { Clock::install(_before); }
    ClockScope(const ClockScope&) = delete;
    ClockScope& operator=(const ClockScope&) = delete;

private:
    Clock* _before;
};

} // namespace platform
