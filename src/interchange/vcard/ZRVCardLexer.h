// How the bytes of a vCard become tokens, strings and data: a cursor that knows no properties.
#pragma once

#include "interchange/vcard/ZRVCardToken.h"
#include "platform/text/Encoding.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A cursor over vCard bytes (RFC 2426, vCard 2.1; content lines of RFC 2425), 8-bit or UTF-16.
///
/// It is not a parser: it knows no property, no parameter and no card, and it decodes text only once a string
/// is complete. An `…Unicode` member reads UTF-16, its `…Single` twin bytes; the operation without either
/// word takes the one that fits the data.
///
/// Ownership: borrows the data. A text that it answers as a view lies there or in the lexer, and stands until
///            the next string, list or Base64 data is read.
/// Threads:   one at a time.
/// Errors:    none raised; an absent value, `vcard::kEndOfData` or `vcard::kSyntaxError`. Any bytes are safe:
///            behind the end there are no tokens.
class ZRVCardLexer {
public:
    /// A lexer at the start of the data, or absent for 10 bytes or fewer. A byte order mark selects UTF-16 of
    /// its order; without one, zeros at the even places mean UTF-16, big-endian.
    static std::unique_ptr<ZRVCardLexer> initWithData(std::string_view data);
    /// The data must outlive its lexer.
    template <std::same_as<std::string> Temporary>
    static std::unique_ptr<ZRVCardLexer> initWithData(Temporary&&) = delete;
    ZRVCardLexer(const ZRVCardLexer&) = delete;
    ZRVCardLexer& operator=(const ZRVCardLexer&) = delete;

    /// The byte offset of the next unread byte; in little-endian data too, which is held swapped.
    std::size_t cursor() const { return _cursor; }
    /// How many syntax errors `nextTokenPeak` has met.
    std::int64_t errorCount() const { return _errorCount; }
    bool atEOF() const { return _cursor >= _length; }
    bool isUnicode() const { return _unicode; }
    /// Whether all of the data is well-formed UTF-8, and so every part of it between two tokens.
    bool isUTF8() const { return _isUTF8; }

    // ---- tokens

    /// The next token: the shortest that the characters at the cursor make, up to seven of them. Characters
    /// that make none are an error, counted and logged; all seven are passed. With `peek` the cursor stays,
    /// and `advanceToPeakPoint` moves it behind the token later.
    vcard::TokenCode nextTokenPeak(bool peek);
    /// The same with at most `length` characters and then 0 for no token; `length` 0 means seven.
    vcard::TokenCode nextTokenPeakSingle(bool peek, std::size_t length);
    vcard::TokenCode nextTokenPeakUnicode(bool peek, std::size_t length);
    /// The token that the one character under the cursor is, or 0. Moves nothing.
    vcard::TokenCode tokenAtCursor() const;
    void advanceToPeakPoint() { _cursor = _peakedPoint; }
    /// Takes tokens until one is `code`: true. A token outside the classes of `mask` (0: any), the end of the
    /// data or an error answers false. A `code` of 0 answers true at once.
    bool advanceToToken(vcard::TokenCode code, vcard::TokenMask mask);

    /// Like `nextTokenPeak(false)`, but an end of line ends the search as the end of the data does: it is
    /// answered without an error, and the cursor stays on it.
    vcard::TokenCode nextTokenInLine();
    /// Whether a ":" comes before the line ends. A line goes on over an end of line with a space behind it.
    bool lineHasColon();

    // ---- skipping

    /// Moves onto the next CR or LF; false when the data ends first.
    bool advanceToEOL();
    bool advanceToEOLSingle();
    bool advanceToEOLUnicode();
    /// Moves behind all CR and LF from the cursor on, blank lines among them; false at the end of the data.
    bool advancePastEOL();
    bool advancePastEOLSingle();
    bool advancePastEOLUnicode();
    /// Skips spaces and answers how many; 0 when the data ends with them.
    std::size_t advanceToString();
    std::size_t advanceToSingleByteString();
    std::size_t advanceToUnicodeString();

    // ---- values

    /// The text up to a token of the classes `stopTokens`, on which the cursor then rests. Escapes are always
    /// undone; the "=XX" of quoted-printable when asked. `trim` takes spaces off both ends of each line.
    ///
    /// A line that ended goes on when the next one that is not blank begins with a space, which is dropped (a
    /// tab does not fold). Each line converts by itself: of a text whose later line fails, the lines before
    /// it are answered. Absent when the conversion fails, or when the data ends without a stop; the cursor
    /// then falls back to where the last peek ended.
    std::optional<std::string_view> nextStringInEncoding(
        TextEncoding encoding, bool quotedPrintable, vcard::TokenMask stopTokens, bool trim);
    /// One line of it, without folding. UTF-16 needs no encoding.
    std::optional<std::string_view> nextSingleByteStringInEncoding(
        TextEncoding encoding, bool quotedPrintable, vcard::TokenMask stopTokens, bool trim);
    std::optional<std::string_view> nextUnicodeStringStopTokens(
        vcard::TokenMask stopTokens, bool quotedPrintable, bool trim);

    /// Strings, trimmed, between tokens of the classes `separator`, up to one of `stop`. Empty ones and those
    /// that fail to convert are left out.
    void nextArray(std::vector<std::string>& array, vcard::TokenMask separator, vcard::TokenMask stop,
        TextEncoding encoding);
    std::vector<std::string> nextArraySeperatedByToken(
        vcard::TokenMask separator, vcard::TokenMask stop, TextEncoding encoding);

    /// The Base64 text from the cursor on, LF behind each line and without its padding. It goes on over lines
    /// that begin with a space, up to one with padding. The cursor ends on the end of line behind it.
    std::string_view nextBase64Data();
    /// One line of it, or absent at the end of the data; `last` becomes true for a line with padding.
    std::optional<std::string> nextBase64Line(bool& last);
    std::optional<std::string> nextSingleByteBase64Line(bool& last);
    std::optional<std::string> nextUnicodeBase64Line(bool& last);

    /// What the quoted-printable behind a "=" stands for; absent for a soft line break and for nonsense. It
    /// reads bytes, also in UTF-16 data. "=0D=0A" and a lone "=0D" are one LF.
    std::optional<std::string> nextQuotedPrintableData();
    /// What the character behind a backslash stands for: LF for "n", itself else.
    std::optional<std::string> nextEscapedCharacter();

private:
    explicit ZRVCardLexer(std::string_view data);
    void decideMode();

    // Each of these reads characters of `Width` bytes: one, or two of UTF-16.
    template <std::size_t Width>
    char16_t unitAt(std::size_t at) const;
    template <std::size_t Width>
    vcard::TokenCode tokenAt(std::size_t at) const;
    template <std::size_t Width>
    std::size_t find(std::size_t at, vcard::TokenMask classes) const;
    template <std::size_t Width>
    vcard::TokenCode peekOne();
    template <std::size_t Width>
    vcard::TokenCode nextToken(bool peek, std::size_t length, std::size_t end);
    template <std::size_t Width>
    vcard::TokenCode longerToken(std::size_t limit, std::size_t end, char16_t& last);
    template <std::size_t Width>
    vcard::TokenCode nextTokenInLine();
    template <std::size_t Width>
    bool lineHasColon();
    template <std::size_t Width>
    bool toEOL();
    template <std::size_t Width>
    bool pastEOL();
    template <std::size_t Width>
    std::size_t toString();
    template <std::size_t Width>
    std::optional<std::string_view> nextString(
        TextEncoding encoding, bool quotedPrintable, vcard::TokenMask stopTokens, bool trim);
    template <std::size_t Width>
    std::optional<std::string_view> nextFoldedString(
        TextEncoding encoding, bool quotedPrintable, vcard::TokenMask stopTokens, bool trim);
    template <std::size_t Width>
    std::size_t undoEncoding(std::size_t start, vcard::TokenMask encoded, vcard::TokenMask stopTokens);
    template <std::size_t Width>
    bool lineFolds();
    template <std::size_t Width>
    void fillArray(std::vector<std::string>& array, vcard::TokenMask separator, vcard::TokenMask stop,
        TextEncoding encoding);
    template <std::size_t Width>
    void appendEscapedCharacter();
    template <std::size_t Width>
    bool appendBase64Line(std::string& text, bool& last);

    vcard::TokenCode failedLookup(char16_t last, std::size_t end);
    std::nullopt_t dataEndedInString();
    std::optional<std::string_view> nextWord(TextEncoding encoding, vcard::TokenMask stopTokens);
    std::optional<std::string_view> decoded(std::string_view bytes, TextEncoding encoding);
    unsigned char byteAt(std::size_t at) const { return at < _length ? _bytes[at] : 0; }
    std::optional<char> nextQuotedPrintableByte();
    bool skipSoftBreak(unsigned char& behind);
    char replacementOf(unsigned char value);
    void appendQuotedPrintable()
    {
        if (const auto byte = nextQuotedPrintableByte())
            _buffer += *byte;
    }

    /// Where the last search for a colon began and ended, and whether it found one.
    struct Searched {
        std::size_t start = 0;
        std::size_t end = 0;
        bool found = false;
    };

    std::string_view _data;
    /// Little-endian data, made big-endian.
    std::string _swapped;
    const unsigned char* _bytes = nullptr;
    std::size_t _length = 0;
    std::size_t _peakedPoint = 0;
    std::size_t _cursor = 0;
    bool _unicode = false;
    bool _isUTF8 = false;
    std::int64_t _errorCount = 0;
    Searched _searched;
    /// Set by a string that met the end of the data: its reader must not ask again.
    bool _dataEnded = false;
    /// How often that happened.
    int _unendedStrings = 0;
    /// Room for a text that does not stand in the data as it reads: without its escapes, in UTF-8, unfolded.
    std::string _buffer, _decoded, _unfolded;
    std::string _base64;
};
