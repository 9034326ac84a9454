// What one character becomes under a fold.
#pragma once

#include "platform/text/Fold.h"

#include <array>
#include <string_view>

namespace platform {

/// The fold of one character as UTF-8, from a table that is filled page by page as characters turn up. The
/// text lives as long as the process. What is no Unicode scalar value counts as U+FFFD.
std::string_view foldOfCharacter(char32_t character, std::uint32_t foldOptions);

/// The small letter of an ASCII capital; every other byte is itself.
inline constexpr auto kSmallLetters = [] {
    std::array<char, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte)
        table[byte] = static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
    return table;
}();

inline char smallLetter(char byte) { return kSmallLetters[static_cast<unsigned char>(byte)]; }

} // namespace platform
