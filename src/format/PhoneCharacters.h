// Which characters belong to telephone numbers and their templates.
#pragma once

#include <array>
#include <string_view>

/// What a number may hold in front of its extension.
inline constexpr std::string_view kAllowedInPhoneNumbers = " .\"'/-,[]<>()+0123456789";

/// Of a number: "+" counts as a digit.
constexpr bool isPhoneDigit(char character)
{
    return character == '+' || (character >= '0' && character <= '9');
}

/// Of a template: a character that takes one of the number.
constexpr bool isPhonePosition(char character) { return isPhoneDigit(character) || character == '#'; }

/// `kAllowedInPhoneNumbers` as a table, since each character of each number asks.
inline constexpr auto kIsAllowedInPhoneNumbers = [] {
    std::array<bool, 256> allowed{};
    for (const char one : kAllowedInPhoneNumbers)
        allowed[static_cast<unsigned char>(one)] = true;
    return allowed;
}();

constexpr bool isAllowedInPhoneNumber(char character)
{
    return kIsAllowedInPhoneNumbers[static_cast<unsigned char>(character)];
}
