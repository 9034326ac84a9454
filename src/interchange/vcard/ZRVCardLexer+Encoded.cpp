// How encoded characters and data are read: escapes, quoted-printable, Base64.
#include "interchange/vcard/ZRVCardLexer+Width.h"

#include <utility>

using namespace vcard;

namespace {

constexpr unsigned char kCarriageReturn = 0x0D;
constexpr unsigned char kLineFeed = 0x0A;

/// The digit as old writers mean it: nothing is checked, so that lower case and slips read as something.
constexpr unsigned digit(unsigned char character)
{
    const unsigned base = character > 0x60 ? 0x57 : character >= 0x41 ? 0x37 : 0x30;
    return character - base;
}

constexpr unsigned char valueOf(unsigned char first, unsigned char second)
{
    return static_cast<unsigned char>(digit(first) * 16 + digit(second));
}

} // namespace

// ---- escapes

std::optional<std::string> ZRVCardLexer::nextEscapedCharacter()
{
    _buffer.clear();
    if (_unicode)
        appendEscapedCharacter<2>();
    else
        appendEscapedCharacter<1>();
    return _buffer.empty() ? std::nullopt : std::optional(_buffer);
}

template <std::size_t Width>
void ZRVCardLexer::appendEscapedCharacter()
{
    if (atEOF())
        return;
    const auto character = static_cast<char>(unitAt<Width>(_cursor) & 0xFF);
    if constexpr (Width == 2)
        _buffer += '\0';
    _buffer += character == 'n' ? '\n' : character;
    _cursor += Width;
}

template void ZRVCardLexer::appendEscapedCharacter<1>();
template void ZRVCardLexer::appendEscapedCharacter<2>();

// ---- quoted-printable

std::optional<std::string> ZRVCardLexer::nextQuotedPrintableData()
{
    const auto byte = nextQuotedPrintableByte();
    return byte ? std::optional(std::string(1, *byte)) : std::nullopt;
}

std::optional<char> ZRVCardLexer::nextQuotedPrintableByte()
{
    if (atEOF())
        return std::nullopt;
    unsigned char first = byteAt(_cursor++);
    if (first == '=' && !skipSoftBreak(first))
        return std::nullopt;
    if (first == kCarriageReturn || first == kLineFeed) {
        advancePastEOL();
        return std::nullopt;
    }
    unsigned char second = byteAt(_cursor);
    if (second == '=' && !skipSoftBreak(second))
        return std::nullopt;
    _cursor += _cursor < _length;
    return replacementOf(valueOf(first, second));
}

/// A soft line break between two digits: from the "=", or from one behind it, to the digit on the next line.
bool ZRVCardLexer::skipSoftBreak(unsigned char& behind)
{
    if (_cursor + 3 >= _length || byteAt(_cursor + 1) != kCarriageReturn || byteAt(_cursor + 2) != kLineFeed)
        return false;
    _cursor += 3;
    behind = byteAt(_cursor);
    return true;
}

/// Line ends of whatever kind become one LF; a backslash escapes the byte behind it.
char ZRVCardLexer::replacementOf(unsigned char value)
{
    if (value == kCarriageReturn && _cursor + 3 <= _length) {
        const bool lineFeedFollows =
            byteAt(_cursor) == '=' && valueOf(byteAt(_cursor + 1), byteAt(_cursor + 2)) == kLineFeed;
        _cursor += lineFeedFollows ? 3 : 0;
        return kReturnDelimiter;
    }
    if (value == '\\' && !atEOF())
        return static_cast<char>(byteAt(_cursor++));
    return static_cast<char>(value);
}

// ---- Base64

std::string_view ZRVCardLexer::nextBase64Data()
{
    _base64.clear();
    bool done = false;
    while (!done) {
        if (!(_unicode ? appendBase64Line<2>(_base64, done) : appendBase64Line<1>(_base64, done)))
            break;
        _base64 += kReturnDelimiter;
        const std::size_t behindLine = _cursor;
        advanceToEOL();
        advancePastEOL();
        if (advanceToString() == 0) {
            done = true;
            _cursor = behindLine;
        }
    }
    return _base64;
}

std::optional<std::string> ZRVCardLexer::nextBase64Line(bool& last)
{
    return _unicode ? nextUnicodeBase64Line(last) : nextSingleByteBase64Line(last);
}

std::optional<std::string> ZRVCardLexer::nextSingleByteBase64Line(bool& last)
{
    std::string line;
    return appendBase64Line<1>(line, last) ? std::optional(std::move(line)) : std::nullopt;
}

std::optional<std::string> ZRVCardLexer::nextUnicodeBase64Line(bool& last)
{
    std::string line;
    return appendBase64Line<2>(line, last) ? std::optional(std::move(line)) : std::nullopt;
}

/// Appends the rest of the line to `text`; false at the end of the data.
template <std::size_t Width>
bool ZRVCardLexer::appendBase64Line(std::string& text, bool& last)
{
    if (atEOF())
        return false;
    constexpr TokenMask anyToken = 0xFFFF;
    for (;;) {
        const std::size_t start = _cursor;
        _cursor = find<Width>(_cursor, anyToken);
        if constexpr (Width == 1)
            text.append(_data, start, _cursor - start);
        else
            for (std::size_t at = start; at < _cursor; at += Width)
                text += static_cast<char>(unitAt<Width>(at) & 0xFF);
        const TokenCode token = tokenAt<Width>(_cursor);
        if (atEOF() || token & kEndOfLine)
            return true;
        last = last || token == kEqualsToken;
        _cursor += Width;
    }
}
