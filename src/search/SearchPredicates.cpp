// How one key is compared in the store: the conditions that all kinds of properties are made of.
#include "search/SearchPredicates.h"

#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/text/Dates.h"
#include "search/ZRSearchElement.h"
#include "store/ZRModelHooks.h"

#include <fmt/format.h>

using objectstore::Comparator;
using objectstore::PredicateRef;
using objectstore::Rows;
using objectstore::StorePredicate;
using objectstore::TextOption;
using platform::Date;
using platform::Value;

namespace {

/// `low <= key AND key <= high`.
PredicateRef between(const Value& low, const std::string& key, const Value& high)
{
    return StorePredicate::all({StorePredicate::compareConstant(low, Comparator::lessOrEqual, key),
        StorePredicate::compare(key, Comparator::lessOrEqual, high)});
}

PredicateRef withinInterval(const std::string& key, const SearchQuestion& question)
{
    const double interval = question.value.asReal();
    const bool futureOnly = question.comparison >= kZRWithinIntervalFromToday;
    if (isYearless(question.comparison))
        return _predicateForYearlessSearchOnDatePropertyKeyPath(key, futureOnly, question.isOfDays, interval);
    const double now = platform::Clock::current().now();
    return between(Value(Date{futureOnly ? now : now - interval}), key, Value(Date{now + interval}));
}

/// Once a process: a search must not change its mind at New Year while others of the year are kept.
double lengthOfThisYear()
{
    static const double length = [] {
        const int year = platform::yearOf(Date{platform::Clock::current().now()}).value_or(1970);
        return platform::startOfYear(year + 1).seconds - platform::startOfYear(year).seconds;
    }();
    return length;
}

/// Today as days are stored: the day here, as noon of it in GMT.
double noonGMTOfToday()
{
    return platform::noonInGMTOfLocalDay(Date{platform::Clock::current().now()}).seconds;
}

} // namespace

void logFailedConversion(const ZRSearchElement& element, const std::exception& failure)
{
    platform::log(fmt::format("Exception in search element predicate conversion:\n\t<searchelement>{}"
                              "</searchelement>\n\t<exception>{}</exception>, conversion failed.",
        element.description(), failure.what()));
}

bool isInterval(ZRSearchComparison comparison)
{
    return comparison >= kZRWithinIntervalAroundToday && comparison <= kZRNotWithinIntervalFromTodayYearless;
}

bool isYearless(ZRSearchComparison comparison)
{
    return isInterval(comparison) && (comparison - kZRWithinIntervalAroundToday) % 2 != 0;
}

bool wantsNone(ZRSearchComparison comparison)
{
    switch (comparison) {
    case kZRNotEqual:
    case kZRDoesNotContainSubString:
    case kZRDoesNotContainSubStringCaseInsensitive:
    case kZRNotEqualCaseInsensitive:
    case kZRNotWithinIntervalAroundToday:
    case kZRNotWithinIntervalAroundTodayYearless:
    case kZRNotWithinIntervalFromToday:
    case kZRNotWithinIntervalFromTodayYearless:
        return true;
    default:
        return false;
    }
}

PredicateRef positiveTest(const std::string& key, const SearchQuestion& question)
{
    const auto test = [&](Comparator comparator, TextOption option = TextOption::exact) {
        return StorePredicate::compare(key, comparator, question.value, option);
    };
    switch (question.comparison) {
    case kZREqual:
    case kZRNotEqual:
        return test(Comparator::equal);
    case kZRLessThan:
        return test(Comparator::less);
    case kZRLessThanOrEqual:
        return test(Comparator::lessOrEqual);
    case kZRGreaterThan:
        return test(Comparator::greater);
    case kZRGreaterThanOrEqual:
        return test(Comparator::greaterOrEqual);
    case kZREqualCaseInsensitive:
    case kZRNotEqualCaseInsensitive:
        return test(Comparator::equal, question.caseOption);
    case kZRContainsSubString:
    case kZRDoesNotContainSubString:
        return test(Comparator::contains);
    case kZRContainsSubStringCaseInsensitive:
    case kZRDoesNotContainSubStringCaseInsensitive:
        return test(Comparator::contains, question.caseOption);
    case kZRPrefixMatch:
        return test(Comparator::beginsWith);
    case kZRPrefixMatchCaseInsensitive:
        return test(Comparator::beginsWith, question.caseOption);
    case kZRSuffixMatch:
        return test(Comparator::endsWith);
    case kZRSuffixMatchCaseInsensitive:
        return test(Comparator::endsWith, question.caseOption);
    default:
        return isInterval(question.comparison) && question.value.isNumber() ? withinInterval(key, question)
                                                                            : nullptr;
    }
}

PredicateRef _predicateForYearlessSearchOnDatePropertyKeyPath(
    const std::string& keyPath, bool futureOnly, bool isOfDays, double searchValue)
{
    const std::string key = keyPath + "Yearless";
    if (searchValue >= lengthOfThisYear() || (!futureOnly && searchValue >= lengthOfThisYear() / 2))
        return StorePredicate::isPresent(key);
    const double base = isOfDays ? noonGMTOfToday() : platform::Clock::current().now();
    const double start = futureOnly ? base : base - searchValue;
    const auto zone = isOfDays ? platform::TimeZone::gmt() : platform::TimeZone::local();
    const auto yearless = [&](double moment) {
        return hooks::extractYear(Value(Date{moment}), zone).yearless;
    };
    const Value from = yearless(start);
    const Value to = yearless(futureOnly ? start + searchValue : start + 2 * searchValue);
    const bool isWithinOneYear = to.asReal() > from.asReal();
    std::vector<PredicateRef> ends{StorePredicate::compareConstant(from, Comparator::lessOrEqual, key),
        StorePredicate::compare(key, Comparator::lessOrEqual, to)};
    return isWithinOneYear ? StorePredicate::all(std::move(ends)) : StorePredicate::any(std::move(ends));
}

namespace {

/// The rows of the kind and label that fulfil `test`; all of them without one.
PredicateRef rowsWith(
    const RowSearch& rows, Rows wanted, const SearchQuestion& question, const PredicateRef& test)
{
    std::vector<PredicateRef> parts;
    if (test)
        parts.push_back(test);
    if (rows.kind)
        parts.push_back(rows.kind);
    if (question.label)
        parts.push_back(StorePredicate::compare("label", Comparator::equal, Value(*question.label)));
    return StorePredicate::rows(rows.relationship, wanted, StorePredicate::all(std::move(parts)));
}

/// Without a value: whether there is any entry that has one.
PredicateRef rowsWithoutValue(const RowSearch& rows, const SearchQuestion& question)
{
    const auto present = StorePredicate::isPresent(rows.key);
    const bool wantsValue = question.comparison == kZRNotEqual;
    if (!question.label)
        return rowsWith(rows, wantsValue ? Rows::some : Rows::none, question, present);
    if (wantsValue)
        return StorePredicate::any(
            {rowsWith(rows, Rows::some, question, present), rowsWith(rows, Rows::some, question, nullptr)});
    return StorePredicate::any({rowsWith(rows, Rows::some, question, StorePredicate::isAbsent(rows.key)),
        rowsWith(rows, Rows::none, question, nullptr)});
}

} // namespace

PredicateRef rowsPredicate(const RowSearch& rows, const SearchQuestion& question)
{
    if (question.value.isNothing())
        return rowsWithoutValue(rows, question);
    const auto test = positiveTest(rows.key, question);
    if (!test)
        return nullptr;
    return rowsWith(rows, wantsNone(question.comparison) ? Rows::none : Rows::some, question, test);
}
