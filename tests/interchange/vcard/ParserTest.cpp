// How cards are told apart, opened and closed, and in which character set their lines are.
#include "CardText.h"
#include "interchange/Corpus.h"
#include "platform/run/Log.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <vector>

using namespace cardtext;
using Lines = std::vector<std::string>;

namespace {

/// A context whose answers a test chooses.
struct Surroundings : VCardReaderContext {
    std::optional<std::string> charset;
    std::optional<std::string> preferred21Encoding() const override { return charset; }
};

// ---- opening and closing

TEST(ParserFrame, TellsWhyACardIsRefused)
{
    struct Case {
        std::string data;
        std::string result;
        Lines log;
    };
    const Case cases[] = {
        {"BEGIN:VCARD\r\nN:Lima;Ana\r\nEND:VCARD\r\n", "First=Ana\nLast=Lima", {}},
        {"  begin : vcard junk\n\n\nN:Lima\nend : vcard", "Last=Lima", {}},
        {"BEGIN:VCARD", "(refused: Malformed space after EOL)", {"Malformed space after EOL"}},
        {"BEGIN:VCARD\r\n", "(refused: Malformed EOL)", {"Malformed EOL"}},
        {"BEGIN;:VCARD\r\n", "(refused: Malformed :)", {"Malformed :"}},
        {"BEGIN:;VCARD\r\n", "(refused: Malformed VCARD)", {"Malformed VCARD"}},
        {"\r\nBEGIN:VCARD\r\n", "(refused: Malformed BEGIN)", {"Malformed BEGIN"}},
        {"\xEF\xBB\xBF"
         "BEGIN:VCARD\r\n",
            "(refused: Malformed BEGIN)", {"vCard Syntax Error, character: 7 : I", "Malformed BEGIN"}},
        {"END:VCARD\r\nxx", "(refused: Malformed BEGIN)", {"Malformed BEGIN"}},
        {"           ", "(refused: no card before the end of the data)", {}},
        {"short", "(refused: Malformed BEGIN)", {"Malformed BEGIN"}},
        {"", "(no parser)", {}},
        {"BEGIN:VCARD\nN:Lima\n", "(refused: no END:VCARD where the card ends)", {}},
        {"BEGIN:VCARD\nN:Lima\nEND:VCAR\n", "(refused: no END:VCARD where the card ends)", {}},
        {"BEGIN:VCARD\nN:Lima\nEND\n:VCARD\n", "(refused: no END:VCARD where the card ends)", {}},
        {"BEGIN:VCARD\nN:Lima\nEND:VCARD", "Last=Lima", {}},
        // A line without a name ends the card.
        {"BEGIN:VCARD\nN:Lima\n:x\nEND:VCARD\n", "(refused: no END:VCARD where the card ends)",
            {"vCard Syntax Error, character: 27 : V"}},
        {"BEGIN:VCARD\nN:Lima\n \nEND:VCARD\n", "Last=Lima", {}},
    };
    for (const auto& [data, result, lines] : cases) {
        platform::LogCapture log;
        EXPECT_EQ(read(data), result) << testing::PrintToString(data);
        EXPECT_EQ(log.lines(), lines) << testing::PrintToString(data);
    }
}

TEST(ParserFrame, LeavesAPartOfABrokenCardWithItsSetter)
{
    Setter setter;
    const auto parser = ZRVCardParser::initWithData("BEGIN:VCARD\nN:Lima;Ana\n");
    EXPECT_FALSE(parser->importToValueSetter(setter));
    EXPECT_EQ(setter.text(), "First=Ana\nLast=Lima");
}

TEST(ParserFrame, ReadsCardsOneBehindTheOther)
{
    const std::string data = card("N:Lima\n") + "junk!\r\n" + card("FN:Bo Ek\n");
    const auto parser = ZRVCardParser::initWithData(data);
    Lines cards;
    while (!parser->atEnd()) {
        Setter setter;
        if (parser->importToValueSetter(setter))
            cards.push_back(setter.text());
    }
    EXPECT_EQ(cards, (Lines{"Last=Lima", "Last=Bo Ek"})) << "nothing of the first card is left in the second";
}

TEST(ParserFrame, ReadsEveryExampleThatComesWithTheLibrary)
{
    std::size_t cards = 0;
    for (const auto& file : std::filesystem::directory_iterator(test::kExampleCards)) {
        const std::string data = test::contentsOf(file.path());
        const auto parser = ZRVCardParser::initWithData(data);
        ASSERT_TRUE(parser) << file;
        for (; !parser->atEnd(); ++cards)
            if (Setter setter; !parser->importToValueSetter(setter))
                ADD_FAILURE() << file << ": " << parser->failureReason();
    }
    EXPECT_EQ(cards, 48U);
}

TEST(ParserFrame, ReadsUTF16OfBothOrdersAndWithoutAMark)
{
    const std::string text = card("N:Müller;山田\nTEL;TYPE=HOME:+49\\n1\nNOTE:a\n b\n");
    const std::string expected = "First=山田\nLast=Müller\nNote=ab\nPhone=[Home=+49\n1]";
    EXPECT_EQ(read(text), expected);
    EXPECT_EQ(read(utf16(text, platform::ByteOrder::big)), expected);
    EXPECT_EQ(read(utf16(text, platform::ByteOrder::little)), expected);
    EXPECT_EQ(read(platform::toUTF16Bytes(text, platform::ByteOrder::big)), expected);
}

TEST(ParserFrame, GivesTheFirstCardOfAFileAsADictionary)
{
    const std::string path = testing::TempDir() + "card.vcf";
    std::ofstream(path, std::ios::binary)
        << card("N:Lima\nORG:Acme\nEMAIL:a@example.com\n") << card("N:Ek\n");
    const auto dictionary = ZRVCardParser::dictionaryRepresentationOfVCardAtPath(path);
    EXPECT_EQ(textOf(dictionary),
        "{Email={Email=[Work=a@example.com]}, Last=Lima, Organization=Acme, ZRPersonFlags=1}");
    std::remove(path.c_str());
    EXPECT_TRUE(ZRVCardParser::dictionaryRepresentationOfVCardAtPath(path).isAbsent());
}

// ---- broken lines

void expectRead(const std::string& lines, const std::string& expected, const std::string& message)
{
    EXPECT_EQ(read(card(lines)), expected) << message;
    EXPECT_EQ(read(utf16(card(lines), platform::ByteOrder::little)), expected) << message << "in UTF-16";
}

TEST(ParserLines, BecomeWhatIsTold)
{
    for (const auto& lines : test::casesIn(test::kTestsOfCards / "vcard/reader.txt"))
        expectRead(lines.input, lines.expected.substr(0, lines.expected.rfind('\n')), lines.message());
    const std::pair<std::string, std::string> noText[] = {
        // Tabs do not fold: the next line is one of its own, here without a colon.
        {"NOTE:a\n\tb\nN:Lima\n", "Last=Lima\nNote=a"},
        {"NOTE:a\n\tab:c\nN:Lima\n", "Last=Lima\nNote=a\n\tab: c"},
        {"\n\n\nN:Lima\n", "Last=Lima"},
        {"QQQ:\nYYY: \nURL: \n", ""},
        {std::string("TEL\0HOME:1\n", 11), "Phone=[Home=1]"},
    };
    for (const auto& [lines, expected] : noText)
        expectRead(lines, expected, testing::PrintToString(lines));
    EXPECT_EQ(read(card("TEL;\xC3=x;HOME:1\n")), "Phone=[Home=1]");
}

TEST(ParserLines, WithoutAColonAreNoSyntaxErrors)
{
    std::string lines;
    for (int line = 0; line < 50; ++line)
        lines += "X=garbage that goes on and on\n";
    EXPECT_EQ(read(card(lines + "N:Lima\n")), "Last=Lima");
}

TEST(ParserLines, EndTheCardAfterTenSyntaxErrors)
{
    const auto lines = [](int errors) {
        std::string text;
        for (int error = 0; error < errors; ++error)
            text += "X=1234567:\n";
        return text + "TEL;HOME:1\nN:Lima\n";
    };
    EXPECT_EQ(read(card(lines(10))), "Last=Lima\nPhone=[Home=1]");
    EXPECT_EQ(read(card(lines(11))), "(refused: no END:VCARD where the card ends)");
}

// ---- parameters

// A parameter is kept for the next line with it, but not what it said.
TEST(ParserParameters, DoNotOutliveTheirLine)
{
    EXPECT_EQ(read(card("TEL;TYPE=HOME:1\nTEL;TYPE=CELL:2\nTEL:3\nitem1.TEL;TYPE=PAGER:4\n")),
        "Phone=[Home=1, Mobile=2, Other=3, Pager=4]");
    EXPECT_EQ(read(card("NOTE;QUOTED-PRINTABLE:=41\nTITLE:=41\n")), "JobTitle==41\nNote=A");
    EXPECT_EQ(
        read(card("TITLE;CHARSET=ISO-8859-1;QUOTED-PRINTABLE:=E9\nNICKNAME:é\n")), "JobTitle=é\nNickname=é");
}

TEST(ParserParameters, SayHowTheValueIsEncoded)
{
    const std::pair<std::string, std::string> cases[] = {
        {"NOTE;QUOTED-PRINTABLE:=41\n", "Note=A"},
        {"NOTE;quoted-printable:=41\n", "Note=A"},
        {"NOTE;ENCODING=QUOTED-PRINTABLE:=41=\n=42\n", "Note=AB"},
        {"NOTE;encoding=Quoted-Printable:=41\n", "Note=A"},
        {"NOTE;ENCODING=8BIT:=41\n", "Note==41"},
        // No value counts as the first one that is asked for.
        {"NOTE;ENCODING=:=41\n", "Note=A"},
        {"NOTE;CHARSET=:a+-b\n", "Note=ab"},
        {"NOTE;CHARSET=utf-7:a+-b\n", "Note=ab"},
        {"NOTE;CHARSET=ISO-8859-1:caf\xE9\n", "Note=café"},
        {"N;CHARSET=ISO-8859-1:\xE9\nFN:Ana\n", "Last=é"},
        {"N;CHARSET=x:a\nFN:Ana\n", "Last=Ana"},
        {"NOTE;CHARSET=WINDOWS-1251;QUOTED-PRINTABLE:=CF=F0=E8\n", "Note=При"},
        // Base64 is read away whatever the property.
        {"NOTE;BASE64:QUJD\n DEFG\nTITLE:x\n", "JobTitle=x"},
        {"NOTE;ENCODING=B:QUJD\n DEFG\nTITLE:x\n", "JobTitle=x"},
    };
    for (const auto& [lines, expected] : cases)
        EXPECT_EQ(read(card(lines)), expected) << lines;
}

// ---- the character set of the data

TEST(ParserEncoding, IsChosenByTheBeginningOfTheData)
{
    Surroundings none, cyrillic, unknown;
    cyrillic.charset = "windows-1251";
    unknown.charset = "x-none";
    const auto of = [](const char* begin, const char* version, const char* value) {
        return std::string(begin) + "\n" + version + "\nTITLE:x\nNOTE:" + value + "\nEND:VCARD\n";
    };
    struct Case {
        std::string data;
        const VCardReaderContext& context;
        std::string expected;
    };
    const Case cases[] = {
        {of("BEGIN:VCARD", "VERSION:3.0", "é"), cyrillic, "JobTitle=x\nNote=é"},
        // Not 3.0: ASCII, and what is none is absent.
        {of("BEGIN:VCARD", "VERSION:2.1", "é"), cyrillic, "JobTitle=x"},
        {of("BEGIN:VCARD", "VERSION:2.1", "e"), cyrillic, "JobTitle=x\nNote=e"},
        // No UTF-8: the preferred set, whatever the version.
        {of("BEGIN:VCARD", "VERSION:3.0", "\xCF\xF0\xE8"), cyrillic, "JobTitle=x\nNote=При"},
        {of("BEGIN:VCARD", "VERSION:2.1", "\xCF\xF0\xE8"), cyrillic, "JobTitle=x\nNote=При"},
        {of("BEGIN:VCARD", "VERSION:2.1", "\x8E"), none, "JobTitle=x\nNote=é"},
        {of("BEGIN:VCARD", "VERSION:2.1", "\x8E"), unknown, "JobTitle=x"},
        // The test is literal.
        {of("begin:VCARD", "VERSION:3.0", "\xC3\xA9"), none, "JobTitle=x\nNote=√©"},
        {of("BEGIN: VCARD", "VERSION:3.0", "\xC3\xA9"), none, "JobTitle=x\nNote=√©"},
        {of("BEGIN:VCARD", "VERSION: 3.0", "\xC3\xA9"), none, "JobTitle=x"},
    };
    for (const auto& [data, context, expected] : cases)
        EXPECT_EQ(read(data, context), expected) << testing::PrintToString(data);
}

} // namespace
