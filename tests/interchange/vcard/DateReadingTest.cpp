// How the dates of cards are read, in whatever zone the user lives.
#include "interchange/vcard/DateReading.h"
#include "platform/text/Dates.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace platform;

namespace {

std::string textOf(std::optional<Date> date, TimeZone zone) { return date ? iso8601(*date, zone) : "(none)"; }

class DateReading : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { setenv("TZ", GetParam(), 1); }
    void TearDown() override { setenv("TZ", "UTC", 1); }
    TimeZone zone = *TimeZone::named(GetParam());
};

TEST_P(DateReading, OfDashedDatesIsInTheUsersZone)
{
    const std::pair<std::string, CalendarTime> cases[] = {
        {"1970-05-01", {{1970, 5, 1}, 12, 0, 0}},
        {"1970-5-1", {{1970, 5, 1}, 12, 0, 0}},
        {"1970/05/01", {{1970, 5, 1}, 12, 0, 0}},
        {"1970年5月1日", {{1970, 5, 1}, 12, 0, 0}},
        {"1970-05-01T10:20:30Z", {{1970, 5, 1}, 10, 20, 30}},
        {"1970-05-01 10:20", {{1970, 5, 1}, 10, 20, 0}},
        // Midnight is taken for a day without a time.
        {"1970-05-01T00:00:00", {{1970, 5, 1}, 12, 0, 0}},
        {"1970-05-01T00:00:01", {{1970, 5, 1}, 0, 0, 1}},
        {"0070-05-01", {{70, 5, 1}, 12, 0, 0}},
        {"1970-05-01Thu", {{1970, 5, 1}, 12, 0, 0}},
        {"1604-02-29", {{1604, 2, 29}, 12, 0, 0}},
    };
    for (const auto& [text, time] : cases)
        EXPECT_EQ(textOf(dateFromISO8601String(text), zone), textOf(dateOf(time, zone), zone)) << text;
}

TEST_P(DateReading, OfEightDigitsIsInGMT)
{
    EXPECT_EQ(textOf(dateFromISO8601String("19700501"), TimeZone::gmt()), "1970-05-01T12:00:00Z");
    EXPECT_EQ(textOf(dateFromISO8601String("19000228"), TimeZone::gmt()), "1900-02-28T12:00:00Z");
}

TEST_P(DateReading, OfABirthdayDropsADashAndKnowsAnOldWriter)
{
    const std::string noon = textOf(dateOf({{1970, 5, 1}, 12, 0, 0}, zone), zone);
    EXPECT_EQ(textOf(dateFromBirthdayString("-1970-05-01"), zone), noon);
    EXPECT_EQ(textOf(dateFromBirthdayString("Fri, May 1, 1970"), zone), noon);
    EXPECT_EQ(textOf(dateFromBirthdayString("-19700501"), TimeZone::gmt()), "1970-05-01T12:00:00Z");
    EXPECT_EQ(dateFromBirthdayString("1970,05"), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Zones, DateReading, testing::Values("UTC", "Pacific/Auckland", "Asia/Kolkata", "America/Los_Angeles"));

TEST(DateReadingOfNonsense, GivesNoDate)
{
    for (const char* text : {"", "-", "1970", "1970-05", "1970-05-", "1970-x-01", "x", "1970501", "197005011",
             "1970-13-01", "1970-02-30", "19701301", "19700230", "1970050x", "0000-01-01", "--0501",
             "1970-05-01T25:00:00", "1970-05-01T10:61", "99999999999-01-01", "1970--5-01", "1970-+-1-1"})
        EXPECT_EQ(dateFromISO8601String(text), std::nullopt) << text;
}

} // namespace
