// Which spellings of a date are a calendar day that the reader understands.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vcard::prepare {

/// Appends a day of either spelling as `YYYY-MM-DD`: the reader takes that for noon here, and the other one
/// for noon in Greenwich, which is tomorrow in the far east.
void appendDay(std::string& to, std::string_view day);

/// A calendar day at the start of a value, as the reader understands it: `YYYY-MM-DD` or `YYYYMMDD` of an
/// existing day, alone or in front of a time of day. Answers how many characters it has; absent for any
/// other spelling.
std::optional<std::size_t> lengthOfDay(std::string_view value);

/// A part of a date, as RFC 6350 §4.3.1 writes it: a year, a month, a month and a day without a year.
bool isPartOfDate(std::string_view value);

} // namespace vcard::prepare
