// Days are read as people write them, and others refused.
#include "platform/text/Dates.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

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
