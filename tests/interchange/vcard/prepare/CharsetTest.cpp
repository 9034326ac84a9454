// Text comes out as UTF-8, whatever it was written in.
#include "interchange/vcard/prepare/Charset.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

constexpr TextEncoding kWindows1251 = platform::kCodePageEncodings + 1251;

TEST(Charset, OfACardIsTheFirstThatFitsAllItsBytes)
{
    const struct {
        const char* file;
        const char* card;
        TextEncoding preferred;
        const char* value;
        const char* text;
        bool guessed;
    } cases[] = {
        {"", "N:abc", 0, "abc", "abc", false},
        {"", "N:\xC3\xBC", kWindows1251, "\xC3\xBC", "ü", false},
        // Named by another line of the card, then by another card.
        {"", "N:\xCA\nLABEL;CHARSET=windows-1251:x", 0, "\xCA", "К", false},
        {"NOTE;CHARSET=\"windows-1251\":x", "N:\xCA", 0, "\xCA", "К", false},
        {"NOTE;CHARSET=ISO-8859-1:x", "N:\xCA\nLABEL;charset=windows-1251;HOME:x", 0, "\xCA", "К", false},
        // UTF-8 cannot be meant, and an unknown name says nothing.
        {"", "N;CHARSET=UTF-8:\xFC\nX;CHARSET=klingon:x", 0, "\xFC", "ü", true},
        {"", "N:\xCA", kWindows1251, "\xCA", "К", true},
        {"", "N:\x80", 0, "\x80", "€", true},
        // No meaning in windows-1252: the last resort.
        {"", "N:\x81", 0, "\x81", "\xC2\x81", true},
        // Seven bits in the card, more once decoded.
        {"", "N;QUOTED-PRINTABLE:=FC", 0, "\xFC", "ü", true},
        {"", "N;QUOTED-PRINTABLE:=CA\nX;CHARSET=windows-1251:x", 0, "\xCA", "К", false},
    };
    for (const auto& [file, card, preferred, value, text, guessed] : cases) {
        Charsets charsets(file, preferred);
        charsets.beginCard(card);
        EXPECT_EQ(charsets.text(value, ""), text) << file << "|" << card;
        EXPECT_EQ(charsets.guess() != 0, guessed) << file << "|" << card;
    }
}

TEST(Charset, OfALineWinsWhereTheValueFitsIt)
{
    Charsets charsets("", 0);
    charsets.beginCard("N:\xC3\xBC");
    EXPECT_EQ(charsets.text("\xCA", "windows-1251"), "К");
    EXPECT_EQ(charsets.text("\xC3\xBC", "US-ASCII"), "ü");
    EXPECT_EQ(charsets.text("\xC3\xBC", "klingon"), "ü");
    // Seven-bit sets are no plain text.
    EXPECT_EQ(charsets.text("+APw-", "UTF-7"), "ü");
}

TEST(Charset, ChoosesAnewForEachCard)
{
    Charsets charsets("", 0);
    charsets.beginCard("N;CHARSET=windows-1251:\xCA");
    EXPECT_EQ(charsets.text("\xCA", ""), "К");
    charsets.beginCard("N:\xCA");
    EXPECT_EQ(charsets.text("\xCA", ""), "Ê");
    charsets.beginCard("N:a");
    EXPECT_EQ(charsets.guess(), 0U);
}

} // namespace
} // namespace vcard::prepare
