// How two values compare in memory: the order and the text tests that searches of live records use.
#pragma once

#include "platform/text/Compare.h"
#include "platform/value/Value.h"

#include <cstdint>

/// -1, 0 or 1 as `receiver` comes before, equals or comes after `argument`; reversed when not ascending.
/// Texts compare as the user's language orders them. The null marker comes before all else; a record equals
/// itself only. Values that do not compare answer -1.
int _abCompare(
    const platform::Value& receiver, const platform::Value& argument, bool ascending, std::uint32_t options);

/// Whether the text contains the other, in a range of the same length: the empty text is in every text. What
/// is no text contains, begins and ends with nothing.
bool _abCompareContainsSubString(
    const platform::Value& receiver, const platform::Value& argument, std::uint32_t options);
/// No text begins or ends with the empty text.
bool _abComparePrefixMatch(
    const platform::Value& receiver, const platform::Value& argument, std::uint32_t options);
bool _abCompareSuffixMatch(
    const platform::Value& receiver, const platform::Value& argument, std::uint32_t options);
