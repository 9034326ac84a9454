// How the cursor takes tokens, skips, and decides the width of its characters.
#include "CardText.h"
#include "interchange/vcard/ZRVCardLexer.h"
#include "platform/run/Log.h"

#include <gtest/gtest.h>

#include <vector>

using namespace vcard;
using cardtext::lexerOn;
using platform::ByteOrder;

namespace {

using Names = std::vector<std::string>;

cardtext::TextLexer wideLexerOn(std::string_view text, ByteOrder order = ByteOrder::big)
{
    return lexerOn(text, order);
}

Names tokensOf(ZRVCardLexer& lexer)
{
    Names names;
    for (int most = 0; most < 50; ++most) {
        names.emplace_back(tokenName(lexer.nextTokenPeak(false)));
        if (names.back() == "ZREOF")
            break;
    }
    return names;
}

// ---- tokens

TEST(LexerTokens, AreReadAlikeInBothWidths)
{
    struct Case {
        std::string text;
        Names tokens;
    };
    const Case cases[] = {
        {"BEGIN:VCARD\r\n", {"BEGIN", ":", "VCARD", "ZRCR", "ZRLF", "ZREOF"}},
        {"begin:vCard", {"BEGIN", ":", "VCARD", "ZREOF"}},
        {"EndVersion", {"END", "VERSION", "ZREOF"}},
        {"; =\\.,", {";", " ", "=", "\\", ".", ",", "ZREOF"}},
        // What makes no token costs seven characters; fewer before the end are the end.
        {"\tBEGIN:VCARD", {"ZRERROR", "VCARD", "ZREOF"}},
        {"abcdefg:", {"ZRERROR", ":", "ZREOF"}},
        {"abcdef", {"ZREOF"}},
        // A token inside of it is passed with it.
        {"x:BEGINy;", {"ZRERROR", "ZREOF"}},
        {std::string("\0x", 2) + "END", {";", "ZREOF"}},
        // A NUL ends the comparison: what stands before it is enough.
        {std::string("BE\0zz;", 6), {"BEGIN", ";", "ZREOF"}},
        {std::string("E\0z;", 4), {"END", ";", "ZREOF"}},
        {"\x01\x02", {"ZREOF"}},
    };
    for (const auto& [text, tokens] : cases) {
        EXPECT_EQ(tokensOf(*lexerOn(text)), tokens) << testing::PrintToString(text);
        EXPECT_EQ(tokensOf(*wideLexerOn(text)), tokens) << testing::PrintToString(text);
        EXPECT_EQ(tokensOf(*wideLexerOn(text, ByteOrder::little)), tokens) << testing::PrintToString(text);
    }
}

TEST(LexerTokens, OfOneCharacterLeaveTheLongerOnesAlone)
{
    const auto lexer = lexerOn("BEGIN");
    EXPECT_EQ(lexer->nextTokenPeakSingle(true, 1), kNoToken);
    EXPECT_EQ(lexer->nextTokenPeakSingle(true, 4), kNoToken);
    EXPECT_EQ(lexer->nextTokenPeakSingle(true, 5), kBeginToken);
    EXPECT_EQ(lexer->tokenAtCursor(), kNoToken);
    EXPECT_EQ(lexer->errorCount(), 0);
}

TEST(LexerTokens, ArePassedOnlyWhenThePeekIsTaken)
{
    const auto lexer = lexerOn("END:");
    const auto before = lexer->cursor();
    EXPECT_EQ(lexer->nextTokenPeak(true), kEndToken);
    EXPECT_EQ(lexer->cursor(), before);
    lexer->advanceToPeakPoint();
    EXPECT_EQ(lexer->nextTokenPeak(false), kColonToken);
    EXPECT_TRUE(lexer->atEOF());
    EXPECT_EQ(lexer->tokenAtCursor(), kNoToken) << "behind the end";
}

TEST(LexerTokens, CountAndLogErrors)
{
    platform::LogCapture log;
    const auto lexer = lexerOn("abcdefgh");
    EXPECT_EQ(lexer->nextTokenPeak(true), kSyntaxError);
    EXPECT_EQ(lexer->nextTokenPeak(false), kSyntaxError);
    EXPECT_EQ(lexer->errorCount(), 2);
    EXPECT_EQ(log.lines(),
        (Names{"vCard Syntax Error, character: 11 : g", "vCard Syntax Error, character: 18 : g"}));
}

TEST(LexerTokens, AreSearchedThroughTheClassesThatMayStandBetween)
{
    EXPECT_TRUE(lexerOn("  :")->advanceToToken(kColonToken, kSpace));
    EXPECT_FALSE(lexerOn(" ;:")->advanceToToken(kColonToken, kSpace));
    EXPECT_TRUE(lexerOn(" ;END:")->advanceToToken(kColonToken, 0));
    EXPECT_FALSE(lexerOn("abcdefgh:")->advanceToToken(kColonToken, 0)) << "an error ends it";
    EXPECT_FALSE(lexerOn(" ")->advanceToToken(kColonToken, kSpace));
    EXPECT_TRUE(lexerOn("x")->advanceToToken(kNoToken, kSpace));
}

// A search within a line must never eat the lines behind it, nor count as an error that ends the card.
TEST(LexerTokens, WithinALineStopAtItsEnd)
{
    for (const bool wide : {false, true}) {
        const auto lexer = wide ? wideLexerOn("=abc\r\nTEL:1\r\n") : lexerOn("=abc\r\nTEL:1\r\n");
        EXPECT_FALSE(lexer->lineHasColon());
        EXPECT_EQ(lexer->nextTokenInLine(), kEqualsToken);
        EXPECT_EQ(lexer->nextTokenInLine(), kCarriageReturnToken);
        EXPECT_EQ(lexer->nextTokenInLine(), kCarriageReturnToken) << "it stays there";
        EXPECT_TRUE(lexer->advancePastEOL());
        EXPECT_TRUE(lexer->lineHasColon());
        EXPECT_EQ(lexer->errorCount(), 0);
    }
    const auto longer = lexerOn("abcdefgh\r\n");
    EXPECT_EQ(longer->nextTokenInLine(), kSyntaxError) << "seven characters before the end of the line";
    EXPECT_EQ(longer->errorCount(), 1);
    EXPECT_EQ(lexerOn("abcdefg\r\n")->nextTokenInLine(), kCarriageReturnToken);
    EXPECT_EQ(lexerOn("abc")->nextTokenInLine(), kEndOfData);
}

TEST(LexerTokens, KnowWhetherALineHasAColon)
{
    const std::pair<std::string, bool> cases[] = {{"TEL:", true}, {"TEL\n:", false}, {"TEL\r\n :", true},
        {"TEL\r\n\r\n :", true}, {"TEL\r\n\t:", false}, {"TEL\r\n \r\n X:", true}, {"TEL", false}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(lexerOn(text)->lineHasColon(), expected) << testing::PrintToString(text);
        EXPECT_EQ(wideLexerOn(text)->lineHasColon(), expected) << testing::PrintToString(text);
    }
}

// ---- skipping

TEST(LexerSkips, EndsOfLinesHoweverManyThereAre)
{
    for (const bool wide : {false, true}) {
        const auto lexer = wide ? wideLexerOn("ab\r\n\r\n\n\rcd") : lexerOn("ab\r\n\r\n\n\rcd");
        EXPECT_TRUE(lexer->advanceToEOL());
        EXPECT_EQ(lexer->tokenAtCursor(), kCarriageReturnToken);
        EXPECT_TRUE(lexer->advancePastEOL());
        EXPECT_EQ(lexer->tokenAtCursor(), kNoToken);
        EXPECT_FALSE(lexer->advanceToEOL());
        EXPECT_TRUE(lexer->atEOF());
    }
    const auto ending = lexerOn("ab\r\n");
    EXPECT_TRUE(ending->advanceToEOL());
    EXPECT_FALSE(ending->advancePastEOL()) << "the data ends with the line";
}

TEST(LexerSkips, SpacesAndSaysHowMany)
{
    EXPECT_EQ(lexerOn("   x")->advanceToString(), 3u);
    EXPECT_EQ(wideLexerOn("   x")->advanceToString(), 3u);
    EXPECT_EQ(lexerOn("\tx")->advanceToString(), 0u);
    EXPECT_EQ(lexerOn("   ")->advanceToString(), 0u) << "nothing comes behind them";
}

// ---- the width

TEST(LexerWidth, IsDecidedByTheFirstBytes)
{
    const std::string card = "BEGIN:VCARD\r\n";
    const std::string big = platform::toUTF16Bytes(card, ByteOrder::big);
    struct Case {
        const char* what;
        std::string data;
        bool wide;
        TokenCode first;
    };
    const Case cases[] = {
        {"bytes", card, false, kBeginToken},
        {"mark, big-endian", cardtext::utf16(card, ByteOrder::big), true, kBeginToken},
        {"mark, little-endian", cardtext::utf16(card, ByteOrder::little), true, kBeginToken},
        {"no mark, big-endian", big, true, kBeginToken},
        {"no mark, little-endian: not recognised", platform::toUTF16Bytes(card, ByteOrder::little), false,
            kNoToken},
        {"eight zeros in eleven are not enough", "x\0x\0x\0" + big.substr(6), false, kNoToken},
        {"nine are", std::string("\1x\1x", 4) + big.substr(4), true, kNoToken},
    };
    for (const auto& [what, data, wide, first] : cases) {
        const auto lexer = ZRVCardLexer::initWithData(data);
        ASSERT_TRUE(lexer) << what;
        EXPECT_EQ(lexer->isUnicode(), wide) << what;
        const TokenCode token = lexer->nextTokenPeak(false);
        EXPECT_TRUE(!first || token == first) << what;
    }
}

TEST(LexerWidth, NeedsElevenBytes)
{
    EXPECT_FALSE(ZRVCardLexer::initWithData("BEGIN:VCAR"));
    EXPECT_TRUE(ZRVCardLexer::initWithData("BEGIN:VCARD"));
    EXPECT_FALSE(ZRVCardLexer::initWithData(""));
}

// Half a character at the end has a low byte of zero, and nothing is read behind it.
TEST(LexerWidth, BearsHalfACharacterAtTheEnd)
{
    const std::string data = cardtext::utf16("\n\n\n\n\n\n", ByteOrder::big) + std::string(1, '\0');
    const auto odd = ZRVCardLexer::initWithData(data);
    EXPECT_EQ(odd->advancePastEOL(), true);
    EXPECT_EQ(odd->nextTokenPeak(false), kSemicolonToken) << "a NUL";
    EXPECT_TRUE(odd->atEOF());
    EXPECT_EQ(odd->nextTokenPeak(false), kEndOfData);
}

} // namespace
