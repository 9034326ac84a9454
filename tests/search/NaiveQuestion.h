// What the parts of the naive search share: one comparison under the rules of one side.
#pragma once

#include "core/ZRConstants.h"
#include "search/NaiveSearch.h"

#include <algorithm>
#include <initializer_list>

namespace test {

/// One comparison under the rules of one side.
struct NaiveSearch::Asked {
    const Condition& condition;
    Differences differences;
    std::string property;
    Value value;
    ZRSearchComparison comparison;
    bool isCustom = false;
    /// Which part of an address; absent for the whole of it and for everything else.
    std::optional<std::string> part = {};

    bool differs(Difference difference) const
    {
        return differences.test(static_cast<std::size_t>(difference));
    }
    bool hasLabel() const { return !condition.label.value_or("").empty(); }
    bool hasValue() const { return !value.isNothing(); }
    bool is(std::initializer_list<ZRSearchComparison> codes) const
    {
        return std::ranges::find(codes, comparison) != codes.end();
    }
    bool isTextNegation() const
    {
        return is({kZRNotEqual, kZRDoesNotContainSubString, kZRDoesNotContainSubStringCaseInsensitive,
            kZRNotEqualCaseInsensitive});
    }
    bool isNegation() const
    {
        return isTextNegation()
            || is({kZRNotWithinIntervalAroundToday, kZRNotWithinIntervalAroundTodayYearless,
                kZRNotWithinIntervalFromToday, kZRNotWithinIntervalFromTodayYearless});
    }
    /// Those that "no value" answers when nothing is asked for.
    bool isEquality() const
    {
        return is(
            {kZREqual, kZREqualCaseInsensitive, kZRContainsSubString, kZRContainsSubStringCaseInsensitive});
    }
    bool isDay() const
    {
        return property == zr::kZRBirthdayProperty || property == zr::kZROtherDatesProperty;
    }
};

/// Nothing to ask for: the store takes an empty text for it too.
inline bool isNoValue(const Value& value)
{
    return value.isNothing() || (value.isString() && value.asText().empty());
}

inline bool isIntervalComparison(ZRSearchComparison comparison)
{
    return comparison >= kZRWithinIntervalAroundToday && comparison <= kZRNotWithinIntervalFromTodayYearless;
}

inline bool isMembership(ZRSearchComparison comparison)
{
    return comparison == kZRMemberOfGroup || comparison == kZRNotMemberOfGroup;
}

inline bool isAnyGroup(const Value& value)
{
    return value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty;
}

} // namespace test
