// What the words of a text are.
#pragma once

#include "platform/text/Utf.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The words of a text in order (Unicode TR 29, by the user's locale), without blanks and punctuation.
/// Numbers are words; "O'Brien" is one, "Smith-Jones" and "ana@example.org" are two; Japanese, Chinese, Thai
/// and the like are cut by dictionary.
std::vector<TextRange> wordRanges(std::string_view text);

/// `wordRanges` as texts of their own.
std::vector<std::string> words(std::string_view text);

} // namespace platform
