// What makes two spellings the same for search: folds of case and of diacritics.
#pragma once

#include "platform/value/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Bits that say what a fold makes equal.
enum FoldOptions : std::uint32_t {
    kFoldNothing = 0,
    kFoldCase = 1,
    kFoldDiacritics = 2,
    kFoldCaseAndDiacritics = 3,
};

/// The text folded by the bits of FoldOptions; other bits mean nothing.
///
/// Case is Unicode full case folding ("STRASSE", "straße" and "STRAẞE" are one), the same in every language.
/// Diacritics are the nonspacing marks of the compatibility decomposition; they fall away, save for the kana
/// voicing marks U+3099 and U+309A, which tell names apart. Letters with a stroke (ł, ø, đ) have no
/// decomposition and stay. The result is decomposed (a Hangul syllable becomes its letters), so that it is
/// compared only with other folds.
///
/// Every fold works character by character: the fold of a prefix is a prefix of the fold. Folding twice
/// gives the same as folding once. An ill-formed sequence becomes U+FFFD.
std::string transformed(std::string_view text, std::uint32_t foldOptions);

/// `transformed` with case alone: what sort columns and case-insensitive tests compare.
PLATFORM_EXPORT std::string foldCase(std::string_view text);

/// `transformed` with case and diacritics: what search columns and the index string hold.
PLATFORM_EXPORT std::string foldCaseAndDiacritics(std::string_view text);

/// An upper bound for a range over prefixes: every text that starts with `text` lies in [text, incremented).
///
/// The last UTF-16 unit goes up by one. Where that would not be text any more the next higher character is
/// taken: U+E000 after U+D7FF, and the next code point after one of two units. U+FFFF cannot go up: then it
/// stands sixteen times behind the rest, and so does U+10FFFF. Empty text gives itself.
std::string incremented(std::string_view text);

} // namespace platform
