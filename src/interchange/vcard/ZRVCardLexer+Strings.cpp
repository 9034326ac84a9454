// How text is read: up to a stop, without escapes and folds, in the encoding of its line.
#include "interchange/vcard/ZRVCardLexer+Width.h"

#include "interchange/vcard/DataDecoding.h"
#include "platform/text/Utf.h"

#include <utility>

using namespace vcard;

namespace {

/// A string without an end costs a walk to the end of the data. From this many on the lexer gives up and
/// stays there, so that damaged data is read in linear time.
constexpr int kMostUnendedStrings = 64;

std::optional<std::string> decoded(std::string_view bytes, TextEncoding encoding)
{
    if (encoding == platform::kUTF7Encoding)
        return zrDecodedUTF7(bytes);
    const bool direct = encoding == platform::kUTF8Encoding || encoding == platform::kASCIIEncoding;
    if (direct && platform::isASCII(bytes))
        return std::string(bytes);
    return platform::decode(bytes, encoding);
}

} // namespace

std::optional<std::string> ZRVCardLexer::nextStringInEncoding(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    return _unicode ? nextFoldedString<2>(encoding, quotedPrintable, stopTokens, trim)
                    : nextFoldedString<1>(encoding, quotedPrintable, stopTokens, trim);
}

std::optional<std::string> ZRVCardLexer::nextSingleByteStringInEncoding(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    return nextString<1>(encoding, quotedPrintable, stopTokens, trim);
}

std::optional<std::string> ZRVCardLexer::nextUnicodeStringStopTokens(
    TokenMask stopTokens, bool quotedPrintable, bool trim)
{
    return nextString<2>(platform::kUTF16Encoding, quotedPrintable, stopTokens, trim);
}

template <std::size_t Width>
std::optional<std::string> ZRVCardLexer::nextFoldedString(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    auto text = nextString<Width>(encoding, quotedPrintable, stopTokens, trim);
    bool complete = text.has_value();
    while (lineFolds<Width>()) {
        const auto more = nextString<Width>(encoding, quotedPrintable, stopTokens, trim);
        complete = complete && more;
        if (complete)
            text->append(*more);
    }
    return text;
}

/// Moves to the continuation of a line that ended here. Where there is none the cursor goes onto the last of
/// the line's ends, which the caller's own step past them then finds.
template <std::size_t Width>
bool ZRVCardLexer::lineFolds()
{
    if (!(nextToken<Width>(true, 1, _length) & kEndOfLine))
        return false;
    pastEOL<Width>();
    if (nextToken<Width>(true, 1, _length) & kSpace) {
        advanceToPeakPoint();
        return true;
    }
    _cursor -= Width;
    return false;
}

template <std::size_t Width>
std::optional<std::string> ZRVCardLexer::nextString(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    const TokenMask interesting = stopTokens | kEscape | (quotedPrintable ? kEquals : 0);
    const bool trimsSpaces = trim && !(stopTokens & kSpace);
    _dataEnded = false;
    _buffer.clear();
    while (trimsSpaces && tokenAt<Width>(_cursor) & kSpace)
        _cursor += Width;
    std::size_t start = _cursor;
    for (;;) {
        _cursor = find<Width>(_cursor, interesting);
        if (atEOF())
            return dataEndedInString();
        const TokenCode token = tokenAt<Width>(_cursor);
        const bool encoded = quotedPrintable && token & kEquals;
        if (!encoded && !(token & kEscape))
            break;
        _buffer.append(_data, start, _cursor - start);
        _cursor += Width;
        if (encoded)
            appendQuotedPrintable();
        else
            appendEscapedCharacter<Width>();
        start = _cursor;
    }
    // Only spaces as they stand are trimmed, never encoded ones; and those all lie behind the last encoded
    // one.
    std::size_t end = _cursor;
    while (trimsSpaces && end > start && tokenAt<Width>(end - Width) & kSpace)
        end -= Width;
    const auto run = std::string_view(_data).substr(start, end - start);
    constexpr bool wide = Width == 2;
    if (_buffer.empty())
        return decoded(run, wide ? platform::kUTF16Encoding : encoding);
    return decoded(_buffer.append(run), wide ? platform::kUTF16Encoding : encoding);
}

std::nullopt_t ZRVCardLexer::dataEndedInString()
{
    _dataEnded = true;
    _cursor = ++_unendedStrings > kMostUnendedStrings ? _length : _peakedPoint;
    return std::nullopt;
}

void ZRVCardLexer::nextArray(
    std::vector<std::string>& array, TokenMask separator, TokenMask stop, TextEncoding encoding)
{
    array.clear();
    while (!(tokenAtCursor() & stop) && !atEOF()) {
        auto text = nextStringInEncoding(encoding, false, separator | stop, true);
        if (text && !text->empty())
            array.push_back(std::move(*text));
        if (_dataEnded)
            return;
        if (tokenAtCursor() & separator)
            _cursor += _unicode ? 2 : 1;
    }
}

std::vector<std::string> ZRVCardLexer::nextArraySeperatedByToken(
    TokenMask separator, TokenMask stop, TextEncoding encoding)
{
    std::vector<std::string> array;
    array.reserve(5);
    nextArray(array, separator, stop, encoding);
    return array;
}
