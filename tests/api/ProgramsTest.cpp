// Whether programs that know the C header alone, or not even that, can live with the library.
#include "support/Process.h"

#include <gtest/gtest.h>

namespace {

TEST(ProgramsInC, FindInASecondProcessWhatTheFirstSaved)
{
    const auto written = test::run({.words = {ROSTER_ROUND_TRIP, "write"}});
    ASSERT_EQ(written.status, 0) << written.err;
    const auto id = written.out.substr(0, written.out.find('\n'));
    const auto read = test::run({.words = {ROSTER_ROUND_TRIP, "read", id}});
    EXPECT_EQ(read.status, 0) << read.err;
}

TEST(ProgramsInC, AreLeftWithNothingWhenTheyOpenAndCloseTheLibraryOftenEnough)
{
    // What a sanitizer holds back, or notes of each address that was used, would count as ours.
#ifdef __SANITIZE_THREAD__
    const char* const moreKilobytes = "16384";
#else
    const char* const moreKilobytes = "2048";
#endif
    const auto ended = test::run({.words = {ROSTER_RELOAD, ROSTER_LIBRARY, "100", moreKilobytes},
        .environment = {{"ASAN_OPTIONS", "quarantine_size_mb=0:thread_local_quarantine_size_kb=0"}}});
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

} // namespace
