// Which character sets there are, by name and by number, and conversion between them and UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// A number that names a character encoding. 0 means "not known yet".
using TextEncoding = std::uint32_t;

namespace platform {

inline constexpr TextEncoding kASCIIEncoding = 1;
inline constexpr TextEncoding kUTF8Encoding = 4;
inline constexpr TextEncoding kLatin1Encoding = 5;
/// UTF-16 of either byte order.
inline constexpr TextEncoding kUTF16Encoding = 10;
inline constexpr TextEncoding kQuillonRomanEncoding = 30;
inline constexpr TextEncoding kUTF7Encoding = 4000100;
/// Sets without an older number have this base plus their code page number.
inline constexpr TextEncoding kCodePageEncodings = 4000000;
inline constexpr TextEncoding kUTF16LittleEndianEncoding = kCodePageEncodings + 1200;
inline constexpr TextEncoding kUTF16BigEndianEncoding = kCodePageEncodings + 1201;
inline constexpr TextEncoding kWindows1252Encoding = kCodePageEncodings + 1252;
/// The answer for an unknown name. Every conversion with it fails.
inline constexpr TextEncoding invalidTextEncoding = 0xFFFFFFFF;

/// The second, wider numbering that files of settings and the text importer use.
using WiderEncoding = std::uint32_t;
inline constexpr WiderEncoding kWiderUTF8 = 0x8000100;
inline constexpr WiderEncoding kWiderUTF16 = 256;
inline constexpr WiderEncoding kWiderUTF16BigEndian = 268435712;
inline constexpr WiderEncoding kWiderUTF16LittleEndian = 335544576;

/// What is known of one character encoding.
struct EncodingInfo {
    /// The name in the IANA registry; for the platform's Roman set its name here.
    std::string_view name;
    /// Further names, separated by blanks.
    std::string_view aliases;
    TextEncoding encoding;
    WiderEncoding wider;
    /// The name of ICU's converter.
    const char* converter;
    enum class Kind : std::uint8_t { ascii, latin1, utf8, utf16, singleByte, multiByte } kind;
    /// Text of ASCII characters has the same bytes in this encoding, and such bytes are that text.
    bool asciiCompatible;
};

/// Every encoding there is, in the order of the numbers' age.
std::span<const EncodingInfo> allEncodings();

/// What is known of an encoding, or null for a number that is none.
const EncodingInfo* encodingInfo(TextEncoding encoding);

/// The encoding of an IANA name or alias in any case, or `invalidTextEncoding`.
TextEncoding encodingForName(std::string_view name);

/// The name of an encoding, empty for a number that is none.
std::string_view nameOfEncoding(TextEncoding encoding);

/// From the wider numbering, or `invalidTextEncoding`.
TextEncoding encodingFromWider(WiderEncoding wider);

/// To the wider numbering, or `invalidTextEncoding`.
WiderEncoding widerFromEncoding(TextEncoding encoding);

/// The bytes as UTF-8, or absent when any of them is malformed or has no meaning in the encoding: nothing
/// is ever replaced. UTF-16 obeys and drops a byte order mark, and is big-endian without one (RFC 2781); in
/// all other encodings a mark stays in the text.
std::optional<std::string> decode(std::string_view bytes, TextEncoding encoding);

/// The text in the encoding, or absent when any character does not exist there or the text is no UTF-8.
/// UTF-16 begins with a byte order mark and is big-endian; the forms with a named order have no mark.
std::optional<std::string> encode(std::string_view text, TextEncoding encoding);

} // namespace platform
