// What becomes of each line: the canonical card and the report, side by side.
#include "interchange/vcard/prepare/Map.h"

#include "PreparedFile.h"
#include "interchange/Corpus.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

/// The lines between VERSION and END, and what is told without file and place. The canonical card is one that
/// stays as it is.
std::string outcome(std::string_view lines)
{
    const auto file = prepared("BEGIN:VCARD\r\n" + std::string(lines) + "END:VCARD\r\n");
    const auto again = prepared(file.text());
    EXPECT_EQ(again.text(), file.text());
    EXPECT_EQ(again.report, "");
    std::string text = file.text();
    std::erase(text, '\r');
    const auto start = text.find('\n', text.find("VERSION:3.0")) + 1;
    text = text.empty() ? text : text.substr(start, text.find("END:VCARD") - start);
    for (std::size_t at = 0; at < file.report.size(); at = file.report.find('\n', at) + 1) {
        const auto words = file.report.find(": ", file.report.find("line ", at)) + 2;
        text += "told: " + file.report.substr(words, file.report.find('\n', words) - words) + "\n";
    }
    return text;
}

TEST(Writer, TurnsCardsIntoWhatTheReaderKnowsAndTellsTheRest)
{
    for (const auto& card : test::casesIn(test::kTestsOfCards / "vcard/prepare/cards.txt"))
        EXPECT_EQ(outcome(card.input), card.expected) << card.message();
}

TEST(Writer, BearsBlanksAndEmptyLines)
{
    const std::pair<const char*, const char*> cases[] = {
        // A value that ends like a card's beginning gets a blank, which belongs to no value.
        {"NOTE;QUOTED-PRINTABLE:x=42EGIN:VCARD\n", "NOTE:xBEGIN:VCARD \n"},
        {"FN:a\nN:;;;;\nTEL;TYPE=HOME: \nNICKNAME:\n",
            "FN:a\ntold: N is empty (dropped)\ntold: TEL is empty (dropped)\n"
            "told: NICKNAME is empty (dropped)\n"},
        {"PHOTO;TYPE=JPEG;ENCODING=BASE64:\n QUJD\n REVG\n\nFN:a\n",
            "PHOTO;ENCODING=b;TYPE=JPEG:QUJDREVG\nFN:a\n"},
        {"ITEM7.X-SKYPE:skype:ana\nX-GTALK:a@b.c\nitem7.TEL:1\nX-SIP: \n",
            "item8.URL:skype:ana\nitem8.X-ZRLabel:Skype\nitem9.X-JABBER:a@b.c\n"
            "item9.X-ZRLabel:Google Talk\nitem7.TEL:1\ntold: X-SIP is empty (dropped)\n"},
    };
    for (const auto& [lines, expected] : cases)
        EXPECT_EQ(outcome("VERSION:3.0\n" + std::string(lines)), expected) << lines;
}

TEST(Writer, MakesNamesOfTextsThatShowThem)
{
    const std::pair<std::string, std::string> names[] = {{"Frank Dawson", "Dawson;Frank;;;"},
        {"Mr. John Q. Public\\, Esq.", "Public;John;Q.;Mr.;Esq."},
        {"Dr. Prof. Rene van der Harten PhD", "van der Harten;Rene;;Dr. Prof.;PhD"},
        {"Lima, Ana Maria", "Lima;Ana;Maria;;"}, {"Doe, John, M.D.", "Doe;John;;;M.D."},
        {"Yo Yo Ma", "Ma;Yo;Yo;;"}, {"Dr. Lima", "Lima;;;Dr.;"}, {"a\\nb", "b;a;;;"}};
    for (const auto& [shown, name] : names)
        EXPECT_EQ(outcome("VERSION:3.0\nFN:" + shown + "\n"),
            "FN:" + shown + "\nN:" + name + "\ntold: FN is the name, as N is missing or empty (repaired)\n");
}

TEST(Writer, MakesGroupsWhereTheyAreAskedFor)
{
    const auto bytes = card("4.0", "MEMBER:urn:uuid:1\nFN:The Does\nKIND:group\nMEMBER:mailto:a@b.c\nTEL:1\n")
        + card("4.0", "UID:urn:uuid:1\nFN:a\nCATEGORIES:b\\,c,d\nCATEGORIES:d, ,e\n")
        + card("4.0", "KIND:group\nTEL:1\n");
    Preparation preparation(bytes, {"f", 0, {.cards = true, .categories = true}});
    CanonicalCard card;
    ASSERT_TRUE(preparation.next(card));
    ASSERT_TRUE(card.group && !card.refusal);
    EXPECT_EQ(card.group->name, "The Does");
    EXPECT_THAT(card.group->members, testing::ElementsAre("urn:uuid:1", "mailto:a@b.c"));
    EXPECT_EQ(card.text, "");
    ASSERT_TRUE(preparation.next(card));
    EXPECT_FALSE(card.group);
    EXPECT_EQ(card.uid, "urn:uuid:1");
    EXPECT_THAT(card.categories, testing::ElementsAre("b,c", "d", "d", "e"));
    EXPECT_EQ(card.text.find("NOTE"), card.text.npos);
    ASSERT_TRUE(preparation.next(card));
    EXPECT_EQ(card.refusal, Finding::cardEmpty);
    EXPECT_EQ(preparation.report().text(),
        "f: card 1, line 1: TEL has no place (dropped)\n"
        "f: card 2, line 11: UID says nothing about the person (dropped)\n"
        "f: card 3, line 16: TEL has no place (dropped)\n"
        "f: card 3, line 16: nothing in the card can be kept: KIND:group (refused)\n");
}

TEST(Writer, TellsWhatTheCardItselfLacked)
{
    EXPECT_EQ(
        prepared(
            "BEGIN:VCARD\nFN:a\nBEGIN:VCARD\nVERSION:9\nFN:\xFC\nAGENT:BEGIN:VCARD\nEND:VCARD\nEND:VCARD\nx")
            .report,
        "f: card 1, line 1: END:VCARD is missing: FN:a (repaired)\n"
        "f: card 1, line 1: VERSION is missing, read as 3.0 (repaired)\n"
        "f: card 2, line 3: VERSION is unknown, read as 3.0 (repaired)\n"
        "f: card 2, line 6: a card inside the card (dropped)\n"
        "f: card 2, line 3: the character set is not named, read as: windows-1252 (repaired)\n"
        "f: line 9: text outside cards: x (dropped)\n");
}

TEST(Map, FindsTheRowOfAVersionInAnyCaseAndNoOther)
{
    for (const auto& row : mapTable())
        for (const auto& [bit, version] :
            {std::pair{kVersion21, Version::v21}, {kVersion30, Version::v30}, {kVersion40, Version::v40}})
            EXPECT_EQ(rowOf(row.name, version) == &row, (row.versions & bit) != 0) << row.name;
    EXPECT_EQ(rowOf("x-zrlabel", Version::v30), rowOf(kLabelName, Version::missing));
    for (const auto* name : {"", "X", "XX", "NOTES", "X-PHONETIC-MIDDLE-NAMES"})
        EXPECT_EQ(rowOf(name, Version::v30), nullptr) << name;
}

} // namespace
} // namespace vcard::prepare
