// What the library logs, and the switches that make it talk.
#pragma once

#include "core/ZRExport.h"
#include "platform/run/Log.h"

#include <atomic>
#include <cstdint>
#include <string_view>

#include <fmt/format.h>

// Process-wide switches. `ZRReadProcessSwitches` reads each from the boolean of its name (without the
// underscores) in the program's own defaults.

/// Whether ZRDebugLog logs.
extern ZR_EXPORT std::atomic<bool> __ZRDebugLog;
/// Whether the locks tell who asks, waits and gets.
extern ZR_EXPORT std::atomic<bool> __ZRLockDebug;
/// Whether a profile is written when the program ends: see ZRProfile.h.
extern ZR_EXPORT std::atomic<bool> __ZREnableSampling;
/// Whether every posting of a notification is logged.
extern ZR_EXPORT std::atomic<bool> __ZRLogNotifications;

/// Reads the four switches and the performance flags. The shared roster does so once, when it is made.
ZR_EXPORT void ZRReadProcessSwitches();

/// What can be timed: bit numbers in `ZRPerfLogFlags`, from the lowest bit of the first byte on.
enum class ZRPerfFlag : unsigned {
    cardDisplay,
    launch,
    terminate,
    rollOverPath,
    rollOverMenu,
    tabbing,
    textInsertion,
    textRoundTrip,
    editSwitch,
    save,
    updateMetaData,
    deleteMetaData,
    refreshMetaData,
    newCard,
    newGroup,
    createVCard,
    exportVCard,
    importVCard,
    localSearch,
    loadMembers,
    loadGroups,
    searchElement,
};

/// The 22 performance flags, three bytes. Read them through `ZRPerfFlagIsSet`.
extern ZR_EXPORT std::atomic<std::uint8_t> ZRPerfLogFlags[3];
ZR_EXPORT bool ZRPerfFlagIsSet(ZRPerfFlag flag);
/// Reads all flags anew from the program's defaults.
ZR_EXPORT void ZRUpdatePerfFlags();

/// Logs while `__ZRDebugLog` is on.
template <class... Arguments>
void ZRDebugLog(fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    if (__ZRDebugLog.load(std::memory_order_relaxed))
        platform::log(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// Whether ZRDLog logs a line of this format: always, unless it begins with a tag such as "[Sync]", whose
/// boolean "ZRSyncLogEnabled" in the program's defaults decides.
ZR_EXPORT bool ZRDLogIsEnabled(std::string_view format);

/// Logs a line that may begin with a tag in square brackets; the tag stays in the line.
template <class... Arguments>
void ZRDLog(fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    const fmt::string_view text = format;
    if (ZRDLogIsEnabled({text.data(), text.size()}))
        platform::log(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// Writes one line to standard error, at once and whole.
ZR_EXPORT void ZRPerfLogLine(std::string_view line);

/// Formats a measurement and writes it to standard error. The caller asks for its flag first.
template <class... Arguments>
void ZRPerfLog(fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    ZRPerfLogLine(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// When the host program started, in seconds since 1970; zero while it has not said so. A host that wants its
/// launch time logged sets it at its start.
extern "C" ZR_EXPORT double __appStartDate;

/// For the end of launch: when the host set `__appStartDate`, one block on the main queue logs how long it
/// took until then, under the flag of launch times.
ZR_EXPORT void ZRReportLaunchTime();
