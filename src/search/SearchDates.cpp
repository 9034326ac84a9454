// Whether a date is near today: the date tests of searches in memory.
#include "search/SearchDates.h"

#include "platform/run/Clock.h"
#include "platform/text/Dates.h"

#include <cmath>

using platform::CalendarDay;
using platform::Date;
using platform::Value;

namespace {

/// A leap year, so that every day of any year is in it.
constexpr int referenceYear = 1976;

/// Noon of the day in that year; the 29th of February is the 1st of March where there is none.
double noonIn(int year, CalendarDay day)
{
    day.year = year;
    if (!day.isValid())
        day = {year, 3, 1};
    return platform::noonOf(day, platform::TimeZone::gmt())->seconds;
}

/// Seconds from today to the day, all years being the same: to its next return, or to the nearest.
double distanceWithoutYear(CalendarDay day, CalendarDay today, bool futureOnly)
{
    const double now = noonIn(referenceYear, today);
    const double inReference = noonIn(referenceYear, day);
    const bool isPast = inReference < now;
    if (futureOnly)
        return (isPast ? noonIn(referenceYear + 1, day) : inReference) - now;
    const double other = noonIn(isPast ? referenceYear + 1 : referenceYear - 1, day);
    return std::min(std::abs(inReference - now), std::abs(other - now));
}

bool isWithin(double distance, double interval, bool futureOnly)
{
    return futureOnly ? distance >= 0 && distance < interval : std::abs(distance) < interval;
}

} // namespace

bool isWithinInterval(const Value& date, ZRSearchComparison comparison, double interval)
{
    if (!date.isDate())
        return false;
    const int form = comparison - kZRWithinIntervalAroundToday;
    const bool futureOnly = form >= 4, isNegated = (form & 2) != 0, isYearless = (form & 1) != 0;
    const double now = platform::Clock::current().now();
    if (!isYearless)
        return isWithin(date.asDate().seconds - now, interval, futureOnly) != isNegated;
    const auto day = platform::calendarDayOf(date.asDate());
    const auto today = platform::calendarDayOf(Date{now});
    const bool isNear =
        day && today && isWithin(distanceWithoutYear(*day, *today, futureOnly), interval, futureOnly);
    return isNear != isNegated;
}
