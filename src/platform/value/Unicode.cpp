// Between UTF-8 and UTF-16, character by character.
#include "platform/value/Unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace platform::propertylist {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// How many bytes a character takes by its first byte; 0 for a byte that starts none.
std::size_t lengthByLead(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

char32_t unitAt(std::string_view bytes, std::size_t at)
{
    return static_cast<char32_t>(
        static_cast<unsigned char>(bytes[at]) << 8 | static_cast<unsigned char>(bytes[at + 1]));
}

void appendUnit(std::string& bytes, char32_t unit)
{
    bytes += static_cast<char>(unit >> 8);
    bytes += static_cast<char>(unit & 0xFF);
}

} // namespace

std::optional<char32_t> takeCharacter(std::string_view& text)
{
    if (text.empty())
        return std::nullopt;
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthByLead(lead);
    if (length == 0 || length > text.size())
        return std::nullopt;
    char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t at = 1; at < length; ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if ((byte & 0xC0) != 0x80)
            return std::nullopt;
        character = character << 6 | (byte & 0x3Fu);
    }
    const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    if (overlong || character > 0x10FFFF || isHighSurrogate(character) || isLowSurrogate(character))
        return std::nullopt;
    text.remove_prefix(length);
    return character;
}

bool isASCII(std::string_view text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    while (text.size() >= sizeof highBits) {
        std::uint64_t eight;
        std::memcpy(&eight, text.data(), sizeof eight);
        if (eight & highBits)
            return false;
        text.remove_prefix(sizeof eight);
    }
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isUTF8(std::string_view text)
{
    if (isASCII(text))
        return true;
    while (takeCharacter(text))
        ;
    return text.empty();
}

void appendUTF8(std::string& text, char32_t character)
{
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | character >> 12);
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0 | character >> 18);
        tail(12), tail(6), tail(0);
    }
}

std::string bigEndianUTF16FromUTF8(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() * 2);
    while (const auto character = takeCharacter(text)) {
        if (*character < 0x10000) {
            appendUnit(bytes, *character);
        } else {
            appendUnit(bytes, 0xD800 + ((*character - 0x10000) >> 10));
            appendUnit(bytes, 0xDC00 + ((*character - 0x10000) & 0x3FF));
        }
    }
    return bytes;
}

std::string UTF8FromBigEndianUTF16(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        char32_t character = unitAt(bytes, at);
        const bool paired =
            isHighSurrogate(character) && at + 3 < bytes.size() && isLowSurrogate(unitAt(bytes, at + 2));
        if (paired) {
            character = 0x10000 + ((character - 0xD800) << 10) + (unitAt(bytes, at + 2) - 0xDC00);
            at += 2;
        } else if (isHighSurrogate(character) || isLowSurrogate(character)) {
            character = kReplacement;
        }
        appendUTF8(text, character);
    }
    return text;
}

} // namespace platform::propertylist
