// Reads the logging switches and writes what goes to standard error.
#include "core/ZRLog.h"

#include "platform/files/UserDefaults.h"
#include "platform/run/Clock.h"
#include "platform/run/MainQueue.h"

#include <array>
#include <cstdio>
#include <string>

std::atomic<bool> __ZRDebugLog = false;
std::atomic<bool> __ZRLockDebug = false;
std::atomic<bool> __ZREnableSampling = false;
std::atomic<bool> __ZRLogNotifications = false;
std::atomic<std::uint8_t> ZRPerfLogFlags[3] = {};
double __appStartDate = 0;

static_assert(sizeof ZRPerfLogFlags == 3);

namespace {

using platform::UserDefaults;

/// In the order of ZRPerfFlag.
constexpr std::array<std::string_view, 22> kPerfFlagKeys = {
    "LogCardDisplayTimes",
    "LogLaunchTimes",
    "LogTerminateTimes",
    "LogRollOverPathTimes",
    "LogRollOverMenuTimes",
    "LogTabbingTimes",
    "LogTextInsertionTimes",
    "LogTextRoundTripTimes",
    "LogEditSwitchTimes",
    "LogSaveTimes",
    "LogUpdateMetaDataTimes",
    "LogDeleteMetaDataTimes",
    "LogRefreshMetaDataTimes",
    "LogNewCardTimes",
    "LogNewGroupTimes",
    "LogCreateVCardTimes",
    "LogExportVCardTimes",
    "LogImportVCardTimes",
    "LogLocalSearchTimes",
    "LogLoadMembersTimes",
    "LogLoadGroupsTimes",
    "LogSearchElementTimes",
};
static_assert(kPerfFlagKeys.size() == static_cast<unsigned>(ZRPerfFlag::searchElement) + 1);

} // namespace

void ZRReadProcessSwitches()
{
    const UserDefaults& defaults = UserDefaults::standard();
    __ZRDebugLog = defaults.boolForKey("ZRDebugLog");
    __ZRLockDebug = defaults.boolForKey("ZRLockDebug");
    __ZREnableSampling = defaults.boolForKey("ZREnableSampling");
    __ZRLogNotifications = defaults.boolForKey("ZRLogNotifications");
    ZRUpdatePerfFlags();
}

bool ZRPerfFlagIsSet(ZRPerfFlag flag)
{
    const auto bit = static_cast<unsigned>(flag);
    return (ZRPerfLogFlags[bit / 8].load(std::memory_order_relaxed) >> bit % 8 & 1) != 0;
}

void ZRUpdatePerfFlags()
{
    const UserDefaults& defaults = UserDefaults::standard();
    std::uint32_t bits = 0;
    for (std::size_t bit = 0; bit < kPerfFlagKeys.size(); ++bit)
        bits |= static_cast<std::uint32_t>(defaults.boolForKey(kPerfFlagKeys[bit])) << bit;
    for (std::atomic<std::uint8_t>& byte : ZRPerfLogFlags) {
        byte = static_cast<std::uint8_t>(bits);
        bits >>= 8;
    }
}

bool ZRDLogIsEnabled(std::string_view format)
{
    const auto end = format.find(']');
    if (!format.starts_with('[') || end == std::string_view::npos)
        return true;
    const std::string_view tag = format.substr(1, end - 1);
    return UserDefaults::standard().boolForKey(fmt::format("ZR{}LogEnabled", tag));
}

void ZRPerfLogLine(std::string_view line)
{
    std::string whole(line);
    whole += '\n';
    std::fwrite(whole.data(), 1, whole.size(), stderr);
}

void ZRReportLaunchTime()
{
    if (__appStartDate == 0 || !ZRPerfFlagIsSet(ZRPerfFlag::launch))
        return;
    platform::MainQueue::shared().async([start = __appStartDate] {
        ZRPerfLog("[LogLaunchTimes] Time to launch = {:3.3f}", platform::Clock::current().now() - start);
    });
}
