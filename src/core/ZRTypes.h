// The plain types that C and C++ callers share: indexes and the codes of value types.
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
