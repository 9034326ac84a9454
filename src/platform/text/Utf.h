// How text is held: UTF-8 inside, UTF-16 at some borders, and lengths counted in UTF-16 units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A part of a text, in bytes of its UTF-8, always on character borders.
struct TextRange {
    std::size_t start = 0;
    std::size_t length = 0;

    std::size_t end() const { return start + length; }
    std::string_view of(std::string_view text) const { return text.substr(start, length); }
    friend bool operator==(const TextRange&, const TextRange&) = default;
};

enum class ByteOrder : std::uint8_t { little, big };

/// True when every byte is below 0x80. Such text is its own UTF-8, Latin 1 and so on.
bool isASCII(std::string_view bytes);

/// True for well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF (RFC 3629).
bool isValidUTF8(std::string_view bytes);

/// The text with each ill-formed sequence replaced by one U+FFFD; well-formed text comes back unchanged.
std::string repairedUTF8(std::string_view bytes);

/// The number of UTF-16 units. An ill-formed sequence counts as one.
std::size_t utf16Length(std::string_view text);

/// The byte at which the UTF-16 unit of `index` begins; the text's size when it is past the end. An index
/// between the two units of a pair gives the start of that character.
std::size_t byteOffsetOfUTF16Index(std::string_view text, std::size_t index);

/// The part from unit `start` on with `length` units, cut at the end of the text. A border that falls into
/// a pair moves to the pair's start. Borrows from `text`.
std::string_view substringUTF16(std::string_view text, std::size_t start, std::size_t length = SIZE_MAX);

/// UTF-8 to UTF-16. An ill-formed sequence becomes U+FFFD.
std::u16string toUTF16(std::string_view text);

/// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
std::string fromUTF16(std::u16string_view units);

/// UTF-16 to UTF-8, or absent when there is a lone surrogate.
std::optional<std::string> fromUTF16Strictly(std::u16string_view units);

/// The text as UTF-16 bytes of one order, without a byte order mark.
std::string toUTF16Bytes(std::string_view text, ByteOrder order);

/// UTF-16 bytes of one order as UTF-8; a mark in front stays as U+FEFF. Absent for an odd number of bytes
/// or a lone surrogate.
std::optional<std::string> fromUTF16Bytes(std::string_view bytes, ByteOrder order);

/// Stands for an ill-formed sequence.
inline constexpr char32_t kIllFormed = 0xFFFFFFFF;

/// The character that begins at byte `at`, which moves behind it; `kIllFormed` for a sequence that is none,
/// of which `at` passes the bytes that one U+FFFD stands for. `at` must lie before the end.
char32_t nextCharacter(std::string_view text, std::size_t& at);

/// The byte at which the last character of a text that is not empty begins.
std::size_t startOfLastCharacter(std::string_view text);

/// Appends one code point as UTF-8; what is no Unicode scalar value becomes U+FFFD.
void appendUTF8(std::string& text, char32_t codePoint);

} // namespace platform
