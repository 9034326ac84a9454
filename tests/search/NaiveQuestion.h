// What the parts of the naive search share: one comparison under the rules of one side.
#pragma once

#include "core/ZRConstants.h"
#include "search/NaiveSearch.h"

#include <array>

namespace test {

/// What a comparison asks for, or asks the contrary of.
struct Rule {
    /// The plainest comparison that asks for it.
    ZRSearchComparison test;
    bool inverts = false;
    bool ignoresCase = false;
    bool isYearless = false;

    bool isInterval() const
    {
        return test == kZRWithinIntervalAroundToday || test == kZRWithinIntervalFromToday;
    }
    bool isMembership() const { return test == kZRMemberOfGroup; }
    /// Of whole texts, not of parts of them.
    bool isOrder() const { return test <= kZRGreaterThanOrEqual; }
    bool isTextNegation() const { return inverts && !isInterval() && !isMembership(); }
    bool isNegation() const { return inverts && !isMembership(); }
    /// Those that "no value" answers when nothing is asked for.
    bool isEquality() const { return !inverts && (test == kZREqual || test == kZRContainsSubString); }
};

inline const Rule& ruleOf(ZRSearchComparison comparison)
{
    static constexpr std::array<Rule, kZRNotMemberOfGroup + 1> rules{{
        {.test = kZREqual},
        {.test = kZREqual, .inverts = true},
        {.test = kZRLessThan},
        {.test = kZRLessThanOrEqual},
        {.test = kZRGreaterThan},
        {.test = kZRGreaterThanOrEqual},
        {.test = kZREqual, .ignoresCase = true},
        {.test = kZRContainsSubString},
        {.test = kZRContainsSubString, .ignoresCase = true},
        {.test = kZRPrefixMatch},
        {.test = kZRPrefixMatch, .ignoresCase = true},
        {.test = kZRBitsInBitFieldMatch},
        {.test = kZRContainsSubString, .inverts = true},
        {.test = kZRContainsSubString, .inverts = true, .ignoresCase = true},
        {.test = kZREqual, .inverts = true, .ignoresCase = true},
        {.test = kZRSuffixMatch},
        {.test = kZRSuffixMatch, .ignoresCase = true},
        {.test = kZRWithinIntervalAroundToday},
        {.test = kZRWithinIntervalAroundToday, .isYearless = true},
        {.test = kZRWithinIntervalAroundToday, .inverts = true},
        {.test = kZRWithinIntervalAroundToday, .inverts = true, .isYearless = true},
        {.test = kZRWithinIntervalFromToday},
        {.test = kZRWithinIntervalFromToday, .isYearless = true},
        {.test = kZRWithinIntervalFromToday, .inverts = true},
        {.test = kZRWithinIntervalFromToday, .inverts = true, .isYearless = true},
        {.test = kZRMemberOfGroup},
        {.test = kZRMemberOfGroup, .inverts = true},
    }};
    return rules.at(static_cast<std::size_t>(comparison));
}

/// One comparison under the rules of one side.
struct NaiveSearch::Asked {
    const Condition& condition;
    Differences differences;
    std::string property;
    Value value;
    Rule rule;
    bool isCustom = false;
    /// Which part of an address; absent for the whole of it and for everything else.
    std::optional<std::string> part = {};

    bool differs(Difference difference) const
    {
        return differences.test(static_cast<std::size_t>(difference));
    }
    bool hasLabel() const { return !condition.label.value_or("").empty(); }
    bool hasValue() const { return !value.isNothing(); }
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

inline bool isAnyGroup(const Value& value)
{
    return value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty;
}

} // namespace test
