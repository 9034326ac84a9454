// What the helper does about scheduled commands.
#pragma once

#include "platform/processes/Spool.h"

#include <cstddef>
#include <optional>

/// Runs the commands of a spool in their time, each in a session of its own, and hears how they end.
///
/// Ownership: borrowed by the commands under way, so it outlives the main queue's work.
/// Threads:   the main queue's.
/// Errors:    logged; a command that cannot be started is dropped.
class SpoolDuty {
public:
    /// Takes over what a predecessor left behind.
    explicit SpoolDuty(platform::Spool spool);
    SpoolDuty(const SpoolDuty&) = delete;
    SpoolDuty& operator=(const SpoolDuty&) = delete;

    /// Starts what is due now.
    void look();
    /// How long nothing needs to be done, by the spool as it is now; absent when nothing is scheduled.
    std::optional<double> secondsToNext() const;
    /// Commands that were started and have not ended.
    std::size_t underWay() const { return _underWay; }

private:
    void start(const platform::Spool::Taken& taken);

    const platform::Spool _spool;
    std::size_t _underWay = 0;
};
