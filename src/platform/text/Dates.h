// What day and time a moment is in some place, and back.
#pragma once

#include "platform/value/Export.h"
#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A day of the Gregorian calendar, which holds for all years before its invention too.
struct CalendarDay {
    int year = 1970;
    int month = 1;
    int day = 1;

    /// True for a day that exists, in the years 1 to 9999.
    bool isValid() const;
    friend auto operator<=>(const CalendarDay&, const CalendarDay&) = default;
};

/// A day with its time, in some zone.
struct CalendarTime {
    CalendarDay day;
    int hour = 0;
    int minute = 0;
    double second = 0;

    /// True for a valid day with a time from 00:00:00 up to, but excluding, 24:00:00.
    bool isValid() const;
    friend auto operator<=>(const CalendarTime&, const CalendarTime&) = default;
};

/// A time zone: the rules that tell the time of a place from a moment.
///
/// Ownership: a handle to rules that live as long as the process; copy it freely.
/// Threads:   any number may use one zone.
/// Errors:    none.
class PLATFORM_EXPORT TimeZone {
public:
    static TimeZone gmt();
    /// The user's zone: TZ, else the system's. A changed TZ counts from the next call on.
    static TimeZone local();
    /// The system's zone may have changed: every thread looks it up anew.
    static void forgetLocal();
    /// The zone of an Olson name ("Europe/Paris"), "GMT+01:00" or "Zulu"; absent when there is none.
    static std::optional<TimeZone> named(std::string_view name);

    /// Its name as ICU knows it.
    std::string name() const;
    /// Seconds to add to the time of GMT at this moment.
    double offsetFromGMT(Date moment) const;

    friend bool operator==(const TimeZone&, const TimeZone&) = default;

private:
    friend std::optional<Date> dateOf(const CalendarTime&, TimeZone);
    struct Rules;
    explicit TimeZone(const Rules* rules) : _rules(rules) { }
    /// The offset for a time as clocks of the zone show it.
    double offsetFromLocal(double localSeconds) const;

    const Rules* _rules;
};

/// The moment of a calendar time; absent unless the time is valid. A time that a spring change skips is
/// read with the offset before the change (02:30 becomes 03:30); of a time that comes twice in autumn the
/// first is meant.
std::optional<Date> dateOf(const CalendarTime& time, TimeZone zone = TimeZone::local());

/// The calendar time of a moment; absent outside the years 1 to 9999 of that zone.
std::optional<CalendarTime> calendarTimeOf(Date date, TimeZone zone = TimeZone::local());
PLATFORM_EXPORT std::optional<CalendarDay> calendarDayOf(Date date, TimeZone zone = TimeZone::local());

/// 12:00:00 of a day; absent unless the day is valid. Noon stays on its day in nearly every other zone.
PLATFORM_EXPORT std::optional<Date> noonOf(CalendarDay day, TimeZone zone = TimeZone::local());

/// Noon in `to` of the calendar day that `date` is in `from`. A date outside the years 1 to 9999 stays.
Date noonOfSameDay(Date date, TimeZone from, TimeZone to);
/// The day in the local zone, as noon of it in GMT: how days are stored.
Date noonInGMTOfLocalDay(Date date);
/// The day in GMT, as noon of it in the local zone: how stored days are shown.
Date localNoonOfGMTDay(Date date);

/// The year of a moment; absent outside the years 1 to 9999.
std::optional<int> yearOf(Date date, TimeZone zone = TimeZone::gmt());
/// 1 January of a year, 00:00 GMT. Any year.
Date startOfYear(int year);

/// "1998-03-04T12:00:00Z" in GMT, "1998-03-04T13:00:00+01:00" elsewhere (RFC 3339); whole seconds, cut
/// downwards. Empty outside the years 1 to 9999.
PLATFORM_EXPORT std::string iso8601(Date date, TimeZone zone = TimeZone::gmt());
/// "1998-03-04".
PLATFORM_EXPORT std::string iso8601(CalendarDay day);

/// What comes first in a day of numbers alone, such as 3/4/1998.
enum class DayOrder { monthFirst, dayFirst };

/// Reads a day as people write it, with English names: "Wed, Mar 4, 1998", "4 March 1998", "Mar. 4 1998",
/// "1998-03-04", "19980304", "3/4/1998". Blanks, commas, case, the weekday and a time behind the day do not
/// matter; full stops ("4.3.1998") and a first number above 12 mean that the day comes first. Of a year in
/// two digits the latest is meant that is not above `latestYear`. Absent for anything else, and for a day
/// that does not exist: 31/31/1998 is no day at all.
PLATFORM_EXPORT std::optional<CalendarDay> readDay(
    std::string_view text, DayOrder order = DayOrder::monthFirst, int latestYear = 2068);

} // namespace platform
