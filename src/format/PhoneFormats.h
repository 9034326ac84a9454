// The templates of each country that come with the library.
#pragma once

#include "platform/value/Value.h"

#include <string>
#include <string_view>
#include <vector>

/// The resource "ZRPhoneFormats.plist", read once: country codes in lower case, to lists of templates. Empty
/// when there is no such resource.
const platform::Value& phoneFormats();

/// The lists of a country; none when nothing is known of it.
std::vector<std::vector<std::string>> phoneFormatsOfCountry(std::string_view countryCode);

/// The strings of an array, without whatever else it holds.
std::vector<std::string> stringsOf(const platform::Value& array);
