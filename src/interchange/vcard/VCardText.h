// How texts, days and pictures are written into a vCard.
#pragma once

#include "platform/value/Value.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The text with ";", "," and ":" behind a backslash, and line ends as "\n": a CR with its LF as two of them.
/// A backslash stays as it is.
std::string zrVCardKoshify(std::string_view text);

/// The same behind what `to` holds.
void zrAppendKoshified(std::string& to, std::string_view text);

/// What stands for `character` in a vCard, or absent where it stands for itself. `advance` becomes the number
/// of characters that are used: 2 for a CR whose `next` is an LF.
std::optional<std::string_view> zrEscapeStringForUnichar(char character, char next, std::size_t& advance);

/// Appends text that is ASCII, and nothing of one that is not.
void zrAppendString(std::string& to, std::string_view text);

/// The text as UTF-8 data; absent when it is none.
std::optional<std::string> zrVCardDataRepresenation(std::string_view text);

/// Base64 (RFC 2045 §6.8). With line breaks it begins with two blanks, and behind each 76 characters stand an
/// LF and two blanks, which is how a reader knows that it goes on. Without slashes "," stands for "/".
std::string zrEncodeBase64Data(std::string_view bytes, bool breakLines, bool allowSlash, char padChar);

/// The day of a moment in the local zone, as "1998-03-04". The sign of a year before the first is left out;
/// empty for a moment that no calendar reaches.
std::string ISO8061StringFromDate(platform::Date date);

/// The same of a day that is stored as its noon in GMT.
std::string zrISO8061StringFromStoredDay(double seconds);
