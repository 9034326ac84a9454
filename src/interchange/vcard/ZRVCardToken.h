// What stands between the pieces of a vCard: the tokens, their codes and the classes that masks test.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vcard {

/// Names one token: a class bit, and low bits that only keep codes apart.
using TokenCode = std::uint32_t;
/// Class bits, combined with |.
using TokenMask = std::uint32_t;

inline constexpr TokenMask kListSeparator = 0x0080;
inline constexpr TokenMask kGroupSeparator = 0x0100;
inline constexpr TokenMask kEscape = 0x0200;
inline constexpr TokenMask kEquals = 0x0400;
inline constexpr TokenMask kVersionWord = 0x0800;
inline constexpr TokenMask kSemicolon = 0x1000;
inline constexpr TokenMask kColon = 0x2000;
inline constexpr TokenMask kSpace = 0x4000;
inline constexpr TokenMask kEndOfLine = 0x8000;

/// What ends a name, a parameter's name and a parameter's value.
inline constexpr TokenMask kHeaderStops = kEndOfLine | kColon | kSemicolon | kEquals;
/// What ends one field of a value.
inline constexpr TokenMask kFieldStops = kEndOfLine | kSemicolon;

/// Stands between the lines of decoded text and data.
inline constexpr char kReturnDelimiter = '\n';

inline constexpr TokenCode kNoToken = 0;
inline constexpr TokenCode kEndOfData = 0x10001;
inline constexpr TokenCode kSyntaxError = 0x10002;
inline constexpr TokenCode kSemicolonToken = kSemicolon | 1;
inline constexpr TokenCode kColonToken = kColon | 1;
inline constexpr TokenCode kEqualsToken = kEquals | 1;
inline constexpr TokenCode kLineFeedToken = kEndOfLine | 1;
inline constexpr TokenCode kCarriageReturnToken = kEndOfLine | 2;
inline constexpr TokenCode kBeginToken = 5;
inline constexpr TokenCode kVCardToken = 6;
inline constexpr TokenCode kEndToken = 7;

/// One token: its text in upper case, and its code.
///
/// Ownership: the text is a literal.
/// Threads:   constant.
/// Errors:    none.
struct ZRVCardToken {
    std::string_view text;
    TokenCode code;

    static constexpr std::string_view description() { return "token"; }
    friend constexpr bool operator==(const ZRVCardToken& a, const ZRVCardToken& b)
    {
        return a.code == b.code;
    }
};

/// In lookup order: the first match counts.
inline constexpr ZRVCardToken kTokensOfOne[] = {{";", kSemicolonToken}, {":", kColonToken}, {" ", kSpace | 1},
    {"=", kEqualsToken}, {"\r", kCarriageReturnToken}, {"\n", kLineFeedToken}, {"\\", kEscape | 1},
    {".", kGroupSeparator | 1}, {",", kListSeparator | 1}};
inline constexpr ZRVCardToken kTokensOfThree[] = {{"END", kEndToken}};
inline constexpr ZRVCardToken kTokensOfFive[] = {{"BEGIN", kBeginToken}, {"VCARD", kVCardToken}};
inline constexpr ZRVCardToken kTokensOfSeven[] = {{"VERSION", kVersionWord | 1}};
inline constexpr std::size_t kLongestToken = 7;

/// The tokens of a length of 1, 3, 5 or 7 characters; none of any other.
constexpr std::span<const ZRVCardToken> tokenSetForLength(std::size_t length)
{
    switch (length) {
    case 1:
        return kTokensOfOne;
    case 3:
        return kTokensOfThree;
    case 5:
        return kTokensOfFive;
    case 7:
        return kTokensOfSeven;
    default:
        return {};
    }
}

/// Whether the characters are the token's text, in any case. A NUL ends the input and so matches whatever
/// stands in the token from there on.
template <class Unit>
constexpr bool matches(std::span<const Unit> input, const ZRVCardToken& token)
{
    for (std::size_t at = 0; at < input.size() && input[at] != 0; ++at) {
        const auto expected = static_cast<unsigned char>(token.text[at]);
        const bool lower = input[at] >= 'a' && input[at] <= 'z';
        if (input[at] != expected && !(lower && input[at] - 0x20 == expected))
            return false;
    }
    return true;
}

/// The code of the first token of this length that the characters match, or 0.
template <class Unit>
constexpr TokenCode tokenFor(std::span<const Unit> input)
{
    for (const auto& token : tokenSetForLength(input.size()))
        if (matches(input, token))
            return token.code;
    return kNoToken;
}

/// The lookup of one character, done beforehand for all that can match.
inline constexpr auto kTokenOfUnit = [] {
    std::array<std::uint16_t, 256> codes{};
    for (std::size_t unit = 0; unit < codes.size(); ++unit) {
        const char16_t input[] = {static_cast<char16_t>(unit)};
        codes[unit] = static_cast<std::uint16_t>(tokenFor(std::span<const char16_t>(input)));
    }
    return codes;
}();

constexpr TokenCode tokenOfUnit(char16_t unit) { return unit < kTokenOfUnit.size() ? kTokenOfUnit[unit] : 0; }

static_assert(tokenOfUnit(0) == kSemicolonToken, "a NUL reads as the first token");
static_assert(tokenOfUnit('\t') == kNoToken, "a tab is no token");

/// The name of a code for people who debug: the token's own text, "ZREOF" and the like, else "????".
constexpr std::string_view tokenName(TokenCode code)
{
    switch (code) {
    case kNoToken:
        return "ZRNoToken";
    case kEndOfData:
        return "ZREOF";
    case kLineFeedToken:
        return "ZRLF";
    case kCarriageReturnToken:
        return "ZRCR";
    case kSyntaxError:
        return "ZRERROR";
    default:
        break;
    }
    for (std::size_t length = 1; length <= kLongestToken; length += 2)
        for (const auto& token : tokenSetForLength(length))
            if (token.code == code)
                return token.text;
    return "????";
}

} // namespace vcard
