// How values are decoded and escaped.
#include "interchange/vcard/prepare/Values.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <array>
#include <cstddef>

namespace vcard::prepare {

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr auto kDigitValues = [] {
    std::array<std::int8_t, 256> values;
    values.fill(-1);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::int8_t>(i);
    return values;
}();

constexpr auto kSpecial = [] {
    std::array<bool, 256> special{};
    for (const char c : {'\\', ';', ',', '\r', '\n', '\0'})
        special[static_cast<unsigned char>(c)] = true;
    return special;
}();

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return upper(c) >= 'A' && upper(c) <= 'F' ? upper(c) - 'A' + 10 : -1;
}

/// Appends what stands for the special character at `at`; answers where to go on.
std::size_t appendSpecial(
    std::string& out, std::string_view value, std::size_t at, Shape shape, Escapes escapes)
{
    const bool raw = shape == Shape::wholeLine;
    const bool old = escapes != Escapes::rfc;
    const char next = at + 1 < value.size() ? value[at + 1] : '\0';
    switch (value[at]) {
    case '\0':
        return at + 1;
    case '\r':
        out += "\\n";
        return at + (next == '\n' ? 2 : 1);
    case '\n':
        out += "\\n";
        return at + 1;
    case ';':
        out += shape == Shape::onePart ? "\\;" : ";";
        return at + 1;
    case ',':
        out += old && !raw ? "\\," : ",";
        return at + 1;
    default:
        break;
    }
    if (escapes == Escapes::none) {
        out += "\\\\";
        return at + 1;
    }
    const bool breaks = (next == 'n' || next == 'N') && (escapes == Escapes::rfc || escapes == Escapes::old);
    if (breaks || next == '\\') {
        out += breaks ? "\\n" : "\\\\";
        return at + 2;
    }
    if (next == ';' || next == ',' || next == ':') {
        if (next != ':' && !raw)
            out += '\\';
        out += next;
        return at + 2;
    }
    out += "\\\\";
    return at + 1;
}

} // namespace

void appendValue(std::string& out, std::string_view value, Shape shape, Escapes escapes)
{
    std::size_t run = 0;
    for (std::size_t at = 0; at < value.size();) {
        if (!kSpecial[static_cast<unsigned char>(value[at])]) {
            ++at;
            continue;
        }
        out.append(value, run, at - run);
        run = at = appendSpecial(out, value, at, shape, escapes);
    }
    out.append(value, run);
}

std::string plainText(std::string_view canonical)
{
    std::string text;
    for (std::size_t at = 0; at < canonical.size(); ++at) {
        const bool escape = canonical[at] == '\\' && at + 1 < canonical.size();
        at += escape;
        text += escape && canonical[at] == 'n' ? '\n' : canonical[at];
    }
    return text;
}

std::size_t endOfFields(std::string_view canonical, std::size_t count)
{
    for (std::size_t at = 0; at < canonical.size(); ++at) {
        if (canonical[at] == '\\')
            ++at;
        else if (canonical[at] == ';' && --count == 0)
            return at;
    }
    return canonical.size();
}

std::size_t countFields(std::string_view canonical)
{
    std::size_t count = 1;
    for (auto end = endOfFields(canonical, 1); end < canonical.size(); ++count) {
        canonical.remove_prefix(end + 1);
        end = endOfFields(canonical, 1);
    }
    return count;
}

bool isEmptyValue(std::string_view canonical, Shape shape)
{
    for (const char c : canonical)
        if (!isBlank(c) && (c != ';' || shape != Shape::fields))
            return false;
    return true;
}

std::string decodedQuotedPrintable(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    bool escaped = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char c = text[at];
        if (c == '=' && at + 1 == text.size())
            break;
        const int high = c == '=' && at + 2 < text.size() ? hexDigit(text[at + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[at + 2]) : -1;
        if (low >= 0) {
            c = static_cast<char>(high * 16 + low);
            at += 2;
            if (c == ';' && !escaped)
                bytes += '\\';
        }
        escaped = c == '\\' && !escaped;
        bytes += c;
    }
    return bytes;
}

namespace {

std::int8_t digitOf(char c) { return kDigitValues[static_cast<unsigned char>(c)]; }

/// Four at a time: one that is no digit has a sign, which stays in what they are together.
const char* endOfDigits(const char* at, const char* end)
{
    while (end - at >= 4 && (digitOf(at[0]) | digitOf(at[1]) | digitOf(at[2]) | digitOf(at[3])) >= 0)
        at += 4;
    while (at != end && digitOf(*at) >= 0)
        ++at;
    return at;
}

} // namespace

bool isBase64Digit(char c) { return kDigitValues[static_cast<unsigned char>(c)] >= 0; }

void appendBase64(std::string& out, std::string_view text, bool& sound)
{
    const auto start = out.size();
    bool padded = false;
    const char* at = text.data();
    for (const char* const end = at + text.size(); at != end; ++at) {
        const char* const run = at;
        at = endOfDigits(at, end);
        out.append(run, at);
        sound &= !padded || at == run;
        if (at == end)
            break;
        padded |= *at == '=';
        sound &= *at == '=' || isBlank(*at);
    }
    if ((out.size() - start) % 4 == 1) {
        out.pop_back();
        sound = false;
    }
    while ((out.size() - start) % 4 != 0)
        out += '=';
}

std::string decodedBase64(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const auto digit = kDigitValues[static_cast<unsigned char>(c)];
        if (digit < 0)
            continue;
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

} // namespace vcard::prepare
