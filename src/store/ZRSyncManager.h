// What starts the sync tool after a save.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Whether saves start no sync, for the whole process: 0 or 1 in place of the preference "ZRDisableSync"; -1
/// leaves it to that. See `ZRRoster::shouldDisableSync`.
extern ZR_EXPORT std::atomic<std::int8_t> __shouldDisableSync;

/// The trigger of synchronisation: it starts the tool at once or schedules it, and never keeps two schedules.
///
/// It synchronises nothing itself; that is the tool's business, a program of its own.
///
/// Ownership: one for the process, never destroyed, without fields.
/// Threads:   any, without locks of the roster.
/// Errors:    logged; none reaches the save, which has succeeded by then.
class ZR_EXPORT ZRSyncManager {
public:
    static ZRSyncManager& sharedSyncManager();
    ZRSyncManager(const ZRSyncManager&) = delete;
    ZRSyncManager& operator=(const ZRSyncManager&) = delete;

    /// Whom the tool synchronises for: the default id, with the directory behind a colon when the shared
    /// roster is not in the default one.
    static std::string clientID();
    static std::string defaultClientID() { return "org.quillon.Roster"; }

    /// The tool: among our own programs, else "RosterSync.app/Contents/Tools/RosterSync" in the directory
    /// that the environment names in ROSTER_FRAMEWORKS_DIR. Absent where it is not.
    static std::optional<std::string> toolPath();

    /// The date of the last sync, as the tool left it in the preferences; absent when there was none.
    static platform::Value lastSyncDate();

    /// Starts the tool now, unless it is scheduled already: the schedule will do.
    void scheduleTrickleSync() { scheduleTrickleSyncRetry(0); }
    /// Has it started in so many minutes; 0 is now. Where sync is disabled, the roster inert, or programs may
    /// not be started, nothing is, and what was scheduled is removed.
    void scheduleTrickleSyncRetry(std::int64_t minutes);
    /// What a save calls: `scheduleTrickleSync` on another thread, at once or a second after the last time,
    /// so that the saves of that second are one. Only the end of the process waits for it, a second at most.
    void scheduleTrickleSyncSoon();

    /// When the tool is to be started; absent when nothing is scheduled.
    std::optional<platform::Date> scheduledSyncDate();
    bool isSyncScheduled() { return scheduledSyncDate().has_value(); }
    void removeExisitingSyncSchedule();
    /// Whether this process may start programs: true where nothing forbids it.
    bool canExecProcesses();
    /// Told how a tool that was started ended.
    void _zrSyncProcessDied(int status);

    /// Answers whether the sandbox around the host allows "process-exec".
    using SandboxCheck = std::function<platform::Result<bool>(const char* operation)>;
    /// For a host in a sandbox, before it saves; empty: there is none.
    static void setSandboxCheck(SandboxCheck check);

private:
    ZRSyncManager() = default;
};
