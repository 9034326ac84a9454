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

/// The value of a digit at each place of a group of four, shifted to that place; a high bit where it is none.
constexpr std::uint32_t noDigit = 1u << 24;
constexpr auto digitAtPlace = [] {
    std::array<std::array<std::uint32_t, 256>, 4> places{};
    for (std::size_t place = 0; place < 4; ++place)
        for (std::size_t character = 0; character < 256; ++character) {
            const std::uint32_t kind = base64Classes[character & 0x7F];
            places[place][character] = kind < padding ? kind << (18 - 6 * place) : noDigit;
        }
    return places;
}();

std::uint32_t digitAt(std::size_t place, char character)
{
    return digitAtPlace[place][static_cast<unsigned char>(character)];
}

/// Takes the digits at the front of `text` and writes what they stand for; answers where that ends.
char* takeDigits(std::string_view& text, char* out)
{
    std::size_t at = 0;
    for (; at + 4 <= text.size(); at += 4, out += 3) {
        const std::uint32_t bits = digitAt(0, text[at]) | digitAt(1, text[at + 1]) | digitAt(2, text[at + 2])
            | digitAt(3, text[at + 3]);
        if (bits >= noDigit)
            break;
        out[0] = static_cast<char>(bits >> 16);
        out[1] = static_cast<char>(bits >> 8);
        out[2] = static_cast<char>(bits);
    }
    std::uint32_t bits = 0;
    std::size_t left = 0;
    for (; at < text.size() && classOf(text[at]) < padding; ++at, ++left)
        bits |= digitAt(left, text[at]);
    for (std::size_t byte = 0; byte + 1 < left; ++byte)
        *out++ = static_cast<char>(bits >> (16 - 8 * byte) & 0xFF);
    text.remove_prefix(at);
    return out;
}

std::size_t takeAll(std::string_view& text, Base64Class kind)
{
    std::size_t count = 0;
    while (count < text.size() && classOf(text[count]) == kind)
        ++count;
    text.remove_prefix(count);
    return count;
}

/// Takes the end of a line: LF, CR or both; true at the end of the text too.
bool takeLineEnd(std::string_view& text)
{
    if (text.empty())
        return true;
    if (classOf(text.front()) != lineEnd)
        return false;
    text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
    return true;
}

/// Takes a line as it stands, with its end.
std::string_view takeLine(std::string_view& text)
{
    const std::string_view before = text;
    while (!takeLineEnd(text))
        text.remove_prefix(1);
    return before.substr(0, before.size() - text.size());
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
    // No line grows when it is decoded.
    std::string decoded(data.size(), '\0');
    char* out = decoded.data();
    while (!data.empty()) {
        const std::string_view line = data;
        char* const end = takeDigits(data, out);
        const std::size_t paddings = takeAll(data, padding);
        takeAll(data, whiteSpace);
        if (paddings <= 2 && takeLineEnd(data)) {
            out = end;
        } else {
            data = line;
            out = std::ranges::copy(takeLine(data), out).out;
        }
    }
    decoded.resize(static_cast<std::size_t>(out - decoded.data()));
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
