// What a valid URL is, and how text becomes one.
#include "platform/text/Escape.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

// RFC 3986 §2.2 and §2.3. Brackets and "#" have places of their own.
constexpr std::string_view kUnreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
constexpr std::string_view kReserved = ":/?@!$&'()*+,;=";

using ByteSet = std::array<bool, 256>;

constexpr void add(ByteSet& set, std::string_view bytes)
{
    for (const char byte : bytes)
        set[static_cast<unsigned char>(byte)] = true;
}

constexpr ByteSet setOf(std::string_view one, std::string_view other)
{
    ByteSet set{};
    add(set, one);
    add(set, other);
    return set;
}

constexpr ByteSet kInURL = setOf(kUnreserved, kReserved);

bool isIn(const ByteSet& set, char byte) { return set[static_cast<unsigned char>(byte)]; }

int hexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const int letter = digit | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

bool isEscape(std::string_view text, std::size_t at)
{
    return text[at] == '%' && at + 2 < text.size() && hexValue(text[at + 1]) >= 0
        && hexValue(text[at + 2]) >= 0;
}

void appendEscape(std::string& text, char byte)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    text += {'%', kHexDigits[value >> 4], kHexDigits[value & 0xF]};
}

// The brackets of a host that is an address ("http://[::1]:80/"); empty when there is none.
TextRange bracketsOfHost(std::string_view text)
{
    const std::size_t slashes = text.find("//");
    if (slashes == std::string_view::npos || (slashes > 0 && text[slashes - 1] != ':'))
        return {};
    const std::size_t start = slashes + 2;
    const std::size_t end = std::min(text.find_first_of("/?#", start), text.size());
    const std::string_view authority = text.substr(start, end - start);
    const std::size_t user = authority.find('@');
    const std::size_t host = user == std::string_view::npos ? 0 : user + 1;
    const std::size_t close = authority.find(']', host);
    if (host >= authority.size() || authority[host] != '[' || close == std::string_view::npos)
        return {};
    return {start + host, close - host + 1};
}

// Which bytes of one text may stand as they are, asked from left to right.
class Places {
public:
    explicit Places(std::string_view text)
        : _brackets(bracketsOfHost(text)), _fragment(text.find('#')), _text(text)
    {
    }

    bool mayStand(std::size_t at) const
    {
        const char byte = _text[at];
        const bool isBracket = _brackets.length > 0 && (at == _brackets.start || at == _brackets.end() - 1);
        return isIn(kInURL, byte) || at == _fragment || (isBracket && (byte == '[' || byte == ']'));
    }

private:
    TextRange _brackets;
    std::size_t _fragment;
    std::string_view _text;
};

} // namespace

bool isValidURL(std::string_view text)
{
    const Places places(text);
    for (std::size_t at = 0; at < text.size(); ++at)
        if (!places.mayStand(at) && !isEscape(text, at))
            return false;
    return true;
}

std::string addingPercentEscapesIfNecessary(std::string_view text)
{
    if (isValidURL(text))
        return std::string(text);
    const std::string plain = removingPercentEscapes(text).value_or(repairedUTF8(text));
    const Places places(plain);
    std::string url;
    for (std::size_t at = 0; at < plain.size(); ++at)
        if (places.mayStand(at))
            url.push_back(plain[at]);
        else
            appendEscape(url, plain[at]);
    return url;
}

std::string percentEscaped(std::string_view text, std::string_view alsoAllowed)
{
    const ByteSet allowed = setOf(kUnreserved, alsoAllowed);
    std::string escaped;
    escaped.reserve(text.size());
    for (const char byte : text)
        if (isIn(allowed, byte))
            escaped.push_back(byte);
        else
            appendEscape(escaped, byte);
    return escaped;
}

std::optional<std::string> removingPercentEscapes(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            plain.push_back(text[at]);
            continue;
        }
        if (!isEscape(text, at))
            return std::nullopt;
        plain.push_back(static_cast<char>(hexValue(text[at + 1]) * 16 + hexValue(text[at + 2])));
        at += 2;
    }
    return isValidUTF8(plain) ? std::optional(std::move(plain)) : std::nullopt;
}

} // namespace platform
