// Moments are the right day in every zone, and days are read as people write them.
#include "platform/text/Dates.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <cmath>

namespace platform {
namespace {

TimeZone zone(std::string_view name) { return TimeZone::named(name).value(); }

struct Moment {
    std::string_view zone;
    CalendarTime time;
    double seconds;
};

const Moment kMoments[] = {
    {"GMT", {{1970, 1, 1}, 0, 0, 0}, 0},
    {"GMT", {{1969, 12, 31}, 23, 59, 59.5}, -0.5},
    {"GMT", {{2000, 2, 29}, 12, 0, 0}, 951825600},
    {"GMT", {{1604, 2, 29}, 12, 0, 0}, -11544724800},
    {"GMT", {{1582, 10, 10}, 0, 0, 0}, -12219724800},
    {"GMT", {{1, 1, 1}, 0, 0, 0}, -62135596800},
    {"GMT", {{9999, 12, 31}, 23, 59, 59}, 253402300799},
    {"Europe/Berlin", {{2024, 7, 1}, 12, 0, 0}, 1719828000},
    {"Europe/Berlin", {{2024, 1, 1}, 12, 0, 0}, 1704106800},
    {"America/Los_Angeles", {{1920, 5, 1}, 12, 0, 0}, -1567396800},
    {"America/Los_Angeles", {{2150, 7, 4}, 12, 0, 0}, 5696247600},
    {"Asia/Kolkata", {{2024, 1, 1}, 0, 0, 0}, 1704047400},
    {"Pacific/Auckland", {{2024, 1, 1}, 0, 0, 0}, 1704020400},
    {"Pacific/Kiritimati", {{2024, 1, 1}, 0, 0, 0}, 1704016800},
    {"GMT+05:45", {{2024, 1, 1}, 5, 45, 0}, 1704067200},
};

TEST(Dates, GoThereAndBack)
{
    for (const auto& [name, time, seconds] : kMoments) {
        const auto date = dateOf(time, zone(name));
        ASSERT_TRUE(date) << name << ' ' << iso8601(time.day);
        EXPECT_EQ(date->seconds, seconds) << name << ' ' << iso8601(time.day);
        EXPECT_EQ(calendarTimeOf(*date, zone(name)), time) << name << ' ' << iso8601(time.day);
    }
}

TEST(Dates, NoonKeepsItsDayInEveryZoneAndYear)
{
    for (const auto name : {"GMT", "Pacific/Auckland", "Asia/Kolkata", "America/Los_Angeles",
             "Pacific/Kiritimati", "Europe/Amsterdam", "America/Sao_Paulo"})
        for (const int year : {1, 1604, 1884, 1920, 1945, 1970, 2024, 2150, 9999})
            for (int month = 1; month <= 12; ++month) {
                const CalendarDay day{year, month, 28};
                const auto noon = noonOf(day, zone(name));
                ASSERT_TRUE(noon);
                EXPECT_EQ(calendarTimeOf(*noon, zone(name)), (CalendarTime{day, 12, 0, 0}))
                    << name << iso8601(day);
                const Date stored = noonOfSameDay(*noon, zone(name), TimeZone::gmt());
                EXPECT_EQ(calendarTimeOf(stored, TimeZone::gmt()), (CalendarTime{day, 12, 0, 0}));
                EXPECT_EQ(noonOfSameDay(stored, TimeZone::gmt(), zone(name)), *noon) << name << iso8601(day);
            }
}

TEST(Dates, TimesThatClocksSkipOrShowTwice)
{
    struct {
        std::string_view zone;
        CalendarTime time;
        std::string_view moment;
    } const rows[] = {
        {"Europe/Berlin", {{2024, 3, 31}, 2, 30, 0}, "2024-03-31T01:30:00Z"},
        {"Europe/Berlin", {{2024, 10, 27}, 2, 30, 0}, "2024-10-27T00:30:00Z"},
        {"America/Los_Angeles", {{2024, 3, 10}, 2, 0, 0}, "2024-03-10T10:00:00Z"},
        {"America/Sao_Paulo", {{2018, 11, 4}, 0, 0, 0}, "2018-11-04T03:00:00Z"},
        {"Pacific/Apia", {{2011, 12, 30}, 12, 0, 0}, "2011-12-30T22:00:00Z"},
    };
    for (const auto& [name, time, moment] : rows)
        EXPECT_EQ(iso8601(dateOf(time, zone(name)).value()), moment) << name;
}

TEST(Dates, RefuseWhatNoCalendarHolds)
{
    const CalendarTime bad[] = {{{2023, 2, 29}, 0, 0, 0}, {{1900, 2, 29}, 0, 0, 0}, {{2024, 4, 31}, 0, 0, 0},
        {{2024, 0, 1}, 0, 0, 0}, {{2024, 13, 1}, 0, 0, 0}, {{2024, 1, 0}, 0, 0, 0}, {{2024, 1, 257}, 0, 0, 0},
        {{0, 1, 1}, 0, 0, 0}, {{10000, 1, 1}, 0, 0, 0}, {{2024, 1, 1}, 24, 0, 0}, {{2024, 1, 1}, 0, 60, 0},
        {{2024, 1, 1}, 0, 0, 60}, {{2024, 1, 1}, 0, -1, 0}, {{2024, 1, 1}, 0, 0, NAN}};
    for (const auto& time : bad)
        EXPECT_FALSE(dateOf(time, TimeZone::gmt())) << iso8601(time.day);
    for (const double seconds :
        {-62135596801.0, 253402300800.0, 1e300, -1e300, double(NAN), double(INFINITY)}) {
        EXPECT_FALSE(calendarTimeOf({seconds}, TimeZone::gmt())) << seconds;
        EXPECT_EQ(iso8601(Date{seconds}), "") << seconds;
    }
    EXPECT_EQ(noonInGMTOfLocalDay({1e300}).seconds, 1e300);
    EXPECT_FALSE(TimeZone::named("Mars/Olympus"));
    EXPECT_FALSE(TimeZone::named(""));
}

TEST(Dates, FollowTZFromCallToCall)
{
    test::ScopedVariable tz("TZ", "Pacific/Auckland");
    const Date evening = dateOf({{2024, 6, 30}, 18, 0, 0}, TimeZone::gmt()).value();
    const std::pair<const char*, std::string_view> rows[] = {
        {"Pacific/Auckland", "2024-07-01T06:00:00+12:00"},
        {"America/Los_Angeles", "2024-06-30T11:00:00-07:00"},
        {":Asia/Kolkata", "2024-06-30T23:30:00+05:30"},
        {"/usr/share/zoneinfo/Europe/Paris", "2024-06-30T20:00:00+02:00"},
        {"EST5EDT", "2024-06-30T14:00:00-04:00"},
        {"", "2024-06-30T18:00:00Z"},
        {"UTC", "2024-06-30T18:00:00Z"},
        {"Pacific/Auckland", "2024-07-01T06:00:00+12:00"},
    };
    for (const auto& [name, text] : rows) {
        tz.set(name);
        EXPECT_EQ(iso8601(evening, TimeZone::local()), text) << name;
    }
    EXPECT_EQ(iso8601(noonInGMTOfLocalDay(evening)), "2024-07-01T12:00:00Z");
    EXPECT_EQ(iso8601(localNoonOfGMTDay(evening), TimeZone::local()), "2024-06-30T12:00:00+12:00");
    tz.set(nullptr);
    EXPECT_TRUE(calendarTimeOf(evening));
}

TEST(Dates, YearsBeginInGMT)
{
    EXPECT_EQ(iso8601(startOfYear(1604)), "1604-01-01T00:00:00Z");
    EXPECT_EQ(yearOf(startOfYear(2024)), 2024);
    EXPECT_EQ(yearOf({startOfYear(2024).seconds - 1}), 2023);
    EXPECT_EQ(yearOf({startOfYear(2024).seconds - 1}, zone("Asia/Kolkata")), 2024);
}

// Before there were zones, Amsterdam was 19 minutes and some seconds ahead.
TEST(Dates, LocalMeanTimeIsWrittenInGMT)
{
    EXPECT_EQ(
        iso8601(dateOf({{1800, 1, 1}, 12, 0, 0}, zone("America/New_York")).value(), zone("America/New_York")),
        "1800-01-01T16:56:02Z");
}

struct Reading {
    std::string_view text, day;
};

std::string readAndPrint(std::string_view text, DayOrder order = DayOrder::monthFirst)
{
    const auto day = readDay(text, order);
    return day ? iso8601(*day) : "none";
}

TEST(ReadDay, ReadsWhatPeopleWrite)
{
    const Reading rows[] = {
        {"Wed, Mar 4, 1998", "1998-03-04"},
        {"  wednesday march 4th 1998 ", "1998-03-04"},
        {"Mar. 4 1998", "1998-03-04"},
        {"4 March 1998", "1998-03-04"},
        {"the 4th of March 1998", "none"},
        {"4th of March, 1998", "1998-03-04"},
        {"4-Mar-98", "1998-03-04"},
        {"1998 March 4", "1998-03-04"},
        {"Sept 30, 2001", "2001-09-30"},
        {"1998-03-04", "1998-03-04"},
        {"1998/3/4", "1998-03-04"},
        {"19980304", "1998-03-04"},
        {"1998-03-04T23:59:00Z", "1998-03-04"},
        {"19980304T235900", "1998-03-04"},
        {"March 4, 1998 at 5:30 PM", "1998-03-04"},
        {"1998-03-04 05:30:00 +0100", "1998-03-04"},
        {"3/4/1998", "1998-03-04"},
        {"31/12/1998", "1998-12-31"},
        {"4.3.1998", "1998-03-04"},
        {"3/4/68", "2068-03-04"},
        {"3/4/69", "1969-03-04"},
        {"Feb 29, 2000", "2000-02-29"},
        {"Jan 1, 1604", "1604-01-01"},
    };
    for (const auto& [text, day] : rows)
        EXPECT_EQ(readAndPrint(text), day) << text;
    EXPECT_EQ(readAndPrint("3/4/1998", DayOrder::dayFirst), "1998-04-03");
    EXPECT_EQ(readDay("4 May 45", DayOrder::dayFirst, 2024), (CalendarDay{1945, 5, 4}));
}

TEST(ReadDay, NeverMakesAnotherDayOfABadOne)
{
    for (const auto text : {"", "   ", ",", "31/31/1998", "13/13/1998", "2/30/1998", "Feb 29, 1900",
             "0/1/1998", "1998-13-01", "1998-00-01", "19981301", "99999999", "1998", "3/4", "Mar 1998",
             "March", "4 Mars 1998", "Ma 4 1998", "Mar 4, 0", "Mar 4, 12345", "Mar 32, 1998", "3/4-1998",
             "12:30:45", "3/4/1998 tomorrow", "1998-03-04 5", "1998-03-04T", "4 März 1998", "Mar 4 1998 \xFF",
             "123456789012345678901234567890", "Wed Wed Mar 4 1998", "4 4 4 4"})
        EXPECT_EQ(readAndPrint(text), "none") << text;
}

} // namespace
} // namespace platform
