// The little of Unicode that the property-list codec needs: between UTF-8 and UTF-16. Everybody else uses the
// text room, which stands above this one.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform::propertylist {

/// Takes the first character off `text`; none when the text is empty or does not start with well-formed UTF-8
/// (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF). A failure leaves `text` unchanged.
std::optional<char32_t> takeCharacter(std::string_view& text);

/// Whether all of `text` is well-formed UTF-8.
bool isUTF8(std::string_view text);

bool isASCII(std::string_view text);

/// Adds one character, which must be no surrogate, as UTF-8.
void appendUTF8(std::string& text, char32_t character);

/// Well-formed UTF-8 as big-endian UTF-16.
std::string bigEndianUTF16FromUTF8(std::string_view text);

/// Big-endian UTF-16 of even length as UTF-8; half a surrogate pair becomes U+FFFD.
std::string UTF8FromBigEndianUTF16(std::string_view bytes);

} // namespace platform::propertylist
