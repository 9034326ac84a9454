// The scheduler in use, and the one that keeps its commands in the spool.
#include "platform/processes/Scheduler.h"

#include "platform/processes/Helper.h"
#include "platform/processes/Spool.h"
#include "platform/run/Clock.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <utility>

namespace platform {

namespace {

class SpoolScheduler final : public Scheduler {
public:
    SpoolScheduler(std::string directory, std::function<void()> wake)
        : _spool(std::move(directory)), _wake(std::move(wake))
    {
    }

    Result<void> schedule(const std::string& command, const std::vector<std::string>& arguments,
        Date fireDate, const std::string& domain, const std::string& action) override
    {
        auto kept = _spool.put({domain, action, command, arguments, fireDate});
        if (kept)
            _wake();
        return kept;
    }

    std::optional<Date> nextFireDate(const std::string& domain, const std::string& action) override
    {
        const auto pending = _spool.find(domain, action);
        if (!pending)
            return {};
        // The server may have ended with the last session: what is late must not wait for ever.
        if (pending->fireDate.seconds <= Clock::current().now())
            _wake();
        return pending->fireDate;
    }

    Result<void> remove(const std::string& domain, const std::string& action) override
    {
        return _spool.remove(domain, action);
    }

private:
    const Spool _spool;
    const std::function<void()> _wake;
};

struct Installed {
    Mutex mutex{LockRank::leaf};
    std::shared_ptr<Scheduler> scheduler ZR_GUARDED_BY(mutex);
};

Installed& installed()
{
    static const NeverDestroyed<Installed> only;
    return *only;
}

} // namespace

std::shared_ptr<Scheduler> Scheduler::shared()
{
    {
        Lock lock(installed().mutex);
        if (installed().scheduler)
            return installed().scheduler;
    }
    return makeSpoolScheduler(userSpoolDirectory(), wakeHelper);
}

std::shared_ptr<Scheduler> Scheduler::install(std::shared_ptr<Scheduler> scheduler)
{
    Lock lock(installed().mutex);
    return std::exchange(installed().scheduler, std::move(scheduler));
}

std::shared_ptr<Scheduler> makeSpoolScheduler(std::string directory, std::function<void()> wake)
{
    return std::make_shared<SpoolScheduler>(std::move(directory), std::move(wake));
}

} // namespace platform
