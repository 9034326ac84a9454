// How two texts compare: options for equality and search, and the order of the user's language.
#pragma once

#include "platform/text/Utf.h"
#include "platform/value/Export.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Bits of a comparison or search, combined with |.
enum CompareOptions : std::uint32_t {
    kCompareExactly = 0,
    kCompareCaseInsensitive = 1,
    kCompareBackwards = 4,
    kCompareAnchored = 8,
    kCompareLocalized = 32,
    kCompareNumeric = 64,
    kCompareDiacriticInsensitive = 128,
};

/// The order of two texts.
///
/// Without kCompareLocalized it is the order of code points after the folds that the options ask for
/// (Fold.h), which is SQLite's order of the same folds. With it, the order of the user's locale; an
/// insensitive comparison then ignores the difference in case or marks as that language sees it.
/// kCompareNumeric orders runs of digits by their amount. Search-only bits mean nothing here.
std::weak_ordering compare(std::string_view a, std::string_view b, std::uint32_t options = kCompareExactly);

/// Where `needle` stands in `haystack`, or absent. An empty needle is nowhere.
///
/// It is there exactly when the folded haystack contains the folded needle; the range covers whole
/// characters of the haystack, with the marks that belong to them when diacritics do not count.
/// kCompareAnchored asks for it at the start only; kCompareBackwards takes the last place, and both together
/// the end. Locale and numeric bits mean nothing here.
std::optional<TextRange> rangeOf(
    std::string_view needle, std::string_view haystack, std::uint32_t options = kCompareExactly);

/// `rangeOf` without the range.
bool contains(std::string_view haystack, std::string_view needle, std::uint32_t options = kCompareExactly);

/// Bytes whose order (memcmp, SQLite's order of blobs) is that of `compare` with kCompareLocalized. They
/// may be stored only beside `collationVersion`.
PLATFORM_EXPORT std::string collationKey(std::string_view text);

/// Names what `collationKey` depends on: locale, ICU version and version of the locale's rules. Keys of
/// different versions must not be compared.
std::string collationVersion();

} // namespace platform
