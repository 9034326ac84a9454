// How the bytes of a value become canonical text: quoted-printable, base64 and escapes.
#pragma once

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

/// Where the first `count` fields of a canonical value end, at the ";" behind them or at the value's end.
std::size_t endOfFields(std::string_view canonical, std::size_t count);

/// The number of fields, at least 1.
std::size_t countFields(std::string_view canonical);

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

/// A digit of base64 (RFC 2045 §6.8), without the padding.
bool isBase64Digit(char c);

} // namespace vcard::prepare
