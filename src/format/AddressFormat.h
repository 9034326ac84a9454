// Which country's way of writing an address takes, and what its template says.
#pragma once

#include "platform/value/Value.h"

#include <string>
#include <string_view>
#include <vector>

class ZRRoster;

/// The keys of one line of an address.
using AddressLine = std::vector<std::string_view>;

/// The country of `address` in lower case; the user's own where it names none, or one that is not known.
std::string countryOfAddress(ZRRoster& roster, const platform::Value& address);

/// The entry of that country in the table of formats; absent where the table is missing.
const platform::Value& addressFormatOfCountry(std::string_view code);

/// The lines of a template without the empty ones. They borrow its text.
std::vector<AddressLine> addressLinesOfTemplate(std::string_view text);
