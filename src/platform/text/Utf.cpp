// How UTF-8 and UTF-16 are checked and converted.
#include "platform/text/Utf.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>

namespace platform {

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080;

std::uint64_t eightBytesAt(const char* bytes)
{
    std::uint64_t eight;
    std::memcpy(&eight, bytes, sizeof eight);
    return eight;
}

// The length of the ASCII run that begins at `at`.
std::size_t asciiRun(std::string_view bytes, std::size_t at)
{
    const std::size_t start = at;
    const auto eight = [&](std::size_t place) { return eightBytesAt(bytes.data() + place); };
    while (at + 32 <= bytes.size()
        && !((eight(at) | eight(at + 8) | eight(at + 16) | eight(at + 24)) & kHighBits))
        at += 32;
    while (at + 8 <= bytes.size() && !(eight(at) & kHighBits))
        at += 8;
    while (at < bytes.size() && !(bytes[at] & 0x80))
        ++at;
    return at - start;
}

std::size_t unitsOf(char32_t character) { return character > 0xFFFF && character != kIllFormed ? 2 : 1; }

bool isPairUnit(std::u16string_view units, std::size_t at)
{
    return U16_IS_LEAD(units[at]) && at + 1 < units.size() && U16_IS_TRAIL(units[at + 1]);
}

// Appends the UTF-8 of `units`; answers whether no surrogate stood alone.
bool appendUnits(std::string& text, std::u16string_view units)
{
    bool wellFormed = true;
    for (std::size_t at = 0; at < units.size(); ++at) {
        const char16_t unit = units[at];
        if (unit < 0x80) {
            text.push_back(static_cast<char>(unit));
        } else if (!U16_IS_SURROGATE(unit)) {
            appendUTF8(text, unit);
        } else if (isPairUnit(units, at)) {
            appendUTF8(text, static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, units[at + 1])));
            ++at;
        } else {
            appendUTF8(text, 0xFFFD);
            wellFormed = false;
        }
    }
    return wellFormed;
}

} // namespace

bool isASCII(std::string_view bytes) { return asciiRun(bytes, 0) == bytes.size(); }

bool isValidUTF8(std::string_view bytes)
{
    for (std::size_t at = asciiRun(bytes, 0); at < bytes.size(); at += asciiRun(bytes, at))
        if (nextCharacter(bytes, at) == kIllFormed)
            return false;
    return true;
}

std::string repairedUTF8(std::string_view bytes)
{
    std::string repaired;
    repaired.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t start = at;
        if (nextCharacter(bytes, at) == kIllFormed)
            appendUTF8(repaired, 0xFFFD);
        else
            repaired.append(bytes, start, at - start);
    }
    return repaired;
}

std::size_t utf16Length(std::string_view text)
{
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t run = asciiRun(text, at);
        length += run;
        at += run;
        if (at < text.size())
            length += unitsOf(nextCharacter(text, at));
    }
    return length;
}

std::size_t byteOffsetOfUTF16Index(std::string_view text, std::size_t index)
{
    std::size_t at = std::min(index, asciiRun(text, 0));
    for (std::size_t unit = at; unit < index && at < text.size();) {
        const std::size_t start = at;
        unit += unitsOf(nextCharacter(text, at));
        if (unit > index)
            return start;
    }
    return at;
}

std::string_view substringUTF16(std::string_view text, std::size_t start, std::size_t length)
{
    const std::size_t from = byteOffsetOfUTF16Index(text, start);
    const std::size_t last = length > SIZE_MAX - start ? SIZE_MAX : start + length;
    return text.substr(from, byteOffsetOfUTF16Index(text, last) - from);
}

std::u16string toUTF16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t run = asciiRun(text, at);
        units.append(text.begin() + static_cast<std::ptrdiff_t>(at),
            text.begin() + static_cast<std::ptrdiff_t>(at + run));
        at += run;
        if (at == text.size())
            break;
        const char32_t character = nextCharacter(text, at);
        if (unitsOf(character) == 2)
            units += {U16_LEAD(character), U16_TRAIL(character)};
        else
            units.push_back(character == kIllFormed ? u'\uFFFD' : static_cast<char16_t>(character));
    }
    return units;
}

std::string fromUTF16(std::u16string_view units)
{
    std::string text;
    text.reserve(units.size());
    appendUnits(text, units);
    return text;
}

std::optional<std::string> fromUTF16Strictly(std::u16string_view units)
{
    std::string text;
    text.reserve(units.size());
    if (!appendUnits(text, units))
        return std::nullopt;
    return text;
}

std::string toUTF16Bytes(std::string_view text, ByteOrder order)
{
    const std::u16string units = toUTF16(text);
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
        bytes.push_back(order == ByteOrder::little ? low : high);
        bytes.push_back(order == ByteOrder::little ? high : low);
    }
    return bytes;
}

std::optional<std::string> fromUTF16Bytes(std::string_view bytes, ByteOrder order)
{
    if (bytes.size() % 2)
        return std::nullopt;
    std::u16string units(bytes.size() / 2, u'\0');
    const std::size_t low = order == ByteOrder::little ? 0 : 1;
    for (std::size_t at = 0; at < units.size(); ++at) {
        const auto lowByte = static_cast<unsigned char>(bytes[2 * at + low]);
        const auto highByte = static_cast<unsigned char>(bytes[2 * at + 1 - low]);
        units[at] = static_cast<char16_t>(lowByte | highByte << 8);
    }
    return fromUTF16Strictly(units);
}

// The macro of ICU narrows on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
char32_t nextCharacter(std::string_view text, std::size_t& at)
{
    UChar32 character;
    U8_NEXT(text.data(), at, text.size(), character);
    return character < 0 ? kIllFormed : static_cast<char32_t>(character);
}
#pragma GCC diagnostic pop

std::size_t startOfLastCharacter(std::string_view text)
{
    const std::size_t lowest = text.size() > U8_MAX_LENGTH ? text.size() - U8_MAX_LENGTH : 0;
    for (std::size_t start = text.size() - 1;; --start) {
        std::size_t at = start;
        if (nextCharacter(text, at) != kIllFormed && at == text.size())
            return start;
        if (start == lowest)
            return text.size() - 1;
    }
}

void appendUTF8(std::string& text, char32_t codePoint)
{
    char bytes[U8_MAX_LENGTH];
    std::size_t length = 0;
    if (codePoint > 0x10FFFF || U_IS_SURROGATE(codePoint))
        codePoint = 0xFFFD;
    U8_APPEND_UNSAFE(bytes, length, codePoint);
    text.append(bytes, length);
}

} // namespace platform
