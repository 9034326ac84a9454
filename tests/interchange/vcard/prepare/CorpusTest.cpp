// Files that other programs wrote, read where they lie; nothing of them is in the project.
#include "PreparedFile.h"

#include "interchange/vcard/prepare/Values.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vcard::prepare {
namespace {

namespace fs = std::filesystem;

fs::path corpus()
{
    const char* named = std::getenv("ROSTER_CORPUS");
    return named ? named : ROSTER_CORPUS_BESIDE;
}

std::string contentOf(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Corpus : public testing::Test {
protected:
    void SetUp() override
    {
        if (!fs::exists(corpus() / "INDEX.md"))
            GTEST_SKIP() << "no shared files at " << corpus();
    }
};

TEST_F(Corpus, PassesWholeAndItsCanonicalCardsStayAsTheyAre)
{
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(corpus())) {
        if (!entry.is_regular_file())
            continue;
        SCOPED_TRACE(entry.path().filename());
        ++files;
        const auto once = prepared(contentOf(entry.path())).text();
        const auto twice = prepared(once);
        EXPECT_EQ(twice.text(), once);
        EXPECT_EQ(twice.report, "");
    }
    EXPECT_GT(files, 80U);
}

TEST_F(Corpus, GivesItsCards)
{
    const struct {
        const char* file;
        std::size_t cards;
    } cases[] = {{"fkvcards-large1000.vcf", 1000}, {"syncevo-vcard21.vcf", 16}, {"qtpim-example.vcf", 9},
        {"vcardnet-v21.vcf", 2}, {"ezvcard-rfc2426.vcf", 2}, {"jeroen-contacts.vcf", 5},
        {"nuovo-agent.vcf", 1}};
    for (const auto& [file, count] : cases) {
        const auto cards = prepared(contentOf(corpus() / file)).cards;
        EXPECT_EQ(cards.size(), count) << file;
        for (const auto& card : cards)
            EXPECT_FALSE(card.refusal) << file << " card " << card.number;
    }
    for (const auto& entry : fs::directory_iterator(corpus()))
        if (entry.path().extension() == ".bin") {
            EXPECT_EQ(prepared(contentOf(entry.path())).text(), "") << entry.path();
        }
}

TEST_F(Corpus, HasTheTextThatItsWritersMeant)
{
    const struct {
        const char* file;
        const char* text;
    } cases[] = {
        {"kcontacts-vcard5.vcf", ":;;Buehlauer Strasse 45;Dresden;Sachsen;01327;Germany\r\n"},
        {"kcontacts-vcard5.vcf",
            "NOTE:I'm a friendly note text,\\nplease copy me to your address book...\\n"},
        {"kcontacts-vcard9.vcf", "ㄤㄓㄕㄖ;;;;\r\n"},
        {"kcontacts-vcard9.vcf",
            "NOTE:Длинный комментарий на русском языке\\, чтобы в результате получилась строка более 70 "
            "символов.\r\n"},
        {"kcontacts-vcard4.vcf", "ORG:Ximian, Inc.\r\n"},
        {"kcontacts-vcard7.vcf", "\\nHerecomesyetanotherline\r\n"},
        {"kcontacts-vcard8.vcf", "NOTE:line one\\nline two\\nline three\\n\r\n"},
        {"khard-photov3.vcf",
            "NOTE:From the RFC: ENCODING must be \"b\" (which enforces base64 encodeddata)\\, TYPE"},
        {"qtpim-example.vcf", "TEL;TYPE=HOME;TYPE=FAX:333332\r\n"},
        {"qtpim-example.vcf", "ADR;TYPE=WORK;TYPE=POSTAL:PO Box;Extended Address;Work Street Address;"},
        {"fkvcards-german-1252.vcf",
            "N:Nüßlebaum;Sören;Täve\r\nADR:;;;Mößlitz;;;\r\nNOTE:LABEL: Mößlitz\r\n"},
        {"fkvcards-ukrainian-1251.vcf", "N:Кличко;Віталій;Володимирович\r\nADR:;;;Київ;;;\r\n"},
        {"fkvcards-utf8-hebrew.vcf", "FN:אפרים קישון\r\n"},
        {"fkvcards-outlook-ansi.vcf", ":;;Lämmerweg 12;Kleindorf;;98765;Deutschland\r\n"},
        {"rc-windows1252.vcf", "N:Doë;John;;;\r\n"},
        {"rc-windows1252.vcf", "EMAIL;TYPE=INTERNET;TYPE=HOME;TYPE=pref:roundcube@gmail.com\r\n"},
        {"syncevo-vcard21.vcf", "N:Last;First \\; special \\;;middle;Mr.;\r\n"},
        {"syncevo-vcard21.vcf", "N:Ü;Ä;Ö;Umlaut;ß\r\n"},
        {"syncevo-vcard21.vcf",
            "This is line 1.\\nLine 2.\\n\\nLine breaks in vcard 2.1 are encoded as =0D=0A.\\nThat means"},
        {"gammu-line-continuation.vcf",
            "N:Nikdo;Nikdovic\r\nTEL;TYPE=WORK:5555 4444\r\nNOTE:This ends with equal sign=\r\n"},
        {"gammu-types.vcf",
            "N:Nikdo;Nikdovic\r\nTEL;TYPE=PREF;TYPE=CELL:444444444\r\n"
            "TEL;TYPE=CELL;TYPE=PREF:333333333\r\nTEL;TYPE=PREF;TYPE=CELL:132456\r\n"
            "TEL;TYPE=WORK:555555555\r\nTEL;TYPE=WORK:97897987\r\n"},
        {"ezvcard-rfc2426.vcf",
            "ADR;TYPE=WORK,POSTAL,PARCEL:;;6544 Battleford Drive;Raleigh;NC;27613-3502;U.S.A.\r\n"},
        {"ezvcard-outlook-2003.vcf", "ORG:Company\\, The;TheDepartment\r\n"},
        {"fkvcards-large1000.vcf", "FN:Kasey Schmitt\r\n"},
        {"vcardnet-v21.vcf",
            "TEL;TYPE=WORK;TYPE=VOICE:+1 234 567 8900\r\nTEL;TYPE=HOME;TYPE=VOICE:+1 234 567 8901\r\n"},
    };
    for (const auto& [file, text] : cases)
        EXPECT_THAT(prepared(contentOf(corpus() / file)).text(), testing::HasSubstr(text)) << file;
}

TEST_F(Corpus, HasItsPicturesWhole)
{
    const struct {
        const char* file;
        std::vector<std::size_t> sizes;
    } cases[] = {{"kcontacts-vcard5.vcf", {3732}}, {"kcontacts-vcard12.vcf", {159}},
        {"khard-photov3.vcf", {123}}, {"syncevo-vcard21.vcf", {790, 516, 151}},
        {"tb-v3-binary-jpeg.vcf", {5321}}};
    for (const auto& [file, sizes] : cases) {
        std::vector<std::size_t> found;
        const auto text = prepared(contentOf(corpus() / file)).text();
        for (auto at = text.find("\nPHOTO;"); at != text.npos; at = text.find("\nPHOTO;", at + 1)) {
            const auto value = text.find(':', at) + 1;
            const auto bytes = decodedBase64(text.substr(value, text.find('\r', value) - value));
            EXPECT_TRUE(
                bytes.starts_with("\x89PNG") || bytes.starts_with("\xFF\xD8") || bytes.starts_with("GIF"))
                << file;
            found.push_back(bytes.size());
        }
        EXPECT_EQ(found, sizes) << file;
    }
}

} // namespace
} // namespace vcard::prepare
