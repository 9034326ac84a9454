// How values are decoded and escaped.
#include "interchange/vcard/prepare/Values.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Block.h"

#include <array>
#include <cstddef>

namespace vcard::prepare {

namespace {

constexpr auto kSpecial = [] {
    std::array<bool, 256> special{};
    for (const char c : {'\\', ';', ',', '\r', '\n', '\0'})
        special[static_cast<unsigned char>(c)] = true;
    return special;
}();

/// The bytes of a value that do not stand for themselves.
class Specials {
public:
    Specials(Shape shape, Escapes escapes)
        : _semicolon(shape == Shape::onePart ? ';' : '\\')
        , _comma(escapes != Escapes::rfc && shape != Shape::wholeLine ? ',' : '\\')
    {
    }

    /// Of one byte or of a block of them.
    template <typename Bytes>
    auto in(Bytes bytes) const
    {
        return (bytes == '\\') | (bytes == _semicolon) | (bytes == _comma) | (bytes == '\r') | (bytes == '\n')
            | (bytes == '\0');
    }

    /// The place of the first one at or behind `at`, or the end.
    std::size_t next(std::string_view value, std::size_t at) const
    {
        constexpr auto block = sizeof(Block);
        while (value.size() - at >= block && !isAny(in(blockAt(value.data() + at))))
            at += block;
        if (value.size() - at < block && !isAny(in(lastBlock(value, 'A'))))
            return value.size();
        while (at < value.size() && !(kSpecial[static_cast<unsigned char>(value[at])] && in(value[at])))
            ++at;
        return at;
    }

private:
    char _semicolon, _comma;
};

/// Whether the backslash in front of a character is its own, not that of a pair.
bool isEscaped(std::string_view text, std::size_t at)
{
    std::size_t backslashes = 0;
    while (backslashes < at && text[at - 1 - backslashes] == '\\')
        ++backslashes;
    return backslashes % 2 != 0;
}

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
    const Specials specials(shape, escapes);
    for (std::size_t at = 0;;) {
        const auto run = at;
        at = specials.next(value, at);
        out.append(value, run, at - run);
        if (at == value.size())
            return;
        at = appendSpecial(out, value, at, shape, escapes);
    }
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

FirstFields firstFields(std::string_view canonical, std::size_t most)
{
    FirstFields fields;
    for (auto at = canonical.find(';'); at != canonical.npos; at = canonical.find(';', at + 1)) {
        if (isEscaped(canonical, at))
            continue;
        fields.end = at;
        if (fields.count == most)
            return fields;
        ++fields.count;
        fields.last = at + 1;
    }
    fields.end = canonical.size();
    return fields;
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

/// Where the digits at `from`, without padding, end.
std::size_t endOfDigits(std::string_view text, std::size_t from)
{
    const auto isBetween = [](Block bytes, char before, char behind) {
        return (bytes > before) & (bytes < behind);
    };
    for (; text.size() - from >= sizeof(Block); from += sizeof(Block)) {
        const auto bytes = blockAt(text.data() + from);
        // Letters differ by case in one bit, and no other byte becomes a letter with it.
        const auto digits =
            isBetween(bytes | 0x20, 'a' - 1, 'z' + 1) | isBetween(bytes, '/' - 1, '9' + 1) | (bytes == '+');
        if (isAny(~digits))
            break;
    }
    while (from < text.size() && isBase64Digit(text[from]))
        ++from;
    return from;
}

} // namespace

void appendBase64(std::string& out, std::string_view text, bool& sound)
{
    const auto start = out.size();
    bool padded = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto run = at;
        at = endOfDigits(text, at);
        out.append(text, run, at - run);
        sound &= !padded || at == run;
        if (at == text.size())
            break;
        padded |= text[at] == '=';
        sound &= text[at] == '=' || isBlank(text[at]);
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
        const auto digit = kBase64Values[static_cast<unsigned char>(c)];
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
