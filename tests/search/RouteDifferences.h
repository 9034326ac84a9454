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

/// Their names, as docs/search.md has them.
inline constexpr std::array<std::string_view, 23> kDifferences{"Ends of an interval", "Noon of a day",
    "Dates without their year", "Whole cards", "Cards without a text", "Whole cards of another class",
    "A card without a note", "Empty search text", "No search value", "Labels", "Parts missing in an address",
    "Whole addresses", "E-mail equality", "Localised comparison", "Values of another kind", "Data",
    "Declared properties of one value", "The mark of the last import", "Any group", "Not in a smart group",
    "Membership without its property", "Texts of marks alone", "Parts of another length"};

/// Why the store cannot be asked at all, so that a search goes through the records in memory.
enum class Unasked { bits, dictionaryKey, packedValue, noInterval, unknownProperty, notText, smartGroup };
inline constexpr std::array<std::string_view, 7> kUnasked{"Bits", "Keys of dictionaries",
    "Declared arrays and dictionaries", "Intervals of what is no date", "Unknown properties",
    "Whole cards without a text", "Smart groups of these"};

} // namespace test
