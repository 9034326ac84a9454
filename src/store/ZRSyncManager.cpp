// What starts the sync tool after a save.
#include "store/ZRSyncManager.h"

#include "core/ZRLog.h"
#include "platform/files/Files.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/processes/Helper.h"
#include "platform/processes/Launch.h"
#include "platform/processes/Scheduler.h"
#include "platform/run/Clock.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"
#include "platform/run/Thread.h"
#include "store/ZRRoster.h"

#include <cstdlib>
#include <utility>

namespace {

constexpr char domain[] = "org.quillon.Roster.sync";
constexpr char action[] = "tricklesync";
constexpr char toolName[] = "RosterSync";
constexpr char toolType[] = "app";
constexpr char toolExecutable[] = "Contents/Tools/RosterSync";
constexpr double secondsBetweenSyncs = 1.0;
constexpr double longestGoodbye = 1.0;

struct Sandbox {
    platform::Mutex mutex;
    ZRSyncManager::SandboxCheck check ZR_GUARDED_BY(mutex);
};

Sandbox& sandbox()
{
    static const platform::NeverDestroyed<Sandbox> only;
    return *only;
}

void logFailure(const platform::Result<void>& result)
{
    if (!result)
        platform::log(result.error().text);
}

void launchTool(const std::string& tool, std::vector<std::string> arguments)
{
    const auto launched = platform::launch({.program = tool, .arguments = std::move(arguments)},
        [](int status) { ZRSyncManager::sharedSyncManager()._zrSyncProcessDied(status); });
    if (!launched)
        platform::log(fmt::format("Could not launch sync task: {}", launched.error().text));
}

/// The one thread that starts syncs for saves, while there is something to start.
class Background {
public:
    static Background& shared()
    {
        static const platform::NeverDestroyed<Background> only;
        // A short-lived program saves and ends: its sync must have been started.
        static const int waits = std::atexit([] { only->waitForEnd(); });
        static_cast<void>(waits);
        return *only;
    }

    void ask()
    {
        if (_mark.isForeign())
            return;
        const platform::Lock lock(_mutex);
        _isAsked = true;
        if (!_isRunning)
            _isRunning = platform::startThread("roster-sync", [this] { serve(); });
    }

private:
    void serve()
    {
        while (takeAsked()) {
            platform::runLogged([] { ZRSyncManager::sharedSyncManager().scheduleTrickleSync(); });
            rest();
        }
    }

    /// A program that saves in a loop would start hundreds of tools a second. In real time, since a clock
    /// that a test has installed may be gone meanwhile.
    void rest()
    {
        const platform::Lock lock(_mutex);
        if (!_isEnding)
            _changed.waitFor(_mutex, secondsBetweenSyncs);
    }

    bool takeAsked()
    {
        const platform::Lock lock(_mutex);
        _isRunning = std::exchange(_isAsked, false);
        _changed.notifyAll();
        return _isRunning;
    }

    void waitForEnd()
    {
        if (_mark.isForeign())
            return;
        const auto& clock = platform::Clock::current();
        const double deadline = clock.monotonic() + longestGoodbye;
        const platform::Lock lock(_mutex);
        _isEnding = true;
        _changed.notifyAll();
        while (_isRunning && clock.wait(_changed, _mutex, deadline)) { }
    }

    const platform::ProcessMark _mark;
    platform::Mutex _mutex;
    platform::Condition _changed;
    bool _isAsked ZR_GUARDED_BY(_mutex) = false;
    bool _isRunning ZR_GUARDED_BY(_mutex) = false;
    bool _isEnding ZR_GUARDED_BY(_mutex) = false;
};

} // namespace

std::atomic<std::int8_t> __shouldDisableSync = -1;

ZRSyncManager& ZRSyncManager::sharedSyncManager()
{
    static ZRSyncManager manager;
    return manager;
}

std::string ZRSyncManager::clientID()
{
    const std::string directory = ZRRoster::rosterDirectory();
    return directory == ZRRoster::defaultRosterDirectory() ? defaultClientID()
                                                           : defaultClientID() + ":" + directory;
}

std::optional<std::string> ZRSyncManager::toolPath()
{
    if (auto own = platform::ownProgram(toolName))
        return own;
    const char* const frameworks = std::getenv("ROSTER_FRAMEWORKS_DIR");
    if (!frameworks)
        return {};
    const std::string path = fmt::format("{}/{}.{}/{}", frameworks, toolName, toolType, toolExecutable);
    return platform::fileExists(path) ? std::optional(path) : std::nullopt;
}

platform::Value ZRSyncManager::lastSyncDate()
{
    return ZRUserDefaults::rosterPreferences()->objectForKey("ZRSLastSyncDate");
}

void ZRSyncManager::scheduleTrickleSyncRetry(std::int64_t minutes)
{
    if (ZRRoster::shouldDisableSync() || ZRRoster::isInert() || !canExecProcesses())
        return removeExisitingSyncSchedule();
    std::vector<std::string> arguments{"--tricklesync", clientID()};
    if (isSyncScheduled())
        return;
    const auto tool = toolPath();
    if (!tool)
        return platform::log("Sync would have been attempted, but the sync tool could not be located.");
    if (minutes <= 0)
        return launchTool(*tool, std::move(arguments));
    constexpr double minute = 60;
    arguments.insert(arguments.end(), {"--retry", std::to_string(minutes)});
    const platform::Date fireDate{platform::Clock::current().now() + static_cast<double>(minutes) * minute};
    logFailure(platform::Scheduler::shared()->schedule(*tool, arguments, fireDate, domain, action));
}

void ZRSyncManager::scheduleTrickleSyncSoon() { Background::shared().ask(); }

std::optional<platform::Date> ZRSyncManager::scheduledSyncDate()
{
    return platform::Scheduler::shared()->nextFireDate(domain, action);
}

void ZRSyncManager::removeExisitingSyncSchedule()
{
    logFailure(platform::Scheduler::shared()->remove(domain, action));
}

bool ZRSyncManager::canExecProcesses()
{
    auto& mine = sandbox();
    const platform::Lock lock(mine.mutex);
    if (!mine.check)
        return true;
    const auto allowed = mine.check("process-exec");
    if (!allowed)
        platform::log(fmt::format("sandbox_check error: {}", allowed.error().text));
    return !allowed || *allowed;
}

void ZRSyncManager::_zrSyncProcessDied(int status)
{
    if (status > 1)
        platform::log(fmt::format("RosterSync exited with {}", status));
}

void ZRSyncManager::setSandboxCheck(SandboxCheck check)
{
    auto& mine = sandbox();
    const platform::Lock lock(mine.mutex);
    mine.check = std::move(check);
}
