// How due commands are started and their ends reported.
#include "SpoolDuty.h"

#include "platform/processes/Launch.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"

#include <algorithm>

using namespace platform;

SpoolDuty::SpoolDuty(Spool spool) : _spool(std::move(spool)) { _spool.recover(); }

void SpoolDuty::look()
{
    for (const auto& taken : _spool.takeDue({Clock::current().now()}))
        start(taken);
}

std::optional<double> SpoolDuty::secondsToNext() const
{
    const auto next = _spool.nextDate();
    return next ? std::optional(std::max(next->seconds - Clock::current().now(), 0.0)) : std::nullopt;
}

void SpoolDuty::start(const Spool::Taken& taken)
{
    const auto what = taken.action.domain + " " + taken.action.action;
    ++_underWay;
    const auto started = launch(
        {.program = taken.action.command, .arguments = taken.action.arguments}, [this, what](int status) {
            MainQueue::shared().async([this, what, status] {
                --_underWay;
                log(what + ": ended with " + std::to_string(status));
            });
        });
    if (started) {
        log(what + ": started");
    } else {
        --_underWay;
        log(what + ": " + started.error().text);
    }
    _spool.finish(taken);
}
