// How the cursor moves: deciding the width, taking tokens, skipping.
#include "interchange/vcard/ZRVCardLexer+Width.h"

#include "interchange/vcard/DataDecoding.h"
#include "platform/run/Log.h"
#include "platform/text/Utf.h"

#include <fmt/format.h>

#include <utility>

using namespace vcard;

namespace {

/// Data of this size or less is no card and gets no lexer.
constexpr std::size_t kTooShort = 10;

} // namespace

// ---- the data and its width

std::unique_ptr<ZRVCardLexer> ZRVCardLexer::initWithData(std::string_view data)
{
    if (data.size() <= kTooShort)
        return nullptr;
    return std::unique_ptr<ZRVCardLexer>(new ZRVCardLexer(data));
}

ZRVCardLexer::ZRVCardLexer(std::string_view data)
    : _data(data), _length(_data.size()), _isUTF8(platform::isValidUTF8(data))
{
    decideMode();
    _bytes = reinterpret_cast<const unsigned char*>(_data.data());
}

void ZRVCardLexer::decideMode()
{
    const bool bigEndian = _data.starts_with("\xFE\xFF");
    const bool littleEndian = _data.starts_with("\xFF\xFE");
    _unicode = bigEndian || littleEndian || zrIsUTF16EntourageVCard(_data);
    _cursor = bigEndian || littleEndian ? 2 : 0;
    if (!littleEndian)
        return;
    _swapped = _data;
    for (std::size_t at = 0; at + 1 < _length; at += 2)
        std::swap(_swapped[at], _swapped[at + 1]);
    _data = _swapped;
}

// ---- tokens

TokenCode ZRVCardLexer::nextTokenPeak(bool peek)
{
    if (_unicode)
        return nextTokenPeakUnicode(peek, 0);
    // Nearly always it is one character.
    const TokenCode single = tokenAt<1>(_cursor);
    if (!single)
        return nextTokenPeakSingle(peek, 0);
    _peakedPoint = _cursor + 1;
    _cursor += !peek;
    return single;
}
TokenCode ZRVCardLexer::nextTokenPeakSingle(bool peek, std::size_t length)
{
    return nextToken<1>(peek, length, _length);
}
TokenCode ZRVCardLexer::nextTokenPeakUnicode(bool peek, std::size_t length)
{
    return nextToken<2>(peek, length, _length);
}

template <std::size_t Width>
TokenCode ZRVCardLexer::nextToken(bool peek, std::size_t length, std::size_t end)
{
    TokenCode token = _cursor >= end ? kEndOfData : tokenOfUnit(unitAt<Width>(_cursor));
    _peakedPoint = _cursor + (token == kEndOfData ? 0 : Width);
    char16_t last = 0;
    if (!token && length != 1)
        token = longerToken<Width>(length ? length : kLongestToken, end, last);
    if (!peek)
        _cursor = _peakedPoint;
    return length || token ? token : failedLookup(last, end);
}

/// The token of two or more characters at the cursor, up to `limit` of them.
template <std::size_t Width>
TokenCode ZRVCardLexer::longerToken(std::size_t limit, std::size_t end, char16_t& last)
{
    TokenCode token = kNoToken;
    std::array<char16_t, kLongestToken> units{unitAt<Width>(_cursor)};
    for (std::size_t count = 2; _peakedPoint < end && count <= limit && !token; ++count) {
        last = unitAt<Width>(_peakedPoint);
        if (count <= units.size()) {
            units[count - 1] = last;
            token = tokenFor(std::span<const char16_t>(units.data(), count));
        }
        _peakedPoint += Width;
    }
    return token;
}

TokenCode ZRVCardLexer::failedLookup(char16_t last, std::size_t end)
{
    if (_peakedPoint >= end)
        return kEndOfData;
    platform::log(fmt::format(
        "vCard Syntax Error, character: {} : {}", _cursor, last < 0x80 ? static_cast<char>(last) : '?'));
    ++_errorCount;
    return kSyntaxError;
}

TokenCode ZRVCardLexer::tokenAtCursor() const { return _unicode ? tokenAt<2>(_cursor) : tokenAt<1>(_cursor); }

bool ZRVCardLexer::advanceToToken(TokenCode code, TokenMask mask)
{
    if (code == kNoToken)
        return true;
    for (;;) {
        const TokenCode token = nextTokenPeak(false);
        if (token == code)
            return true;
        if (token == kEndOfData || token == kSyntaxError || (mask && !(token & mask)))
            return false;
    }
}

TokenCode ZRVCardLexer::nextTokenInLine() { return _unicode ? nextTokenInLine<2>() : nextTokenInLine<1>(); }

template <std::size_t Width>
TokenCode ZRVCardLexer::nextTokenInLine()
{
    const TokenCode single = tokenAt<Width>(_cursor);
    if (single & kEndOfLine)
        return single;
    if (single) {
        _peakedPoint = _cursor += Width;
        return single;
    }
    // One character further than a lookup can go, so that only an end of line right behind it counts.
    std::size_t end = _cursor;
    for (std::size_t count = 0; count <= kLongestToken && end < _length; ++count, end += Width)
        if (tokenAt<Width>(end) & kEndOfLine)
            break;
    const TokenCode token = nextToken<Width>(false, 0, end);
    return token == kEndOfData && end < _length ? tokenAt<Width>(end) : token;
}

bool ZRVCardLexer::lineHasColon() { return _unicode ? lineHasColon<2>() : lineHasColon<1>(); }

template <std::size_t Width>
bool ZRVCardLexer::lineHasColon()
{
    if (tokenAt<Width>(_cursor) & kColon)
        return true;
    // Remembered, since many items may begin within one folded line.
    if (_cursor >= _searched.start && _cursor < _searched.end)
        return _searched.found;
    std::size_t at = _cursor;
    for (;;) {
        at = find<Width>(at, kColon | kEndOfLine);
        const bool found = (tokenAt<Width>(at) & kColon) != 0;
        _searched = {_cursor, at, found};
        if (found || at >= _length)
            return found;
        while (tokenAt<Width>(at) & kEndOfLine)
            at += Width;
        if (!(tokenAt<Width>(at) & kSpace))
            return false;
    }
}

// ---- skipping

bool ZRVCardLexer::advanceToEOL() { return _unicode ? advanceToEOLUnicode() : advanceToEOLSingle(); }
bool ZRVCardLexer::advanceToEOLSingle() { return toEOL<1>(); }
bool ZRVCardLexer::advanceToEOLUnicode() { return toEOL<2>(); }

template <std::size_t Width>
bool ZRVCardLexer::toEOL()
{
    _cursor = find<Width>(_cursor, kEndOfLine);
    return _cursor < _length;
}

bool ZRVCardLexer::advancePastEOL() { return _unicode ? advancePastEOLUnicode() : advancePastEOLSingle(); }
bool ZRVCardLexer::advancePastEOLSingle() { return pastEOL<1>(); }
bool ZRVCardLexer::advancePastEOLUnicode() { return pastEOL<2>(); }

template <std::size_t Width>
bool ZRVCardLexer::pastEOL()
{
    while (tokenAt<Width>(_cursor) & kEndOfLine)
        _peakedPoint = _cursor += Width;
    return _cursor < _length;
}

std::size_t ZRVCardLexer::advanceToString()
{
    return _unicode ? advanceToUnicodeString() : advanceToSingleByteString();
}
std::size_t ZRVCardLexer::advanceToSingleByteString() { return toString<1>(); }
std::size_t ZRVCardLexer::advanceToUnicodeString() { return toString<2>(); }

template <std::size_t Width>
std::size_t ZRVCardLexer::toString()
{
    const std::size_t start = _cursor;
    while (tokenAt<Width>(_cursor) & kSpace)
        _cursor += Width;
    return _cursor < _length ? (_cursor - start) / Width : 0;
}

// What the other files of the lexer use.
template bool ZRVCardLexer::pastEOL<1>();
template bool ZRVCardLexer::pastEOL<2>();
