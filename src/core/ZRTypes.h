// The plain types that C and C++ callers share: indexes, the codes of value types and of searches.
#pragma once

#include <stdint.h>

/// Counts and indexes.
typedef int64_t ZRIndex;
/// "Nowhere": what a search answers when nothing was found.
#define kZRNotFound INT64_MAX

/// What kind of value a property holds. The multi-value form of a type is its code with kZRPropertyTypeMulti
/// set. Custom properties store these codes, so they never change.
typedef int32_t ZRPropertyType;
enum {
    kZRPropertyTypeUnknown,
    kZRPropertyTypeString,
    kZRPropertyTypeInteger,
    kZRPropertyTypeReal,
    kZRPropertyTypeDate,
    kZRPropertyTypeArray,
    kZRPropertyTypeDictionary,
    kZRPropertyTypeData,
    kZRPropertyTypeMulti = 0x100
};

/// How a search compares a property with a value. Searches are kept in files, so the codes never change.
typedef int32_t ZRSearchComparison;
enum {
    kZREqual,
    kZRNotEqual,
    kZRLessThan,
    kZRLessThanOrEqual,
    kZRGreaterThan,
    kZRGreaterThanOrEqual,
    kZREqualCaseInsensitive,
    kZRContainsSubString,
    kZRContainsSubStringCaseInsensitive,
    kZRPrefixMatch,
    kZRPrefixMatchCaseInsensitive,
    kZRBitsInBitFieldMatch,
    kZRDoesNotContainSubString,
    kZRDoesNotContainSubStringCaseInsensitive,
    kZRNotEqualCaseInsensitive,
    kZRSuffixMatch,
    kZRSuffixMatchCaseInsensitive,
    kZRWithinIntervalAroundToday,
    kZRWithinIntervalAroundTodayYearless,
    kZRNotWithinIntervalAroundToday,
    kZRNotWithinIntervalAroundTodayYearless,
    kZRWithinIntervalFromToday,
    kZRWithinIntervalFromTodayYearless,
    kZRNotWithinIntervalFromToday,
    kZRNotWithinIntervalFromTodayYearless,
    kZRMemberOfGroup,
    kZRNotMemberOfGroup
};

/// How the parts of a search go together.
typedef int32_t ZRSearchConjunction;
enum { kZRConjunctionAnd, kZRConjunctionOr };
