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

/// ASCII characters that are no token.
constexpr auto kIsOfWord = [] {
    std::array<bool, 256> isOfWord{};
    for (std::size_t unit = 0; unit < 0x80; ++unit)
        isOfWord[unit] = kTokenOfUnit[unit] == kNoToken;
    return isOfWord;
}();

/// Whether the bytes are their own UTF-8, as nearly all are.
bool isUTF8Already(std::string_view bytes, TextEncoding encoding)
{
    if (encoding == platform::kUTF8Encoding)
        return platform::isValidUTF8(bytes);
    return encoding == platform::kASCIIEncoding && platform::isASCII(bytes);
}

} // namespace

std::optional<std::string_view> ZRVCardLexer::nextStringInEncoding(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    if (_unicode)
        return nextFoldedString<2>(encoding, quotedPrintable, stopTokens, trim);
    const auto word = quotedPrintable ? std::nullopt : nextWord(encoding, stopTokens);
    return word ? word : nextFoldedString<1>(encoding, quotedPrintable, stopTokens, trim);
}

std::optional<std::string_view> ZRVCardLexer::nextSingleByteStringInEncoding(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    return nextString<1>(encoding, quotedPrintable, stopTokens, trim);
}

std::optional<std::string_view> ZRVCardLexer::nextUnicodeStringStopTokens(
    TokenMask stopTokens, bool quotedPrintable, bool trim)
{
    return nextString<2>(platform::kUTF16Encoding, quotedPrintable, stopTokens, trim);
}

template <std::size_t Width>
std::optional<std::string_view> ZRVCardLexer::nextFoldedString(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    const auto first = nextString<Width>(encoding, quotedPrintable, stopTokens, trim);
    if (!lineFolds<Width>())
        return first;
    bool complete = first.has_value();
    _unfolded.assign(first.value_or(""));
    do {
        const auto more = nextString<Width>(encoding, quotedPrintable, stopTokens, trim);
        complete = complete && more;
        if (complete)
            _unfolded.append(*more);
    } while (lineFolds<Width>());
    return first ? std::optional<std::string_view>(_unfolded) : std::nullopt;
}

/// Names and parameters are a word that means itself: ASCII, with no token before the one that stops it,
/// which does not end the line. Absent for others, and then the cursor stays.
std::optional<std::string_view> ZRVCardLexer::nextWord(TextEncoding encoding, TokenMask stopTokens)
{
    if (encoding != platform::kASCIIEncoding)
        return std::nullopt;
    const std::size_t start = _cursor;
    std::size_t end = start;
    while (end < _length && kIsOfWord[_bytes[end]])
        ++end;
    if (!(tokenAt<1>(end) & stopTokens & ~(kEndOfLine | kEscape)))
        return std::nullopt;
    _dataEnded = false;
    _cursor = end;
    _peakedPoint = end + 1;
    return _data.substr(start, end - start);
}

/// Moves to the continuation of a line that ended here. Where there is none the cursor goes onto the last of
/// the line's ends, which the caller's own step past them then finds.
template <std::size_t Width>
bool ZRVCardLexer::lineFolds()
{
    if (!(peekOne<Width>() & kEndOfLine))
        return false;
    pastEOL<Width>();
    if (peekOne<Width>() & kSpace) {
        advanceToPeakPoint();
        return true;
    }
    _cursor -= Width;
    return false;
}

template <std::size_t Width>
std::optional<std::string_view> ZRVCardLexer::nextString(
    TextEncoding encoding, bool quotedPrintable, TokenMask stopTokens, bool trim)
{
    const TokenMask encoded = kEscape | (quotedPrintable ? kEquals : 0);
    const TokenMask spaces = trim && !(stopTokens & kSpace) ? kSpace : 0;
    while (tokenAt<Width>(_cursor) & spaces)
        _cursor += Width;
    std::size_t start = _cursor;
    _cursor = find<Width>(_cursor, stopTokens | encoded);
    const bool plain = !(tokenAt<Width>(_cursor) & encoded);
    if (!plain)
        start = undoEncoding<Width>(start, encoded, stopTokens);
    _dataEnded = atEOF();
    if (_dataEnded)
        return dataEndedInString();
    // Only spaces as they stand are trimmed, never encoded ones; and those all lie behind the last encoded
    // one.
    std::size_t end = _cursor;
    while (end > start && tokenAt<Width>(end - Width) & spaces)
        end -= Width;
    const auto run = _data.substr(start, end - start);
    const TextEncoding set = Width == 2 ? platform::kUTF16Encoding : encoding;
    // A part of UTF-8 is UTF-8, unless a failed lookup left the cursor inside a character.
    if (plain && set == platform::kUTF8Encoding && _isUTF8 && (byteAt(start) & 0xC0) != 0x80)
        return run;
    return decoded(plain ? run : _buffer.append(run), set);
}

/// The bytes as text, or absent when they are none in the encoding.
std::optional<std::string_view> ZRVCardLexer::decoded(std::string_view bytes, TextEncoding encoding)
{
    if (isUTF8Already(bytes, encoding))
        return bytes;
    auto text =
        encoding == platform::kUTF7Encoding ? zrDecodedUTF7(bytes) : platform::decode(bytes, encoding);
    if (!text)
        return std::nullopt;
    _decoded = std::move(*text);
    return _decoded;
}

/// Decodes from `start` on into the buffer, up to the last run of plain characters before a stop; answers
/// where that run begins. The cursor stands on an encoded character, and then on the stop.
template <std::size_t Width>
std::size_t ZRVCardLexer::undoEncoding(std::size_t start, TokenMask encoded, TokenMask stopTokens)
{
    _buffer.clear();
    while (const TokenCode token = tokenAt<Width>(_cursor) & encoded) {
        _buffer.append(_data, start, _cursor - start);
        _cursor += Width;
        if (token & kEquals)
            appendQuotedPrintable();
        else
            appendEscapedCharacter<Width>();
        start = _cursor;
        _cursor = find<Width>(_cursor, stopTokens | encoded);
    }
    return start;
}

std::nullopt_t ZRVCardLexer::dataEndedInString()
{
    _cursor = ++_unendedStrings > kMostUnendedStrings ? _length : _peakedPoint;
    return std::nullopt;
}

void ZRVCardLexer::nextArray(
    std::vector<std::string>& array, TokenMask separator, TokenMask stop, TextEncoding encoding)
{
    array.clear();
    if (_unicode)
        fillArray<2>(array, separator, stop, encoding);
    else
        fillArray<1>(array, separator, stop, encoding);
}

template <std::size_t Width>
void ZRVCardLexer::fillArray(
    std::vector<std::string>& array, TokenMask separator, TokenMask stop, TextEncoding encoding)
{
    while (!(tokenAt<Width>(_cursor) & stop) && !atEOF()) {
        auto text = Width == 1 ? nextWord(encoding, separator | stop) : std::nullopt;
        if (!text)
            text = nextFoldedString<Width>(encoding, false, separator | stop, true);
        if (text && !text->empty())
            array.emplace_back(*text);
        if (_dataEnded)
            return;
        if (tokenAt<Width>(_cursor) & separator)
            _cursor += Width;
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
