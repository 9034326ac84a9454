// The log switches, tags and flags, as a user sets them.
#include "core/ZRLog.h"
#include "core/ZRMessageTracer.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Clock.h"
#include "platform/run/MainQueue.h"

#include <gmock/gmock.h>

namespace {

using platform::LogCapture;
using platform::UserDefaults;
using testing::ElementsAre;
using testing::IsEmpty;

class LogTest : public testing::Test {
protected:
    void TearDown() override
    {
        for (const std::string& key : _set)
            UserDefaults::standard().removeObjectForKey(key);
        ZRReadProcessSwitches();
        __appStartDate = 0;
    }

    void set(std::string key, const platform::Value& value = true)
    {
        UserDefaults::standard().setObject(value, key);
        _set.push_back(std::move(key));
    }

private:
    std::vector<std::string> _set;
};

TEST_F(LogTest, DebugLinesNeedTheirSwitch)
{
    LogCapture log;
    ZRDebugLog("quiet {}", 1);
    set("ZRDebugLog");
    ZRDebugLog("not read yet");
    ZRReadProcessSwitches();
    ZRDebugLog("loud {}", 2);
    EXPECT_THAT(log.lines(), ElementsAre("loud 2"));
}

TEST_F(LogTest, EverySwitchHasItsOwnKey)
{
    const std::pair<const char*, const std::atomic<bool>*> switches[] = {{"ZRDebugLog", &__ZRDebugLog},
        {"ZRLockDebug", &__ZRLockDebug}, {"ZREnableSampling", &__ZREnableSampling},
        {"ZRLogNotifications", &__ZRLogNotifications}};
    for (const auto& [wanted, ignored] : switches) {
        UserDefaults::standard().setBool(true, wanted);
        ZRReadProcessSwitches();
        for (const auto& [key, variable] : switches)
            EXPECT_EQ(variable->load(), std::string(key) == wanted) << wanted << " sets " << key;
        UserDefaults::standard().removeObjectForKey(wanted);
    }
}

TEST_F(LogTest, ATagIsLoggedWhenTheUserAskedForIt)
{
    LogCapture log;
    set("ZRSyncLogEnabled");
    set("ZROffLogEnabled", false);
    ZRDLog("[Sync] began {}", 1);
    ZRDLog("[Off] never");
    ZRDLog("[Unset] never");
    ZRDLog("plain [Unset] always");
    ZRDLog("[open always");
    ZRDLog("{}", "[Unset] is an argument and no tag");
    EXPECT_THAT(log.lines(),
        ElementsAre(
            "[Sync] began 1", "plain [Unset] always", "[open always", "[Unset] is an argument and no tag"));
}

TEST_F(LogTest, PerformanceFlagsAreBitsInTheOrderOfTheirKeys)
{
    const struct {
        const char* key;
        ZRPerfFlag flag;
        int byte;
        unsigned bits;
    } cases[] = {
        {"LogCardDisplayTimes", ZRPerfFlag::cardDisplay, 0, 0x01},
        {"LogTextRoundTripTimes", ZRPerfFlag::textRoundTrip, 0, 0x80},
        {"LogEditSwitchTimes", ZRPerfFlag::editSwitch, 1, 0x01},
        {"LogSaveTimes", ZRPerfFlag::save, 1, 0x02},
        {"LogCreateVCardTimes", ZRPerfFlag::createVCard, 1, 0x80},
        {"LogExportVCardTimes", ZRPerfFlag::exportVCard, 2, 0x01},
        {"LogSearchElementTimes", ZRPerfFlag::searchElement, 2, 0x20},
    };
    for (const auto& c : cases) {
        UserDefaults::standard().setBool(true, c.key);
        ZRUpdatePerfFlags();
        for (int byte = 0; byte < 3; ++byte)
            EXPECT_EQ(ZRPerfLogFlags[byte], byte == c.byte ? c.bits : 0) << c.key;
        EXPECT_TRUE(ZRPerfFlagIsSet(c.flag)) << c.key;
        UserDefaults::standard().removeObjectForKey(c.key);
    }
    ZRUpdatePerfFlags();
    for (const auto& c : cases)
        EXPECT_FALSE(ZRPerfFlagIsSet(c.flag)) << c.key;
}

TEST_F(LogTest, PerformanceLinesGoToStandardError)
{
    LogCapture log;
    testing::internal::CaptureStderr();
    ZRPerfLog("[LogSaveTimes] Time to save = {:3.3f}", 1.5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[LogSaveTimes] Time to save = 1.500\n");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LogTest, LaunchTimeIsToldOnceTheHostSaidWhenItStarted)
{
    platform::ManualClock clock(1000);
    const platform::ClockScope installed(clock);
    const auto reported = [] {
        testing::internal::CaptureStderr();
        ZRReportLaunchTime();
        platform::MainQueue::shared().sync([] {});
        return testing::internal::GetCapturedStderr();
    };
    __appStartDate = 998.5;
    EXPECT_EQ(reported(), "");
    set("LogLaunchTimes");
    ZRUpdatePerfFlags();
    EXPECT_EQ(reported(), "[LogLaunchTimes] Time to launch = 1.500\n");
    __appStartDate = 0;
    EXPECT_EQ(reported(), "");
}

TEST(MessageTracer, WritesOneLine)
{
    const struct {
        ZRMessageTracer tracer;
        const char* line;
    } cases[] = {
        {{}, R"([MessageTracer] domain="org.quillon.Roster" success=true)"},
        {{.subdomain = "open",
             .signature = "Code=259",
             .uid = "U",
             .message = "a \"b\"\n\\\x01",
             .success = false,
             .itemCount = 3},
            R"([MessageTracer] domain="org.quillon.Roster.open" success=false signature="Code=259" uid="U" count=3 message="a \"b\"\n\\\u0001")"},
        {{.baseDomain = "", .subdomain = "x"}, R"([MessageTracer] domain="x" success=true)"},
    };
    for (const auto& c : cases) {
        LogCapture log;
        c.tracer.log();
        EXPECT_THAT(log.lines(), ElementsAre(c.line));
    }
}

} // namespace
