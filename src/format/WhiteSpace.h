// What a text is without the white space around it.
#pragma once

#include <string_view>

/// The part of `text` between its white space, in the sense of Unicode, at both ends. Borrows from `text`.
std::string_view trimmedWhiteSpace(std::string_view text);
