// Bytes as text of 64 digits, and back.
#include "platform/value/Base64.h"

#include <array>
#include <cstdint>

namespace platform::propertylist {

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::int8_t kNoDigit = -1, kBlank = -2, kPadding = -3;

/// What each byte means: the worth of a digit, or one of the three above.
constexpr auto kWorth = [] {
    std::array<std::int8_t, 256> worth{};
    worth.fill(kNoDigit);
    for (std::size_t at = 0; at < kDigits.size(); ++at)
        worth[static_cast<unsigned char>(kDigits[at])] = static_cast<std::int8_t>(at);
    for (const char blank : {' ', '\t', '\r', '\n'})
        worth[static_cast<unsigned char>(blank)] = kBlank;
    worth[static_cast<unsigned char>('=')] = kPadding;
    return worth;
}();

} // namespace

std::string base64FromBytes(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view three = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t index = 0; index < 3; ++index)
            bits = bits << 8 | (index < three.size() ? static_cast<unsigned char>(three[index]) : 0u);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= three.size() ? kDigits[bits >> (18 - 6 * digit) & 0x3F] : '=';
    }
    return text;
}

std::optional<std::string> bytesFromBase64(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    std::size_t digits = 0, padding = 0;
    for (const char character : text) {
        const std::int8_t worth = kWorth[static_cast<unsigned char>(character)];
        if (worth == kBlank)
            continue;
        if (worth == kPadding) {
            ++padding;
            continue;
        }
        if (worth == kNoDigit || padding != 0)
            return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(worth);
        // The first digit of four completes no byte, each of the others one.
        if (++digits % 4 != 1)
            bytes += static_cast<char>(bits >> (2 * (3 - (digits - 1) % 4)) & 0xFF);
    }
    if (digits % 4 == 1 || (padding != 0 && (digits + padding) % 4 != 0))
        return std::nullopt;
    return bytes;
}

} // namespace platform::propertylist
