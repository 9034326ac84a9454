// How encoded bytes of a vCard become data or text.
#include "interchange/vcard/DataDecoding.h"

#include "platform/text/Utf.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace {

// ---- Base64

/// What a character is in Base64 text: a digit's value, or one of these.
enum Base64Class : std::uint8_t { padding = 64, whiteSpace, lineEnd, invalid };

constexpr auto base64Classes = [] {
    std::array<std::uint8_t, 128> classes{};
    classes.fill(invalid);
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t value = 0; value < digits.size(); ++value)
        classes[static_cast<unsigned char>(digits[value])] = static_cast<std::uint8_t>(value);
    classes['='] = padding;
    classes['\t'] = classes[' '] = whiteSpace;
    classes['\r'] = classes['\n'] = lineEnd;
    return classes;
}();

std::uint8_t classOf(char character) { return base64Classes[static_cast<unsigned char>(character) & 0x7F]; }

/// Where the run of characters of a class that `belongs` accepts ends.
template <class Test>
std::size_t endOfRun(std::string_view line, std::size_t at, Test belongs)
{
    while (at < line.size() && belongs(classOf(line[at])))
        ++at;
    return at;
}

/// How many digits the line has, or npos when it is no Base64.
std::size_t digitsOf(std::string_view line)
{
    const std::size_t digits = endOfRun(line, 0, [](auto kind) { return kind < padding; });
    std::size_t at = endOfRun(line, digits, [](auto kind) { return kind == padding; });
    if (at - digits > 2)
        return std::string_view::npos;
    at = endOfRun(line, at, [](auto kind) { return kind == whiteSpace; });
    return at == line.size() ? digits : std::string_view::npos;
}

void appendDecoded(std::string& data, std::string_view digits)
{
    while (!digits.empty()) {
        const auto group = digits.substr(0, 4);
        std::uint32_t bits = 0;
        for (std::size_t at = 0; at < 4; ++at)
            bits = bits << 6 | (at < group.size() ? classOf(group[at]) : 0u);
        for (std::size_t byte = 0; byte + 1 < group.size(); ++byte)
            data += static_cast<char>(bits >> (16 - 8 * byte) & 0xFF);
        digits.remove_prefix(group.size());
    }
}

// ---- UTF-7

/// The characters that a Base64 stretch collects; "@" is let in although it is no digit.
bool belongsToStretch(char character)
{
    return (character >= '@' && character <= 'Z') || (character >= 'a' && character <= 'z')
        || (character >= '0' && character <= '9') || character == '+' || character == '/';
}

constexpr auto hostOrder =
    std::endian::native == std::endian::little ? platform::ByteOrder::little : platform::ByteOrder::big;

void appendUnit(std::string& units, char byte)
{
    const char pair[] = {byte, '\0'};
    if constexpr (hostOrder == platform::ByteOrder::little)
        units.append(pair, 2);
    else
        units.append({pair[1], pair[0]});
}

} // namespace

std::string zrDecodeBase64(std::string_view data)
{
    std::string decoded;
    decoded.reserve(data.size() / 4 * 3);
    while (!data.empty()) {
        const std::size_t end = endOfRun(data, 0, [](auto kind) { return kind != lineEnd; });
        const bool pair = data.substr(end, 2) == "\r\n";
        const std::size_t next = std::min(data.size(), end + (pair ? 2 : 1));
        const std::size_t digits = digitsOf(data.substr(0, end));
        if (digits == std::string_view::npos)
            decoded.append(data.substr(0, next));
        else
            appendDecoded(decoded, data.substr(0, digits));
        data.remove_prefix(next);
    }
    return decoded;
}

std::optional<std::string> zrDecodedUTF7(std::string_view data)
{
    if (data.empty())
        return std::nullopt;
    std::string units, stretch;
    bool inStretch = false;
    for (const char byte : data) {
        if (inStretch && belongsToStretch(byte)) {
            stretch += byte;
        } else if (inStretch) {
            inStretch = false;
            units += zrDecodeBase64(stretch);
            stretch.clear();
            if (byte != '-')
                appendUnit(units, byte);
        } else if (byte == '+') {
            inStretch = true;
        } else {
            appendUnit(units, byte);
        }
    }
    return platform::fromUTF16Bytes(units, hostOrder);
}

bool zrIsUTF16EntourageVCard(std::string_view data)
{
    const std::size_t examined = std::min<std::size_t>(data.size(), 22);
    std::size_t zeros = 0;
    for (std::size_t at = 0; at < examined; at += 2)
        zeros += data[at] == '\0';
    return static_cast<double>(zeros) / (static_cast<double>(examined) / 2) > 0.8;
}
