// The few comparisons of vCard's own words: names, marks and types are ASCII in any case.
#pragma once

#include <cstddef>
#include <string_view>

namespace vcard::prepare {

constexpr char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }

/// Letters, digits, "-" and "_": what a name or group is made of, with the underscore that some writers use.
constexpr bool isNameCharacter(char c)
{
    return (upper(c) >= 'A' && upper(c) <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

constexpr bool isName(std::string_view text)
{
    for (const char c : text)
        if (!isNameCharacter(c))
            return false;
    return !text.empty();
}

constexpr bool equalInAnyCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i]))
            return false;
    return true;
}

constexpr bool startsInAnyCase(std::string_view text, std::string_view start)
{
    return text.size() >= start.size() && equalInAnyCase(text.substr(0, start.size()), start);
}

/// The part of a line in front of its parameters and its value.
constexpr std::string_view nameOf(std::string_view line)
{
    std::size_t end = 0;
    while (end < line.size() && line[end] != ';' && line[end] != ':')
        ++end;
    return line.substr(0, end);
}

/// Without the blanks and tabs at both ends.
constexpr std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Nothing but blanks and tabs.
constexpr bool isBlank(std::string_view text)
{
    return (text.empty() || isBlank(text.front())) && trimmed(text).empty();
}

} // namespace vcard::prepare
