// `roster check`: whether the store is sound, and how it stands among the processes that use it.
#include "Command.h"

#include "platform/text/Dates.h"
#include "store/ZRRosterStanding.h"

#include <fmt/format.h>

#include <cmath>

namespace {

using FileLock = ZRRosterStanding::FileLock;
using Process = ZRRosterStanding::Process;

std::string textOf(const Process& process)
{
    return process.name.empty() ? fmt::format("{}, which has ended", process.id)
                                : fmt::format("{} ({})", process.id, process.name);
}

std::string holderOf(const FileLock& lock)
{
    return lock.process ? "process " + textOf(*lock.process) : "a process that does not say which";
}

/// Looks before the roster is opened, which waits for the lock; whoever waits with us is told why.
platform::Result<FileLock> lookAtFileLock()
{
    auto lock = zrStandingOfFileLock(ZRRoster::rosterDirectory() + "/.database.lock");
    if (lock && lock->isHeld)
        complain("the file lock is held by " + holderOf(*lock) + "; waiting for it");
    return lock;
}

// ---- as JSON

Json processJson(const std::optional<Process>& process)
{
    return process ? Json{{"id", process->id}, {"name", process->name.empty() ? Json() : Json(process->name)}}
                   : Json();
}

Json dateJson(const std::optional<platform::Date>& date)
{
    return date ? Json(platform::iso8601(*date)) : Json();
}

Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json lockJson(const platform::Result<FileLock>& lock)
{
    if (!lock)
        return Json{{"problem", lock.error().text}};
    return Json{{"held", lock->isHeld}, {"process", processJson(lock->process)},
        {"markerAge", lock->markerAge ? Json(*lock->markerAge) : Json()},
        {"staleMarker", lock->hasStaleMarker()}};
}

Json versionsJson(const ZRRosterStanding::Versions& versions)
{
    return Json{{"commit", versions.commit}, {"store", versions.storeIdentifier},
        {"modelHash", versions.modelHash}, {"database", std::round(versions.database * 100) / 100},
        {"collation", versions.collation}, {"collationIsOurs", versions.isCollationOurs},
        {"lastSavedBy", textOrNull(versions.lastSaved)}, {"library", versions.roster},
        {"sqlite", versions.sqlite}, {"icu", versions.icu}};
}

Json holdersJson(const ZRRosterStanding::Holders& holders)
{
    Json processes = Json::array();
    for (const auto& process : holders.processes)
        processes.push_back(processJson(process));
    return Json{
        {"processes", processes}, {"unseen", holders.unseen}, {"problem", textOrNull(holders.problem)}};
}

Json standingJson(const platform::Result<FileLock>& lock, const ZRRosterStanding& standing)
{
    const auto& [versions, holders, notices, sync] = standing;
    return Json{{"lock", lockJson(lock)}, {"versions", versionsJson(versions)},
        {"holders", holdersJson(holders)},
        {"notices", {{"file", textOrNull(notices.file)}, {"problem", textOrNull(notices.problem)}}},
        {"sync",
            {{"enabled", sync.isEnabled}, {"tool", textOrNull(sync.tool)}, {"next", dateJson(sync.next)},
                {"last", dateJson(sync.last)}}}};
}

// ---- as text

std::string lockText(const platform::Result<FileLock>& lock)
{
    if (!lock)
        return "not known: " + lock.error().text;
    if (lock->isHeld)
        return "was held by " + holderOf(*lock);
    return lock->hasStaleMarker() ? fmt::format("free; a marker lies there since {:.0f} seconds, left by {}",
               *lock->markerAge, holderOf(*lock))
                                  : "free";
}

std::string holdersText(const ZRRosterStanding::Holders& holders)
{
    if (!holders.problem.empty())
        return "not known: " + holders.problem;
    std::string text;
    for (const auto& process : holders.processes)
        text += (text.empty() ? "" : ", ") + textOf(process);
    if (text.empty())
        text = "none of this user";
    if (holders.unseen > 0)
        text += fmt::format("; {} processes do not show their files", holders.unseen);
    return text;
}

std::string syncText(const ZRRosterStanding::Sync& sync)
{
    if (!sync.isEnabled)
        return "disabled";
    const auto when = [](const auto& date, const char* without) {
        return date ? platform::iso8601(*date) : std::string(without);
    };
    return fmt::format("{}; next: {}; last: {}", sync.tool.empty() ? "no sync tool" : sync.tool,
        when(sync.next, "after the next save"), when(sync.last, "never"));
}

std::string collationText(const ZRRosterStanding::Versions& versions)
{
    return versions.collation
        + (versions.isCollationOurs ? "" : ", which is not that of this process: it sorts in memory");
}

std::string standingText(const platform::Result<FileLock>& lock, const ZRRosterStanding& standing)
{
    const auto& [versions, holders, notices, sync] = standing;
    const std::string lastSaved = versions.lastSaved.empty() ? "" : ", saved by " + versions.lastSaved;
    const std::pair<const char*, std::string> lines[] = {
        {"File lock", lockText(lock)},
        {"Other holders", holdersText(holders)},
        {"Store", fmt::format("{}, commit {}{}", versions.storeIdentifier, versions.commit, lastSaved)},
        {"Model", fmt::format("{}, database version {:.2f}", versions.modelHash, versions.database)},
        {"Sorting keys", collationText(versions)},
        {"Versions",
            fmt::format("roster {}, SQLite {}, ICU {}", versions.roster, versions.sqlite, versions.icu)},
        {"Notices", notices.problem.empty() ? notices.file : notices.file + ": " + notices.problem},
        {"Sync", syncText(sync)},
    };
    std::string text;
    for (const auto& [name, value] : lines)
        text += fmt::format("{:<14} {}\n", name, value);
    return text;
}

} // namespace

int runCheck(const Options& options)
{
    applyPreferences(options);
    const auto lock = lookAtFileLock();
    const auto roster = openRoster(options);
    const auto standing = zrStandingOfRoster(*roster);
    const auto report = roster->check();
    if (options.json) {
        Json json{
            {"sound", report.problems.empty()}, {"problems", report.problems}, {"remarks", report.remarks}};
        json.update(standingJson(lock, standing));
        printJson(json);
    } else {
        for (const auto& problem : report.problems)
            complain(problem);
        for (const auto& remark : report.remarks)
            print(remark + "\n");
        print(standingText(lock, standing));
        if (report.problems.empty())
            print("The roster is sound.\n");
    }
    return report.problems.empty() ? exitStatus::done : exitStatus::refused;
}
