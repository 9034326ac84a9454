// Where log lines end up.
#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <stdexcept>

using namespace platform;

namespace {

TEST(LogTest, PrintsNothingUnlessAsked)
{
    testing::internal::CaptureStderr();
    log("quiet");
    setLogToStandardError(true);
    log("loud");
    setLogToStandardError(false);
    log("quiet again");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "loud\n");
}

TEST(LogTest, GivesLinesToTheLatestCaptureAndThenToTheOneBefore)
{
    const LogCapture outer;
    {
        const LogCapture inner;
        log("in");
        EXPECT_THAT(inner.lines(), testing::ElementsAre("in"));
    }
    log("out");
    EXPECT_THAT(outer.lines(), testing::ElementsAre("out"));
}

TEST(LogTest, SurvivesASinkThatThrows)
{
    auto before = setLogSink([](std::string_view) { throw std::runtime_error("full"); });
    EXPECT_NO_THROW(log("x"));
    setLogSink(std::move(before));
}

} // namespace
