// How digits are printed for the sorting machines of a post office (POSTNET).
#pragma once

#include "core/ZRExport.h"

#include <optional>
#include <string_view>

/// The five bars of a digit, 1 for a long one and 0 for a short one; absent for any other character.
ZR_EXPORT std::optional<std::string_view> BitsForDigit(char digit);
