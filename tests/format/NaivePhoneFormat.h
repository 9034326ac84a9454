// The twin of the compiled templates: the same answers by walking each template character by character.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Whether the character of a template stands for one of the number; "#" for any.
inline bool isPosition(char character)
{
    return std::string_view("+0123456789#").find(character) != std::string_view::npos;
}

inline std::string positionsOf(std::string positions)
{
    std::erase_if(positions, [](char character) { return !isPosition(character); });
    return positions;
}

inline std::optional<std::string> filled(std::string format, std::string_view digits)
{
    std::size_t used = 0;
    for (char& character : format) {
        if (!isPosition(character))
            continue;
        if (character == '#')
            character = digits[used];
        else if (character != digits[used])
            return {};
        ++used;
    }
    return format;
}

inline std::string trimmed(std::string text)
{
    text.erase(0, std::min(text.find_first_not_of(" \t\n"), text.size()));
    text.erase(text.find_last_not_of(" \t\n") + 1);
    return text;
}

/// What becomes of an ASCII text by the first template that fits.
inline std::string naivelyFormatted(const std::string& text, const std::vector<std::string>& formats)
{
    std::size_t split = text.find_first_not_of(" .\"'/-,[]<>()+0123456789");
    if (split == 0 || split == std::string::npos)
        split = text.size();
    else if (text[split] != '#' && split != 1)
        --split;
    std::string digits = positionsOf(text.substr(0, split));
    std::erase(digits, '#');
    if (digits.empty())
        return text;
    for (const auto& format : formats) {
        const auto result =
            positionsOf(format).size() == digits.size() ? filled(format, digits) : std::nullopt;
        if (result)
            return split < text.size() ? *result + " " + trimmed(text.substr(split)) : *result;
    }
    return text;
}

} // namespace test
