// How the lexer reads one character, of one byte or of two: what its files share.
#pragma once

#include "interchange/vcard/ZRVCardLexer.h"

template <std::size_t Width>
inline char16_t ZRVCardLexer::unitAt(std::size_t at) const
{
    if constexpr (Width == 1)
        return byteAt(at);
    else
        return static_cast<char16_t>(byteAt(at) << 8 | byteAt(at + 1));
}

template <std::size_t Width>
inline vcard::TokenCode ZRVCardLexer::tokenAt(std::size_t at) const
{
    return at < _length ? vcard::tokenOfUnit(unitAt<Width>(at)) : vcard::kNoToken;
}

/// The first place from `at` on with a token of one of the classes, or the end of the data.
template <std::size_t Width>
inline std::size_t ZRVCardLexer::find(std::size_t at, vcard::TokenMask classes) const
{
    // Most of what is searched are long runs of other bytes: four at a step.
    if constexpr (Width == 1) {
        const auto token = [&](std::size_t place) { return vcard::kTokenOfUnit[_bytes[place]]; };
        while (at + 4 <= _length && !((token(at) | token(at + 1) | token(at + 2) | token(at + 3)) & classes))
            at += 4;
    }
    while (at < _length && !(tokenAt<Width>(at) & classes))
        at += Width;
    return at;
}

/// The one character at the cursor as a token, which a later `advanceToPeakPoint` passes.
template <std::size_t Width>
inline vcard::TokenCode ZRVCardLexer::peekOne()
{
    _peakedPoint = _cursor;
    if (atEOF())
        return vcard::kEndOfData;
    _peakedPoint += Width;
    return tokenAt<Width>(_cursor);
}
