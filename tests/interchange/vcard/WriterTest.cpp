// What a card looks like: every byte of it, in each version.
#include "PlainCard.h"
#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "interchange/Corpus.h"
#include "interchange/vcard/Line40.h"
#include "interchange/vcard/Names40.h"
#include "interchange/vcard/VCardCharsets.h"
#include "interchange/vcard/WriterWorld.h"
#include "platform/text/Dates.h"
#include "platform/text/Utf.h"

#include <gmock/gmock.h>

namespace test {
namespace {

std::string withLineEnds(const std::string& lines)
{
    std::string text;
    for (const char c : lines)
        text += c == '\n' ? "\r\n" : std::string(1, c);
    return text;
}

/// The card between its frames; VERSION stands in front of it.
std::string body(const std::string& card, const std::string& back)
{
    const std::string front = "BEGIN:VCARD\r\n";
    EXPECT_TRUE(card.starts_with(front) && card.ends_with(back)) << card << "does not end in\n" << back;
    return card.substr(front.size(), card.size() - front.size() - back.size());
}

std::string urn(const ZRRecord& record)
{
    std::string id = record.uniqueId().substr(0, 36);
    for (char& c : id)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return "urn:uuid:" + id;
}

/// How a record's card ends in 3.0.
std::string ending30(const ZRRecord& record)
{
    std::string id = record.uniqueId();
    id.insert(id.find(':'), "\\");
    return "X-ZRUID:" + id + "\r\nEND:VCARD\r\n";
}

/// And in 4.0.
std::string ending40(const ZRRecord& record)
{
    std::string rev = platform::iso8601(record.valueForProperty(kZRModificationDateProperty).asDate());
    std::erase_if(rev, [](char c) { return c == '-' || c == ':'; });
    return "PRODID:-//Roster//Roster " + ZRFrameworkBundle().version() + "//EN\r\nUID:" + urn(record)
        + "\r\nREV:" + rev + "\r\nEND:VCARD\r\n";
}

TEST_F(WriterTest, WritesEveryByteOfEachVersion)
{
    for (const auto& card : casesIn(kTestsOfCards / "vcard/writer.txt")) {
        const auto person = PlainCard::read(card.input).addTo(roster);
        std::string written;
        const auto add = [&](const char* version, const std::string& text) {
            if (card.expected.find("VERSION:" + std::string(version)) != std::string::npos)
                written += text;
        };
        add("3.0", body(person->_vCardRepresentationAsString(), ending30(*person)));
        add("2.1", body(person->_21vCardRepresentationAsData(), "END:VCARD\r\n"));
        roster->save();
        add("4.0", body(version40(*person), ending40(*person)));
        EXPECT_EQ(written, withLineEnds(card.expected)) << card.message();
    }
}

TEST_F(WriterTest, SaysTheCharacterSetOfEachLineOf21)
{
    const auto lucja = person(roster,
        {{kZRLastNameProperty, "Müller"}, {kZRFirstNameProperty, "Łucja"},
            {kZRAIMInstantProperty, multiValue({{"für 2€", kZRAIMHomeLabel}})}});
    EXPECT_EQ(body(lucja->_vCardRepresentationAsString(), ending30(*lucja)),
        withLineEnds("VERSION:3.0\nN:Müller;Łucja;;;\nFN:Łucja Müller\nX-AIM;type=HOME;type=pref:für 2€\n"));
    EXPECT_EQ(body(lucja->_21vCardRepresentationAsData(), "END:VCARD\r\n"),
        withLineEnds("VERSION:2.1\nN;CHARSET=UTF-8:Müller;Łucja;;;\nFN;CHARSET=UTF-8:Łucja Müller\n"
                     "X-AIM;type=HOME;type=pref;CHARSET=windows-1252:f\xFCr 2\x80\n"));
}

TEST_F(WriterTest, NamesTheMembersOfAGroup)
{
    const auto ana = person(roster, {{kZRLastNameProperty, "Lima"}});
    const auto outer = group("Sea, boats"), inner = group("Inner");
    outer->addMember(*ana);
    outer->addMember(*ZRPerson::initWithUniqueId("odd", roster));
    outer->addSubgroup(*inner);
    roster->save();
    std::string card;
    zrAppendVCard40(*outer, card);
    EXPECT_EQ(body(card, ending40(*outer)),
        withLineEnds("VERSION:4.0\nKIND:group\nFN:Sea\\, boats\nMEMBER:" + urn(*ana)
            + "\nMEMBER:" + urn(*inner) + "\n"));
    EXPECT_THAT(version40(*ZRPerson::initWithUniqueId("odd; one", roster)),
        testing::HasSubstr("UID;VALUE=text:odd; one\r\n"));
}

// Lines of single values prefer the user's set, lines of entries ISO Latin 1.
TEST(WriterCharsets, AreTriedInTwoOrders)
{
    const struct {
        std::string preferred, text;
        std::string ofLine, lineBytes, ofData, dataBytes;
    } cases[] = {
        {"windows-1252", "plain", "", "plain", "", "plain"},
        {"windows-1252", "é", "windows-1252", "\xE9", "LATIN1", "\xE9"},
        {"windows-1252", "€", "windows-1252", "\x80", "windows-1252", "\x80"},
        {"koi8-r", "Я", "koi8-r", "\xF1", "koi8-r", "\xF1"},
        {"koi8-r", "é", "LATIN1", "\xE9", "LATIN1", "\xE9"},
        {"koi8-r", "€", "QUILLONROMAN", "\xDB", "QUILLONROMAN", "\xDB"},
        {"", "π", "QUILLONROMAN", "\xB9", "QUILLONROMAN", "\xB9"},
        {"windows-1252", "张", "UTF-8", "张", "UTF-8", "张"},
        {"Shift_JIS", "日", "Shift_JIS", "\x93\xFA", "Shift_JIS", "\x93\xFA"},
        {"Shift_JIS", "表", "UTF-8", "表", "UTF-8", "表"},
        {"no such set", "é", "LATIN1", "\xE9", "LATIN1", "\xE9"},
    };
    for (const auto& [preferred, text, ofLine, lineBytes, ofData, dataBytes] : cases) {
        std::string line = "TITLE";
        encodedLineForValue(line, text, preferred);
        EXPECT_EQ(line, "TITLE" + (ofLine.empty() ? "" : ";CHARSET=" + ofLine) + ":" + lineBytes + "\r\n")
            << preferred << ": " << text;
        std::optional<std::string> name;
        EXPECT_EQ(encodedDataForValue(text, name, preferred), dataBytes) << preferred << ": " << text;
        EXPECT_EQ(name.value_or(""), ofData) << preferred << ": " << text;
    }
}

// A line of 75 bytes stays; a further one begins with a blank, and no character is cut.
TEST(Line40, IsFoldedBetweenCharacters)
{
    for (const char* const letter : {"x", "é", "€", "😀", "\x80"})
        for (std::size_t size = 60; size < 240; ++size) {
            std::string value = std::string(size % 4, '-'), to;
            while (value.size() < size)
                value += letter;
            vcard::Line40(to, "NOTE").text(value);
            std::string unfolded, rest = to;
            for (std::size_t end; (end = rest.find("\r\n")) != rest.npos; rest.erase(0, end + 2)) {
                const bool isFirst = unfolded.empty();
                EXPECT_TRUE(end <= 75 && (isFirst || (end > 1 && rest[0] == ' '))) << to;
                EXPECT_TRUE(*letter == '\x80' || platform::isValidUTF8(rest.substr(0, end))) << to;
                EXPECT_TRUE(rest.size() == end + 2 || end > 71) << "folded early: " << to;
                unfolded += rest.substr(isFirst ? 0 : 1, end - (isFirst ? 0 : 1));
            }
            EXPECT_EQ(unfolded, "NOTE:" + value);
        }
}

// Readers take a line that runs into the next card for two.
TEST(Line40, NeverEndsInWhatBeginsACard)
{
    std::string to;
    vcard::Line40(to, "NOTE").text("x Begin:VCard");
    EXPECT_EQ(to, "NOTE:x Begin:VCar\r\n d\r\n");
}

TEST(Pictures, AreKnownByTheirFirstBytes)
{
    const std::pair<std::string_view, const char*> cases[] = {{"\xFF\xD8\xFF\xE0", "image/jpeg"},
        {"\x89PNG\r\n\x1A\n", "image/png"}, {"GIF89a", "image/gif"}, {{"MM\0*", 4}, "image/tiff"},
        {{"II*\0", 4}, "image/tiff"}, {"BM1", "image/bmp"}, {"RIFF1234WEBP", "image/webp"},
        {"RIFF1234WAVE", "application/octet-stream"}, {"", "application/octet-stream"}};
    for (const auto& [bytes, type] : cases)
        EXPECT_EQ(vcard::mediaTypeOfPicture(bytes), type);
}

} // namespace
} // namespace test
