// The countries of the world by their two letters (ISO 3166-1 alpha-2), in lower case as addresses hold them.
#pragma once

#include "core/ZRExport.h"

#include <span>
#include <string_view>

/// All codes, in ascending order.
ZR_EXPORT std::span<const std::string_view> knownCountryCodes();

/// Whether `code` is one of them; upper case is unknown.
ZR_EXPORT bool isKnownCountry(std::string_view code);

/// The code to store for `code`: "cz" for "cs", "jp" for "ja" and "gb" for "uk", which people write for the
/// language or the kingdom; any other code is handed back.
ZR_EXPORT std::string_view correctedCountryCode(std::string_view code);
