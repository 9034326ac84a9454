// How strings, lists and encoded data are read.
#include "CardText.h"
#include "interchange/vcard/ZRVCardLexer.h"

#include <gtest/gtest.h>

#include <vector>

using namespace vcard;
using namespace platform;

namespace {

cardtext::TextLexer lexerOn(std::string_view text, bool wide)
{
    return cardtext::lexerOn(text, wide ? std::optional(ByteOrder::little) : std::nullopt);
}

/// The string, and behind a bar what follows at the cursor.
std::string stringAndRest(ZRVCardLexer& lexer, TextEncoding encoding, bool quotedPrintable, TokenMask stops)
{
    const auto text = lexer.nextStringInEncoding(encoding, quotedPrintable, stops, true);
    const auto token = lexer.nextTokenPeak(false);
    return std::string(text.value_or("(absent)")) + "|" + std::string(tokenName(token));
}

struct Case {
    std::string input;
    std::string expected;
};

TEST(LexerStrings, StopTrimUnescapeAndFold)
{
    const Case cases[] = {
        {"abc;d", "abc|;"},
        {"abc\r\nd", "abc|ZRLF"},
        {";", "|;"},
        {"\n", "|ZRLF"},
        // Trimmed of spaces, not of tabs, and inside nothing is.
        {"  a b  ;", "a b|;"},
        {"\ta\t;", "\ta\t|;"},
        {"   ;", "|;"},
        // Escapes stand before stops; only a small n is a line end.
        {"a\\;b\\,c\\:d;", "a;b,c:d|;"},
        {"a\\nb\\Nc;", "a\nbNc|;"},
        {"a\\\\;", "a\\|;"},
        {"\\ a \\ ;", " a  |;"},
        // One space behind the end of the line folds; the line ends by itself for the trimming.
        {"abc\r\n def;", "abcdef|;"},
        {"abc \r\n  def;", "abcdef|;"},
        {"abc\r\n\r\n\r\n def;", "abcdef|;"},
        {"abc\n d\r e;", "abcde|;"},
        {"abc\r\n\tdef;", "abc|ZRLF"},
        {"abc\r\ndef;", "abc|ZRLF"},
        {"abc\r\n \r\n d;", "abcd|;"},
        {"\r\n a;", "a|;"},
        // A string without a stop is none, and the cursor goes back to the last peek.
        {"abc", "(absent)|ZREOF"},
        {"abc\\", "(absent)|ZREOF"},
        {"abc\\;", "(absent)|ZREOF"},
        {"abc\r\n :", "abc|:"},
        {"a=41;", "a=41|;"},
        {"grüße;", "grüße|;"},
        {"gr\\nüße;", "gr\nüße|;"},
        {"日本\r\n 語;", "日本語|;"},
    };
    for (const auto& [input, expected] : cases)
        for (const bool wide : {false, true})
            EXPECT_EQ(stringAndRest(*lexerOn(input, wide), kUTF8Encoding, false, kFieldStops), expected)
                << testing::PrintToString(input) << (wide ? " in UTF-16" : "");
}

TEST(LexerStrings, ReadANulAsASemicolon)
{
    const std::string text("ab\0c\n", 5);
    for (const bool wide : {false, true}) {
        EXPECT_EQ(lexerOn(text, wide)->nextStringInEncoding(kASCIIEncoding, false, kFieldStops, true), "ab");
        EXPECT_EQ(lexerOn(text, wide)->nextStringInEncoding(kASCIIEncoding, false, kEndOfLine, true),
            text.substr(0, 4));
    }
}

TEST(LexerStrings, KeepTheirSpacesWhenNotTrimmed)
{
    EXPECT_EQ(
        lexerOn("  a  ;", false)->nextStringInEncoding(kASCIIEncoding, false, kSemicolon, false), "  a  ");
    EXPECT_EQ(lexerOn("  a b;", false)->nextStringInEncoding(kASCIIEncoding, false, kSpace, true), "");
}

TEST(LexerStrings, UndoQuotedPrintable)
{
    const Case cases[] = {
        {"a=41=62;", "aAb|;"},
        {"=C3=A9;", "é|;"},
        {"=c3=a9;", "é|;"},
        // Line ends of every kind are one LF.
        {"a=0D=0Ab;", "a\nb|;"},
        {"a=0Db;c", "a\nb|;"},
        {"a=0Ab;", "a\nb|;"},
        {"a=0D=0Dbc;d", "a\n\nbc|;"},
        // Of three bytes that could hold the LF there must be room.
        {"a=0Db;", "a\rb|;"},
        // A soft line break gives nothing, whatever kind it is.
        {"ab=\r\ncd;", "abcd|;"},
        {"ab=\ncd;", "abcd|;"},
        {"ab=\r\n\r\ncd;", "abcd|;"},
        {"=C3=\r\n=A9;", "é|;"},
        // Also between the two digits.
        {"=4=\r\n1b;", "Ab|;"},
        // Of a "==" the character behind it is passed unseen, and one digit counts twice.
        {"==x\r\n4b;", "Db|;"},
        {"==4;", "4|;"},
        // An encoded backslash lets the next character stand for itself, and goes.
        {"a=5C;b;", "a;b|;"},
        {"a=5Cn;", "an|;"},
        // Digits are not checked.
        {"=2g;", "0|;"},
        // Escapes are undone too; spaces at the ends that are encoded stay.
        {"=20 a\\;=20 ;", "  a; |;"},
        {"a =\r\n b;", "a  b|;"},
        {"=4", "(absent)|="},
        {"=", "(absent)|="},
        {"a=0D", "(absent)|ZREOF"},
    };
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(stringAndRest(*lexerOn(input, false), kUTF8Encoding, true, kFieldStops), expected)
            << testing::PrintToString(input);
}

TEST(LexerStrings, AreInTheEncodingThatTheyAreSaidToBeIn)
{
    struct Encoded {
        std::string bytes;
        TextEncoding encoding;
        std::string expected;
    };
    const Encoded cases[] = {
        {"caf\xE9;", kLatin1Encoding, "café|;"},
        {"caf\x8E;", kQuillonRomanEncoding, "café|;"},
        {"\xCF\xF0\xE8;", encodingForName("windows-1251"), "При|;"},
        {"\x93\xFA\x96\x7B;", encodingForName("Shift_JIS"), "日本|;"},
        {"caf\xC3\xA9;", kASCIIEncoding, "(absent)|;"},
        {"caf\xE9;", kUTF8Encoding, "(absent)|;"},
        {"cafe;", invalidTextEncoding, "(absent)|;"},
        // Each line converts by itself: a character cut in two takes the text with it.
        {"caf\xC3\r\n \xA9;", kUTF8Encoding, "(absent)|;"},
        {"abc\r\n \xC3;", kUTF8Encoding, "abc|;"},
        {"abc\r\n \xC3\r\n d;", kUTF8Encoding, "abc|;"},
    };
    for (const auto& [bytes, encoding, expected] : cases)
        EXPECT_EQ(stringAndRest(*lexerOn(bytes, false), encoding, false, kFieldStops), expected)
            << testing::PrintToString(bytes);
}

// All of the data is UTF-8, but the failed lookup of seven bytes ended inside the third character.
TEST(LexerStrings, ThatBeginInsideACharacterAreNone)
{
    const auto lexer = lexerOn("日本語日;本;", false);
    EXPECT_EQ(lexer->nextTokenPeak(false), kSyntaxError);
    EXPECT_EQ(stringAndRest(*lexer, kUTF8Encoding, false, kFieldStops), "(absent)|;");
    EXPECT_EQ(stringAndRest(*lexer, kUTF8Encoding, false, kFieldStops), "本|;");
}

TEST(LexerStrings, OfHalfASurrogatePairAreNone)
{
    std::string data = cardtext::utf16(std::string(11, '\n') + "ab;", ByteOrder::big);
    data[data.size() - 6] = static_cast<char>(0xD8);
    const auto lexer = ZRVCardLexer::initWithData(data);
    lexer->advancePastEOL();
    EXPECT_EQ(stringAndRest(*lexer, kUTF8Encoding, false, kFieldStops), "(absent)|;");
}

TEST(LexerArrays, LeaveOutWhatIsEmpty)
{
    using Strings = std::vector<std::string>;
    const std::pair<std::string, Strings> cases[] = {
        {"a,b,c:", {"a", "b", "c"}},
        {"a,,b:", {"a", "b"}},
        {",a,:", {"a"}},
        {" a , b :", {"a", "b"}},
        {":", {}},
        {"a\\,b,c:", {"a,b", "c"}},
        {"a,b\r\n c:", {"a", "bc"}},
        // The end of a line right behind a separator is a stop, not a fold.
        {"a,\r\n b:", {"a"}},
        {"a\r\n b,c\r\nd", {"ab", "c"}},
        {"a,bc", {"a"}},
        {"a,\xC3,b:", {"a", "b"}},
        {"", {}},
    };
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(
            lexerOn(input, false)->nextArraySeperatedByToken(kListSeparator, kHeaderStops, kASCIIEncoding),
            expected)
            << testing::PrintToString(input);
    // Of an escaped character UTF-16 keeps the low byte: 本 is U+672C, and 2C a comma.
    EXPECT_EQ(lexerOn("日,\\本,語:", true)->nextArraySeperatedByToken(kListSeparator, kColon, kASCIIEncoding),
        (Strings{"日", ",", "語"}));
}

TEST(LexerBase64, GoesOnOverLinesThatBeginWithASpace)
{
    struct Block {
        std::string input;
        std::string text;
        TokenCode next;
    };
    const Block cases[] = {
        {"QUJD\r\nX:", "QUJD\n", kCarriageReturnToken},
        {"QUJD\r\n REVG\r\nX:", "QUJD\nREVG\n", kCarriageReturnToken},
        {"\r\n  QUJD\r\n\r\nX:", "\nQUJD\n", kCarriageReturnToken},
        // Only what is no token belongs to it.
        {"Q U;J:D.\r\nX:", "QUJD\n", kCarriageReturnToken},
        // Padding ends it, even when the next line begins with a space.
        {"QUI=\r\n QUI=\r\nX:", "QUI\n", kNoToken},
        {"QUJD\r\n\tREVG\r\n", "QUJD\n", kCarriageReturnToken},
        {"QUJD", "QUJD\n", kNoToken},
        {"QUJD\r\n ", "QUJD\n", kCarriageReturnToken},
    };
    for (const auto& [input, text, next] : cases)
        for (const bool wide : {false, true}) {
            const auto lexer = lexerOn(input, wide);
            EXPECT_EQ(lexer->nextBase64Data(), text) << testing::PrintToString(input);
            EXPECT_EQ(lexer->tokenAtCursor(), next) << testing::PrintToString(input);
        }
}

} // namespace
