// How one value compares with what is sought: texts, numbers, and days from today.
#include "search/NaiveQuestion.h"

#include "platform/text/Compare.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"

#include <algorithm>
#include <cmath>

namespace test {

namespace {

bool isOneKind(const Value& a, const Value& b)
{
    return (a.isString() && b.isString()) || (a.isNumber() && b.isNumber()) || (a.isDate() && b.isDate())
        || (a.isData() && b.isData());
}

std::weak_ordering orderOf(const Value& a, const Value& b)
{
    const auto order = [](const auto& left, const auto& right) {
        return left < right ? std::weak_ordering::less
            : right < left  ? std::weak_ordering::greater
                            : std::weak_ordering::equivalent;
    };
    if (a.isDate())
        return order(a.asDate(), b.asDate());
    return a.isData() ? order(a.asBytes(), b.asBytes()) : order(a.asReal(), b.asReal());
}

bool isOrdered(std::weak_ordering order, ZRSearchComparison test)
{
    switch (test) {
    case kZREqual:
        return order == 0;
    case kZRLessThan:
        return order < 0;
    case kZRLessThanOrEqual:
        return order <= 0;
    case kZRGreaterThan:
        return order > 0;
    case kZRGreaterThanOrEqual:
        return order >= 0;
    default:
        return false;
    }
}

/// Whether a part of the text is there: anywhere, at its beginning, at its end.
bool containsText(std::string_view text, std::string_view part, ZRSearchComparison test)
{
    if (test == kZRPrefixMatch)
        return text.starts_with(part);
    if (test == kZRSuffixMatch)
        return text.ends_with(part);
    return text.find(part) != std::string_view::npos;
}

platform::FoldOptions foldOf(const Rule& rule, const Condition& condition)
{
    if (!rule.ignoresCase)
        return platform::kFoldNothing;
    return condition.ignoresDiacritics ? platform::kFoldCaseAndDiacritics : platform::kFoldCase;
}

unsigned optionsOf(platform::FoldOptions fold)
{
    return (fold & platform::kFoldCase ? platform::kCompareCaseInsensitive : 0U)
        | (fold & platform::kFoldDiacritics ? platform::kCompareDiacriticInsensitive : 0U);
}

constexpr double kDay = 86400;

/// How many days the day of 1976 (a leap year) is behind 1 January; of other years, before or after it.
double dayIn1976(platform::CalendarDay day, int year)
{
    const bool isSkipped = day.month == 2 && day.day == 29 && year != 1976;
    const platform::CalendarDay there =
        isSkipped ? platform::CalendarDay{year, 3, 1} : platform::CalendarDay{year, day.month, day.day};
    return (platform::noonOf(there, platform::TimeZone::gmt())->seconds - platform::startOfYear(1976).seconds)
        / kDay;
}

} // namespace

/// One value, or none.
bool NaiveSearch::ofEntry(const Value& value, const Asked& asked) const
{
    if (asked.rule.test == kZRBitsInBitFieldMatch) {
        const std::int64_t bits = value.asInteger(), sought = asked.value.asInteger();
        constexpr std::int64_t showAs = 7, nameOrder = 56;
        if (!asked.value.isNumber() || !(value.isNothing() || value.isNumber()))
            return false;
        if (asked.property == zr::kZRPersonFlags)
            return (bits & (sought > 1 ? nameOrder : showAs)) == sought;
        return (bits & sought) == sought;
    }
    if (value.isNothing() && !asked.hasValue())
        return asked.rule.isEquality();
    if (value.isNothing() || !asked.hasValue())
        return asked.rule.isTextNegation();
    return holds(value, asked);
}

bool NaiveSearch::holds(const Value& value, const Asked& asked) const
{
    if (asked.rule.isInterval())
        return isWithin(value, asked);
    if (value.isData() && !asked.differs(Difference::data))
        return false;
    if (!isOneKind(value, asked.value))
        return asked.rule.isTextNegation() && asked.differs(Difference::otherKinds);
    if (asked.rule.isMembership())
        return false;
    if (!value.isString())
        return isOrdered(orderOf(value, asked.value), asked.rule.test) != asked.rule.inverts;
    const auto holdsFor = asked.rule.isOrder() ? holdsText : holdsPart;
    return holdsFor(value.asText(), asked.value.asText(), asked) != asked.rule.inverts;
}

/// Equality and order.
bool NaiveSearch::holdsText(std::string_view text, std::string_view sought, const Asked& asked)
{
    const auto test = asked.rule.test;
    const auto fold = foldOf(asked.rule, asked.condition);
    if (asked.property == zr::kZREmailProperty && test == kZREqual && asked.rule.ignoresCase) {
        if (asked.differs(Difference::emailEquality))
            return platform::foldCaseAndDiacritics(text) == platform::foldCaseAndDiacritics(sought);
    } else if (asked.differs(Difference::localizedComparison)) {
        return isOrdered(platform::transformed(text, fold) <=> platform::transformed(sought, fold), test);
    }
    return isOrdered(platform::compare(text, sought, optionsOf(fold) | platform::kCompareLocalized), test);
}

// Memory takes a part that is found in a text for there only if it is as long as what was sought.
bool NaiveSearch::holdsPart(std::string_view text, std::string_view sought, const Asked& asked)
{
    const auto fold = foldOf(asked.rule, asked.condition);
    const bool isContained = asked.rule.test == kZRContainsSubString;
    const std::string folded = platform::transformed(sought, fold);
    if (sought.empty())
        return isContained;
    if (folded.empty() && !asked.differs(Difference::foldedToNothing))
        return false;
    if (isContained && !folded.empty() && !asked.differs(Difference::foundLength)) {
        const auto found = platform::rangeOf(sought, text, optionsOf(fold));
        return found && platform::utf16Length(found->of(text)) == platform::utf16Length(sought);
    }
    return containsText(platform::transformed(text, fold), folded, asked.rule.test);
}

// ---- days from today

bool NaiveSearch::isWithin(const Value& value, const Asked& asked) const
{
    if (!value.isDate() || !asked.value.isNumber())
        return false;
    const Date date = value.asDate();
    const Date stored = asked.isDay() ? platform::noonInGMTOfLocalDay(date) : date;
    const double interval = asked.value.asReal();
    bool isIn = false;
    if (asked.rule.isYearless) {
        isIn = asked.differs(Difference::yearCompanion) ? isWithinYearlessInStore(stored, asked)
                                                        : isWithinYearless(date, asked);
    } else {
        const Date compared = asked.differs(Difference::daysAtNoonGMT) ? stored : date;
        const double distance = compared.seconds - _now.seconds;
        const double measured = asked.rule.test == kZRWithinIntervalFromToday ? distance : std::abs(distance);
        isIn = measured >= 0
            && (asked.differs(Difference::intervalEnds) ? measured <= interval : measured < interval);
    }
    return isIn != asked.rule.inverts;
}

/// Both days are taken to 1976; the nearer of the years around counts.
bool NaiveSearch::isWithinYearless(Date date, const Asked& asked) const
{
    const auto day = platform::calendarDayOf(date), today = platform::calendarDayOf(_now);
    if (!day || !today)
        return false;
    const double interval = asked.value.asReal();
    const double from = dayIn1976(*today, 1976), there = dayIn1976(*day, 1976);
    const double other = dayIn1976(*day, there < from ? 1977 : 1975);
    if (asked.rule.test == kZRWithinIntervalFromToday) {
        const double ahead = ((there < from ? other : there) - from) * kDay;
        return ahead >= 0 && ahead < interval;
    }
    return std::min(std::abs(there - from), std::abs(other - from)) * kDay < interval;
}

/// The store keeps how long after the beginning of its year a date is, in the zone that it is read in: those
/// of this year since New Year in GMT, all others since New Year there. Days are read in GMT.
double NaiveSearch::sinceNewYear(Date date, const Asked& asked) const
{
    const auto zone = asked.isDay() ? platform::TimeZone::gmt() : platform::TimeZone::local();
    const auto day = platform::calendarDayOf(date, zone);
    const int year = day ? day->year : 1970;
    const bool isOfThisYear = year == platform::yearOf(_now);
    const Date newYear =
        isOfThisYear ? platform::startOfYear(year) : *platform::dateOf({.day = {year, 1, 1}}, zone);
    return date.seconds - newYear.seconds;
}

bool NaiveSearch::isWithinYearlessInStore(Date stored, const Asked& asked) const
{
    const int year = platform::yearOf(_now).value_or(1970);
    const double length = platform::startOfYear(year + 1).seconds - platform::startOfYear(year).seconds;
    const bool isAhead = asked.rule.test == kZRWithinIntervalFromToday;
    const double interval = asked.value.asReal();
    if (interval >= length || (!isAhead && interval >= length / 2))
        return true;
    const Date base = asked.isDay() ? platform::noonInGMTOfLocalDay(_now) : _now;
    const double start = sinceNewYear({isAhead ? base.seconds : base.seconds - interval}, asked);
    const double end = sinceNewYear({base.seconds + interval}, asked);
    const double place = sinceNewYear(stored, asked);
    return end > start ? start <= place && place <= end : start <= place || place <= end;
}

} // namespace test
