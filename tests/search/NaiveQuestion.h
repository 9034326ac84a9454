// What the parts of the naive search share: one comparison under the rules of one side.
#pragma once

#include "core/ZRConstants.h"
#include "search/NaiveSearch.h"

#include <array>

namespace test {

/// What a comparison asks for, or asks the contrary of.
struct Rule {
    enum class Test {
        equal,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        contains,
        beginsWith,
        endsWith,
        bits,
        aroundToday,
        fromToday,
        membership
    };

    Test test;
    bool inverts = false;
    bool ignoresCase = false;
    bool isYearless = false;

    bool isInterval() const { return test == Test::aroundToday || test == Test::fromToday; }
    bool isMembership() const { return test == Test::membership; }
    /// Of whole texts, not of parts of them.
    bool isOrder() const { return test <= Test::greaterOrEqual; }
    bool isTextNegation() const { return inverts && !isInterval() && !isMembership(); }
    bool isNegation() const { return inverts && !isMembership(); }
    /// Those that "no value" answers when nothing is asked for.
    bool isEquality() const { return !inverts && (test == Test::equal || test == Test::contains); }
};

inline const Rule& ruleOf(ZRSearchComparison comparison)
{
    using enum Rule::Test;
    static constexpr std::array<Rule, kZRNotMemberOfGroup + 1> rules{{
        {.test = equal},
        {.test = equal, .inverts = true},
        {.test = less},
        {.test = lessOrEqual},
        {.test = greater},
        {.test = greaterOrEqual},
        {.test = equal, .ignoresCase = true},
        {.test = contains},
        {.test = contains, .ignoresCase = true},
        {.test = beginsWith},
        {.test = beginsWith, .ignoresCase = true},
        {.test = bits},
        {.test = contains, .inverts = true},
        {.test = contains, .inverts = true, .ignoresCase = true},
        {.test = equal, .inverts = true, .ignoresCase = true},
        {.test = endsWith},
        {.test = endsWith, .ignoresCase = true},
        {.test = aroundToday},
        {.test = aroundToday, .isYearless = true},
        {.test = aroundToday, .inverts = true},
        {.test = aroundToday, .inverts = true, .isYearless = true},
        {.test = fromToday},
        {.test = fromToday, .isYearless = true},
        {.test = fromToday, .inverts = true},
        {.test = fromToday, .inverts = true, .isYearless = true},
        {.test = membership},
        {.test = membership, .inverts = true},
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
