// How moments become days and times, and back.
#include "platform/text/Dates.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>

namespace platform {

namespace {

constexpr int kFirstYear = 1, kLastYear = 9999;
constexpr double kSecondsPerDay = 86400;

std::chrono::sys_days dayNumber(CalendarDay day)
{
    return std::chrono::year(day.year) / std::chrono::month(static_cast<unsigned>(day.month))
        / std::chrono::day(static_cast<unsigned>(day.day));
}

double secondsOf(CalendarDay day)
{
    return static_cast<double>(dayNumber(day).time_since_epoch().count()) * kSecondsPerDay;
}

bool isInRange(double localSeconds)
{
    return localSeconds >= secondsOf({kFirstYear, 1, 1}) && localSeconds < secondsOf({kLastYear + 1, 1, 1});
}

CalendarDay dayOfNumber(double number)
{
    const std::chrono::year_month_day day{std::chrono::sys_days(std::chrono::days(static_cast<int>(number)))};
    return {static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
        static_cast<int>(static_cast<unsigned>(day.day()))};
}

std::string offsetText(double offset)
{
    if (offset == 0)
        return "Z";
    const int minutes = static_cast<int>(std::abs(offset) / 60);
    return fmt::format("{}{:02}:{:02}", offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

} // namespace

bool CalendarDay::isValid() const
{
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31)
        return false;
    const std::chrono::year_month_day date{std::chrono::year(year),
        std::chrono::month(static_cast<unsigned>(month)), std::chrono::day(static_cast<unsigned>(day))};
    return date.ok();
}

bool CalendarTime::isValid() const
{
    return day.isValid() && hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0
        && second < 60;
}

std::optional<Date> dateOf(const CalendarTime& time, TimeZone zone)
{
    if (!time.isValid())
        return std::nullopt;
    const double local = secondsOf(time.day) + time.hour * 3600 + time.minute * 60 + time.second;
    return Date{local - zone.offsetFromLocal(local)};
}

std::optional<CalendarTime> calendarTimeOf(Date date, TimeZone zone)
{
    const double local = date.seconds + zone.offsetFromGMT(date);
    if (!isInRange(local))
        return std::nullopt;
    const double days = std::floor(local / kSecondsPerDay);
    const double seconds = local - days * kSecondsPerDay;
    const int minutes = static_cast<int>(seconds / 60);
    return CalendarTime{dayOfNumber(days), minutes / 60, minutes % 60, seconds - minutes * 60};
}

std::optional<CalendarDay> calendarDayOf(Date date, TimeZone zone)
{
    const auto time = calendarTimeOf(date, zone);
    return time ? std::optional(time->day) : std::nullopt;
}

std::optional<Date> noonOf(CalendarDay day, TimeZone zone) { return dateOf({day, 12, 0, 0}, zone); }

Date noonOfSameDay(Date date, TimeZone from, TimeZone to)
{
    const auto day = calendarDayOf(date, from);
    return day ? noonOf(*day, to).value_or(date) : date;
}

Date noonInGMTOfLocalDay(Date date) { return noonOfSameDay(date, TimeZone::local(), TimeZone::gmt()); }

Date localNoonOfGMTDay(Date date) { return noonOfSameDay(date, TimeZone::gmt(), TimeZone::local()); }

std::optional<int> yearOf(Date date, TimeZone zone)
{
    const auto day = calendarDayOf(date, zone);
    return day ? std::optional(day->year) : std::nullopt;
}

Date startOfYear(int year) { return {secondsOf({year, 1, 1})}; }

std::string iso8601(Date date, TimeZone zone)
{
    const double offset = zone.offsetFromGMT(date);
    // Local mean time, before there were zones, is no whole number of minutes and has no such form.
    if (std::fmod(offset, 60) != 0)
        return iso8601(date, TimeZone::gmt());
    const auto time = calendarTimeOf(date, zone);
    if (!time)
        return {};
    return fmt::format("{}T{:02}:{:02}:{:02}{}", iso8601(time->day), time->hour, time->minute,
        static_cast<int>(time->second), offsetText(offset));
}

std::string iso8601(CalendarDay day)
{
    return fmt::format("{:04}-{:02}-{:02}", day.year, day.month, day.day);
}

} // namespace platform
