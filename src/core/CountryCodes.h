// What people write for a country's two letters (ISO 3166-1 alpha-2, in lower case as addresses hold them).
#pragma once

#include "core/ZRExport.h"

#include <string_view>

/// The code to store for `code`: "cz" for "cs", "jp" for "ja" and "gb" for "uk", which people write for the
/// language or the kingdom; any other code is handed back. Which codes are known is
/// `ZRRoster::isKnownCountry`.
ZR_EXPORT std::string_view correctedCountryCode(std::string_view code);
