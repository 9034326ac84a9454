// Whether the header still says what programs were compiled with: it does when this compiles as plain C11.
#include "api/roster.h"

// A prototype is the type of a pointer to the function.
#define ZR_FUNCTION(result, name, arguments)                                                                 \
    _Static_assert(_Generic(&name, result(*) arguments : 1, default : 0), "the prototype of " #name);
#include "api/PlainFunctions.def"

// Codes are stored in files and compiled into programs.
_Static_assert(kZRTypeNone == 0 && kZRTypeNull == 1 && kZRTypeString == 2 && kZRTypeNumber == 3
        && kZRTypeDate == 4 && kZRTypeData == 5 && kZRTypeArray == 6 && kZRTypeDictionary == 7
        && kZRTypeMultiValue == 8 && kZRTypeMutableMultiValue == 9 && kZRTypePerson == 10
        && kZRTypeGroup == 11 && kZRTypeSmartGroup == 12 && kZRTypeRecord == 13 && kZRTypeSearchElement == 14
        && kZRTypeRoster == 15,
    "the kinds of handles");
_Static_assert(kZRPropertyTypeUnknown == 0 && kZRPropertyTypeString == 1 && kZRPropertyTypeInteger == 2
        && kZRPropertyTypeReal == 3 && kZRPropertyTypeDate == 4 && kZRPropertyTypeArray == 5
        && kZRPropertyTypeDictionary == 6 && kZRPropertyTypeData == 7 && kZRPropertyTypeMulti == 256,
    "the types of properties");
_Static_assert(kZREqual == 0 && kZRNotEqual == 1 && kZRLessThan == 2 && kZRLessThanOrEqual == 3
        && kZRGreaterThan == 4 && kZRGreaterThanOrEqual == 5 && kZREqualCaseInsensitive == 6
        && kZRContainsSubString == 7 && kZRContainsSubStringCaseInsensitive == 8 && kZRPrefixMatch == 9
        && kZRPrefixMatchCaseInsensitive == 10 && kZRBitsInBitFieldMatch == 11
        && kZRDoesNotContainSubString == 12 && kZRDoesNotContainSubStringCaseInsensitive == 13
        && kZRNotEqualCaseInsensitive == 14 && kZRSuffixMatch == 15 && kZRSuffixMatchCaseInsensitive == 16
        && kZRWithinIntervalAroundToday == 17 && kZRWithinIntervalAroundTodayYearless == 18
        && kZRNotWithinIntervalAroundToday == 19 && kZRNotWithinIntervalAroundTodayYearless == 20
        && kZRWithinIntervalFromToday == 21 && kZRWithinIntervalFromTodayYearless == 22
        && kZRNotWithinIntervalFromToday == 23 && kZRNotWithinIntervalFromTodayYearless == 24
        && kZRMemberOfGroup == 25 && kZRNotMemberOfGroup == 26 && kZRConjunctionAnd == 0
        && kZRConjunctionOr == 1,
    "the comparisons and conjunctions of searches");

_Static_assert(sizeof(ZRIndex) == 8 && sizeof(ZRTypeID) == 4 && sizeof(ZRPropertyType) == 4
        && sizeof(ZRSearchComparison) == 4 && sizeof(ZRSearchConjunction) == 4 && kZRNotFound == INT64_MAX,
    "the sizes of numbers");
