// The twin of the compiled templates: the same answers by walking each template character by character.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace test {

/// How many characters of a number a template takes.
std::size_t countParts(std::string_view format);

/// What becomes of an ASCII text by the first template that fits.
std::string naivelyFormatted(const std::string& text, const std::vector<std::string>& formats);

} // namespace test
