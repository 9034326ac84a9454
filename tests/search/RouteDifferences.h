// Where do the store and memory find different records, and when is the store not asked?
#pragma once

#include <array>
#include <string_view>

namespace test {

/// Where the store answers otherwise than memory does.
enum class Difference {
    intervalEnds,
    daysAtNoonGMT,
    yearCompanion,
    wholeCardText,
    cardWithoutText,
    wholeCardOfOthers,
    absentNote,
    emptyText,
    noValue,
    labels,
    missingAddressParts,
    wholeAddress,
    emailEquality,
    localizedComparison,
    otherKinds,
    data,
    customRows,
    importMark,
    anyGroup,
    notInSmartGroup,
    membershipOfOthers,
    foldedToNothing,
    foundLength
};

struct DifferenceLine {
    Difference difference;
    std::string_view name;
    std::string_view cause;
};
/// All of them, as docs/search.md tells them.
extern const std::array<DifferenceLine, 23> kDifferences;

/// Why the store cannot be asked at all, so that a search goes through the records in memory.
enum class Unasked { bits, dictionaryKey, packedValue, noInterval, unknownProperty, notText, smartGroup };

struct UnaskedLine {
    Unasked reason;
    std::string_view name;
    std::string_view cause;
};
extern const std::array<UnaskedLine, 7> kUnasked;

} // namespace test
