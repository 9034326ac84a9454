// How the bytes of a value become canonical text: quoted-printable, base64 and escapes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vcard::prepare {

/// What ";" means in a value.
enum class Shape : std::uint8_t {
    /// One text: a ";" in it is text and gets its escape.
    onePart,
    /// Several, separated by ";".
    fields,
    /// The rest of the line as it is, such as a URL: neither ";" nor "," needs an escape.
    wholeLine
};

/// What a backslash and a "," mean where the value comes from.
enum class Escapes : std::uint8_t {
    /// RFC 2426 and RFC 6350: "\\", "\n", "\,", "\;"; a bare "," separates and stays bare.
    rfc,
    /// vCard 2.1: a "," is text. Its "\n" is read as a line break all the same, since that is what those
    /// mean who write it.
    old,
    /// vCard 2.1 behind quoted-printable or base64, which have a line break of their own: "\n" is two
    /// characters.
    oldEncoded,
    /// Plain text: a backslash is one.
    none
};

/// Appends a value in canonical escapes: `\\ \n \, \;` and no other, no line ends, no NUL. "\:" loses its
/// backslash; a backslash in front of anything else is text. A text that is canonical stays as it is.
/// `value` is UTF-8.
void appendValue(std::string& out, std::string_view value, Shape shape, Escapes escapes);

/// The text that a canonical value of one part stands for.
std::string plainText(std::string_view canonical);

/// The first fields of a canonical value.
struct FirstFields {
    /// How many there are, at least 1.
    std::size_t count = 1;
    /// Where the last one of them begins.
    std::size_t last = 0;
    /// Where it ends, at the ";" behind it or at the value's end.
    std::size_t end = 0;
};
FirstFields firstFields(std::string_view canonical, std::size_t most);

/// True when there is nothing but blanks and, in fields, separators.
bool isEmptyValue(std::string_view canonical, Shape shape);

/// The bytes that quoted-printable text stands for (RFC 2045 §6.7). An encoded ";" is text and gets an
/// escape, unless an escape already stands in front of it. An "=" at the very end is dropped; one
/// without two digits behind it is text.
std::string decodedQuotedPrintable(std::string_view text);

/// Only the digits, with their padding: a form that every decoder reads as one line. `sound` is set to
/// false when anything but line folding had to go.
void appendBase64(std::string& out, std::string_view text, bool& sound);

/// The bytes; whatever is no digit is passed over.
std::string decodedBase64(std::string_view text);

/// The values of the digits of base64 (RFC 2045 §6.8) by byte; -1 for any other, the padding too.
inline constexpr auto kBase64Values = [] {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::int8_t, 256> values;
    values.fill(-1);
    for (std::size_t i = 0; i < digits.size(); ++i)
        values[static_cast<unsigned char>(digits[i])] = static_cast<std::int8_t>(i);
    return values;
}();

constexpr bool isBase64Digit(char c) { return kBase64Values[static_cast<unsigned char>(c)] >= 0; }

} // namespace vcard::prepare
