// How text that somebody typed to find a person is cut into terms.
#pragma once

#include "core/ZRExport.h"

#include <string>
#include <string_view>
#include <vector>

/// The words of the text, each with the characters "-", "@", "." and "_" around it, which join words that
/// they stand between: an e-mail address is one term, a first and a last name are two. None for text without
/// words.
ZR_EXPORT std::vector<std::string> zrTokens(std::string_view text);
