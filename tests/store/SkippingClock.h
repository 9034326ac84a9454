// How long does somebody sleep? A clock on which every sleep ends at once, and is remembered.
#pragma once

#include "platform/run/Clock.h"

#include <functional>
#include <vector>

namespace test {

/// Installed while it lives. For tests of one thread.
class SkippingClock final : public platform::Clock {
public:
    explicit SkippingClock(double now) : _now(now), _before(install(this)) { }
    ~SkippingClock() override { install(_before); }
    SkippingClock(const SkippingClock&) = delete;
    SkippingClock& operator=(const SkippingClock&) = delete;

    double now() const override { return _now; }
    double monotonic() const override { return _monotonic; }
    double realSecondsUntil(double deadline) const override
    {
        if (deadline > _monotonic) {
            sleeps.push_back(deadline - _monotonic);
            _now += deadline - _monotonic;
            _monotonic = deadline;
            if (afterSleep)
                afterSleep();
        }
        return 0;
    }

    mutable std::vector<double> sleeps;
    std::function<void()> afterSleep;

private:
    mutable double _now;
    mutable double _monotonic = 0;
    Clock* const _before;
};

} // namespace test
