// How bytes become Base64 and back.
#include "platform/text/Escape.h"

#include <array>
#include <cstdint>

namespace platform {

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr auto kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t value = 0; value < kDigits.size(); ++value)
        values[static_cast<unsigned char>(kDigits[value])] = static_cast<std::uint8_t>(value);
    return values;
}();

std::uint32_t byteAt(std::string_view bytes, std::size_t at)
{
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

} // namespace

std::string encodeBase64(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t group =
            byteAt(bytes, at) << 16 | byteAt(bytes, at + 1) << 8 | byteAt(bytes, at + 2);
        for (unsigned digit = 0; digit < 4; ++digit)
            text.push_back(kDigits[group >> (18 - 6 * digit) & 0x3F]);
    }
    for (std::size_t padding = (3 - bytes.size() % 3) % 3; padding > 0; --padding)
        text[text.size() - padding] = '=';
    return text;
}

std::optional<std::string> decodeBase64(std::string_view text)
{
    if (text.size() % 4)
        return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    text.remove_suffix(padding);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (const char digit : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(digit)];
        if (value == kNoDigit)
            return std::nullopt;
        bits = (bits << 6 | value) & 0xFFFF;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<char>(bits >> bitCount & 0xFF));
        }
    }
    // The bits behind the last byte belong to nothing; the encoder writes them as zero.
    if (bits & ((1u << bitCount) - 1))
        return std::nullopt;
    return bytes;
}

} // namespace platform
