// In which character set a value of a vCard 2.1 is written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Writes the value of a line behind its name and parameters, with its line end. What is not ASCII gets a
/// CHARSET: the first that can hold it of `preferred`, an IANA name or empty, under that very name; then
/// LATIN1, QUILLONROMAN, UTF-8.
///
/// A set that can hold a text, but in bytes that a reader would take for line ends, separators or escapes,
/// is passed over: so for some characters of Shift_JIS and Big5.
void encodedLineForValue(std::string& to, std::string_view value, std::string_view preferred);

/// The value in the first set that can hold it of ASCII, LATIN1, `preferred`, QUILLONROMAN, UTF-8, and the
/// name of that set; absent for ASCII. Another order than that of `encodedLineForValue`, and as fixed.
std::string encodedDataForValue(
    std::string_view value, std::optional<std::string>& charsetName, std::string_view preferred);

/// The preferred set of the user: "ZR21vCardEncoding"; empty for none.
std::string zrPreferred21Charset();
