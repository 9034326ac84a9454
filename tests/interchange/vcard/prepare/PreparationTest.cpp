// What holds for whole files: canonical cards stay as they are, and a damaged card harms no other.
#include "PreparedFile.h"

#include "interchange/Corpus.h"
#include "platform/text/Utf.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace vcard::prepare {
namespace {

std::string canonicalCard(int number)
{
    const auto name = std::to_string(number);
    return card("3.0",
        "N:Lima " + name + ";Ana;;;\r\nFN:Ana Lima " + name
            + "\r\nORG:Bo\\, Ek;Äußeres\r\nitem1.TEL;TYPE=HOME,FAX;TYPE=pref:+1 " + name
            + "\r\nitem1.X-ZRLabel:Boat\r\nEMAIL;TYPE=WORK:a" + name
            + "@b.c\r\nADR;TYPE=HOME:;;1\\nWay;Town;;12;Land\r\nURL:http://x/;y,z\r\nBDAY:1970-05-01\r\n"
              "X-ZRShowAs:COMPANY\r\nPHOTO;ENCODING=b;TYPE=JPEG:QUJDREVGRw==\r\nNOTE:a\\\\b\\nc\\;d, "
              "e\\,f\r\n");
}

TEST(Preparation, ReadsWideBytesAsTheSameCards)
{
    const auto bytes = canonicalCard(1) + canonicalCard(2);
    for (const auto order : {platform::ByteOrder::little, platform::ByteOrder::big})
        EXPECT_EQ(prepared(platform::toUTF16Bytes(bytes, order)).text(), bytes);
    EXPECT_EQ(prepared("\xEF\xBB\xBF" + bytes).text(), bytes);
}

// Two halves of a character in two lines once made the card look like UTF-8.
TEST(Preparation, SeesBytesOfNeighbouringLinesApart)
{
    EXPECT_EQ(prepared(card("2.1", "FN:\xC3\n\xBC: x\n"), 0).text(), card("3.0", "FN:Ã\r\nNOTE:¼: x\r\n"));
}

TEST(Preparation, HandsOutEachCardWithItsPlaceAndName)
{
    Preparation preparation("x\n\nBEGIN:VCARD\nVERSION:3.0\nFN:a\nEND:VCARD\nBEGIN:VCARD\nFN:b\n", {"f", 0});
    CanonicalCard card;
    ASSERT_TRUE(preparation.next(card));
    EXPECT_EQ(card.number, 1U);
    EXPECT_EQ(card.line, 3U);
    EXPECT_EQ(card.firstLine, "FN:a");
    EXPECT_FALSE(card.refusal);
    EXPECT_EQ(preparation.bytesRead(), 42U);
    ASSERT_TRUE(preparation.next(card));
    EXPECT_EQ(card.number, 2U);
    EXPECT_EQ(card.line, 7U);
    EXPECT_EQ(card.firstLine, "FN:b");
    EXPECT_EQ(card.refusal, Finding::cardCutOff);
    EXPECT_EQ(card.text, "");
    EXPECT_FALSE(preparation.next(card));
}

struct Damage {
    const char* name;
    std::string (*inflict)(std::string card, std::size_t at);
    bool isAlwaysTold = false;
};

const Damage kDamages[] = {
    {"cut off", [](std::string card, std::size_t at) { return card.substr(0, at); }, true},
    {"beginning lost", [](std::string card, std::size_t at) { return card.substr(at); }, true},
    {"NULs", [](std::string card, std::size_t at) { return card.insert(at, 7, '\0'); }},
    {"a NUL", [](std::string card, std::size_t at) { return card[at] = '\0', card; }},
    {"no UTF-8", [](std::string card, std::size_t at) { return card[at] = '\xFF', card; }},
    {"half a character", [](std::string card, std::size_t at) { return card.insert(at, "\xFE\xC3"); }},
    {"bytes lost", [](std::string card, std::size_t at) { return card.erase(at, 30); }},
    {"bytes doubled", [](std::string card, std::size_t at) { return card.insert(at, card.substr(at, 25)); }},
    {"a line break", [](std::string card, std::size_t at) { return card.insert(at, "\r\n"); }},
    {"a soft break", [](std::string card, std::size_t at) { return card.insert(at, "=\r\n"); }},
    {"a fold", [](std::string card, std::size_t at) { return card.insert(at, "\r\n "); }},
    {"a long line", [](std::string card, std::size_t at) { return card.insert(at, 100'000, 'x'); }},
    {"a quote", [](std::string card, std::size_t at) { return card.insert(at, ";X=\""); }},
    {"cut off in a soft break",
        [](std::string card, std::size_t at) {
            return card.substr(0, at) + "\r\nX;QUOTED-PRINTABLE:a=\r\n";
        }},
    {"cut off in base64",
        [](std::string card, std::size_t at) { return card.substr(0, at) + "\r\nX;BASE64:\r\n QQ\r\n"; }},
    {"an AGENT",
        [](std::string card, std::size_t at) { return card.insert(at, "\r\nAGENT:BEGIN:VCARD\r\n"); }},
    {"a BEGIN", [](std::string card, std::size_t at) { return card.insert(at, "\r\nBEGIN:VCARD\r\n"); },
        true},
    {"an END", [](std::string card, std::size_t at) { return card.insert(at, "\r\nEND:VCARD\r\n"); }, true},
    {"a backslash", [](std::string card, std::size_t at) { return card[at] = '\\', card; }},
};

/// Five good cards with a damaged one among them: the five must come out as they are, and each piece of the
/// sixth must come out as a card with its number, or be named in the report by a line of its own.
void checkDamage(const std::string& damaged, int place, bool isAlwaysTold)
{
    std::string front, back;
    for (int number = 1; number <= 6; ++number)
        if (number != place)
            (number < place ? front : back) += canonicalCard(number);
    const auto firstLine = static_cast<std::size_t>(std::ranges::count(front, '\n')) + 1;
    const auto file = prepared(front + damaged + back);
    std::string others;
    std::size_t pieces = 0;
    for (const auto& card : file.cards) {
        if ((front + back).find(card.text) != std::string::npos && !card.text.empty()) {
            others += card.text;
            continue;
        }
        ++pieces;
        EXPECT_GE(card.line, firstLine);
        EXPECT_FALSE(card.firstLine.empty());
    }
    EXPECT_EQ(others, front + back);
    EXPECT_TRUE(pieces > 0 || file.report.find("text outside cards") != file.report.npos || damaged.empty());
    EXPECT_TRUE(!isAlwaysTold || !file.report.empty());
}

TEST(Preparation, KeepsTheHarmOfADamagedCardToThatCard)
{
    constexpr std::size_t positions = 40;
    const auto whole = canonicalCard(9);
    for (const auto& [name, inflict, isAlwaysTold] : kDamages)
        for (std::size_t position = 0; position < positions; ++position)
            for (int place = 1; place <= 6; ++place) {
                const auto at = position * whole.size() / positions;
                SCOPED_TRACE(testing::Message() << name << " at byte " << at << ", card " << place);
                const bool isInside = at > 0 && at < whole.find("END:VCARD");
                checkDamage(inflict(whole, at), place, isAlwaysTold && isInside);
                if (HasFailure())
                    return;
            }
}

std::string repeated(std::string_view piece, std::size_t times)
{
    std::string all;
    while (times-- > 0)
        all += piece;
    return all;
}

// Marks, quotes, names of sets, folds: what looks ahead or back could cost the square of the length.
TEST(Preparation, TakesTimeInProportionToTheInput)
{
    for (const auto* piece :
        {"BEGIN:VCARD\n", "END:VCARD\n", "AGENT:BEGIN:VCARD\n", "\r", " \n", "\"", ";", "=\n",
            "X;CHARSET=windows-1251:\xFF\n", "N;QUOTED-PRINTABLE:=FF\n", "N:a;b;c\n", "a:BEGIN:VCARD"}) {
        const auto file =
            prepared("BEGIN:VCARD\nX;QUOTED-PRINTABLE:" + repeated(piece, 200'000) + "\nEND:VCARD\n");
        EXPECT_GE(file.cards.size(), 1U) << piece;
    }
}

// What is joined at the end of a card could copy or search all of it for each of its lines.
TEST(Preparation, TakesTimeInProportionToTheLinesOfOneCard)
{
    for (const auto* piece :
        {"a.X-LABEL:b\n", "X-SKYPE:b\n", "ADR:;;;;;;UK\n", "TEL;PREF=1:2\n", "TEL;TYPE=PREF:2\n",
            "NICKNAME:a,b\n", "NOTE:a\n", "TEL;ALTID=1:2\n", "a.ADR:;;;;;;UK\n", "ORG:a;b;c\n"}) {
        const auto file =
            prepared("BEGIN:VCARD\nFN:c d\n" + repeated(piece, kMaximumCardLines - 3) + "END:VCARD\n");
        ASSERT_EQ(file.cards.size(), 1U) << piece;
        EXPECT_FALSE(file.cards.front().refusal) << piece;
    }
}

TEST(Preparation, PassesTheCorpusWholeAndLeavesItsCanonicalCardsAsTheyAre)
{
    const auto corpus = test::corpusFolder();
    if (!std::filesystem::exists(corpus))
        GTEST_SKIP() << "no cards of other programs at " << corpus;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file())
            continue;
        SCOPED_TRACE(entry.path().filename());
        ++files;
        const auto once = prepared(test::contentsOf(entry.path())).text();
        const auto twice = prepared(once);
        EXPECT_EQ(twice.text(), once);
        EXPECT_EQ(twice.report, "");
    }
    EXPECT_GT(files, 80U);
}

} // namespace
} // namespace vcard::prepare
