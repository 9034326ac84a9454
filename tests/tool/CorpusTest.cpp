// Cards of other programs: what the public standards say of them, and what comes out here.
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace {

using namespace test;

struct Row {
    const char* file;
    /// The name that the card is listed by; "#" for the number of cards.
    const char* card;
    /// A JSON pointer below "properties", or "picture" for the size of the picture.
    const char* field;
    const char* expected;
    /// What comes out where that is something else, for the reason in the comment; the day it does not
    /// differ any more, the row is wrong.
    const char* got = nullptr;
};

const Row table[] = {
    {"fkvcards-large1000.vcf", "#", "", "1000"},
    {"fkvcards-large1000.vcf", "Florine Liana Stehr", "Middle", "Liana"},

    {"kcontacts-vcard5.vcf", "Heiko Mustermann", "Nickname", "clown"},
    {"kcontacts-vcard5.vcf", "Heiko Mustermann", "Birthday", "1955-07-19"},
    {"kcontacts-vcard5.vcf", "Heiko Mustermann", "Phone/2/value", "0173 223344"},
    {"kcontacts-vcard5.vcf", "Heiko Mustermann", "picture", "3732"},
    {"kcontacts-vcard5.vcf", "Heiko Mustermann", "Note",
        "I'm a friendly note text,\nplease copy me to your address book...",
        // CATEGORIES, GEO, ROLE and names of other programs have no place but the note.
        "I'm a friendly note text,\nplease copy me to your address book...\nCATEGORIES: Friend\nGEO: "
        "19.283333;166.616669\nROLE: Developer\nX-KADDRESSBOOK-X-Anniversary: "
        "1982-07-07\nX-KADDRESSBOOK-X-AssistantsName: Mr. Smithers\nX-KADDRESSBOOK-X-Department: "
        "Edutainment\nX-KADDRESSBOOK-X-IMAddress: 122334455\nX-KADDRESSBOOK-X-ManagersName: Mr. "
        "Burnes\nX-KADDRESSBOOK-X-Office: 223 2nd stage\nX-KADDRESSBOOK-X-Profession: "
        "Clown\nX-KADDRESSBOOK-X-SpousesName: femal clown"},

    {"kcontacts-vcard9.vcf", "#", "", "1"},
    {"kcontacts-vcard9.vcf", "123ㄓㄕㄖbcdeαβγδαβγδαβγδαβγδαβγδαβγδαβㄤㄓㄕㄖ", "Note",
        "Длинный комментарий на русском языке, чтобы в результате получилась строка более 70 символов."},
    {"kcontacts-vcard12.vcf", "Good Looking", "picture", "159"},
    {"kcontacts-vcard12.vcf", "Good Looking", "Email/0/value", "goodlooking@example.com"},
    {"khard-photov3.vcf", "with photo v3", "picture", "123"},

    {"qtpim-example.vcf", "#", "", "9"},
    {"qtpim-example.vcf", "Aaron Gates", "Nickname", "Aaron nickname"},
    {"qtpim-example.vcf", "Aaron Gates", "Phone/2/label", "_$!<HomeFAX>!$_"},
    {"qtpim-example.vcf", "Aaron Gates", "Phone/4/value", "333334"},
    {"qtpim-example.vcf", "Aaron Gates", "picture", "2613"},

    {"fkvcards-german-1252.vcf", "Sören Täve Nüßlebaum", "Last", "Nüßlebaum"},
    {"fkvcards-german-1252.vcf", "Sören Täve Nüßlebaum", "Address/0/value/City", "Mößlitz"},
    {"fkvcards-german-1252.vcf", "Sören Täve Nüßlebaum", "Note", "",
        // A LABEL has no place but the note.
        "LABEL: Mößlitz"},
    {"fkvcards-ukrainian-1251.vcf", "Віталій Володимирович Кличко", "First", "Віталій"},
    {"fkvcards-ukrainian-1251.vcf", "Віталій Володимирович Кличко", "Address/0/value/City", "Київ"},
    {"fkvcards-utf8-hebrew.vcf", "#", "", "1"},

    {"rc-windows1252.vcf", "John Doë", "Last", "Doë"},
    {"rc-windows1252.vcf", "John Doë", "Organization", "roundcube.net"},
    {"rc-windows1252.vcf", "John Doë", "Email/1/value", "roundcube@gmail.com"},
    {"rc-windows1252.vcf", "John Doë", "Email/1/label", "_$!<Home>!$_"},
    {"rc-windows1252.vcf", "John Doë", "Address/0/value/Country", "Cayman Islands"},

    {"syncevo-vcard21.vcf", "#", "", "16"},
    {"syncevo-vcard21.vcf", "Mr. First ; special ; middle Last", "First", "First ; special ;"},
    {"syncevo-vcard21.vcf", "Umlaut Ä Ö Ü ß", "Suffix", "ß"},
    {"syncevo-vcard21.vcf", "JPG", "picture", "790"},
    {"syncevo-vcard21.vcf", "PNG", "picture", "516"},
    {"syncevo-vcard21.vcf", "GIF", "picture", "151"},
    {"syncevo-vcard21.vcf", "incomplete", "Email", ""},

    {"gammu-line-continuation.vcf", "Nikdovic Nikdo", "Note", "This ends with equal sign="},
    {"gammu-line-continuation.vcf", "Nikdovic Nikdo", "Phone/0/value", "5555 4444"},
    {"gammu-types.vcf", "Nikdovic Nikdo", "Last", "Nikdo"},
    {"gammu-types.vcf", "Nikdovic Nikdo", "Phone/2/value", "132456"},
    {"gammu-types.vcf", "Nikdovic Nikdo", "Phone/4/label", "_$!<Work>!$_"},
    {"gammu-types.vcf", "Nikdovic Nikdo", "Email/2/value", "michal3@cihar.com"},

    {"ezvcard-rfc2426.vcf", "#", "", "2"},
    // A card with a company and no N shows as the company, and FN has no place of its own.
    {"ezvcard-rfc2426.vcf", "Lotus Development Corporation", "Last", "Frank Dawson", ""},
    {"ezvcard-rfc2426.vcf", "Lotus Development Corporation", "Address/0/value/Street",
        "6544 Battleford Drive"},
    {"ezvcard-rfc2426.vcf", "Lotus Development Corporation", "Phone/1/label", "_$!<WorkFAX>!$_"},
    {"ezvcard-rfc2426.vcf", "Netscape Communications Corp.", "Email/0/value", "howes@netscape.com"},
};

/// One roster a file, made when it is first asked for.
class CorpusTest : public testing::Test {
protected:
    void SetUp() override
    {
        folder = sharedFolder("corpus");
        if (folder.empty())
            GTEST_SKIP() << "no corpus; name its folder in ROSTER_CORPUS";
    }

    struct Imported {
        ToolWorld world;
        Json cards;
    };

    Imported& imported(const std::string& file)
    {
        auto& imported = files[file];
        if (imported.cards.is_null()) {
            imported.world.tool({"import", folder + "/" + file});
            imported.cards = imported.world.cards();
        }
        return imported;
    }

    std::string result(const Row& row)
    {
        auto& [world, cards] = imported(row.file);
        if (row.card == std::string("#"))
            return std::to_string(cards.size());
        for (const auto& card : cards) {
            if (card["name"] != row.card)
                continue;
            if (row.field == std::string("picture"))
                return std::to_string(world.picture(card).size());
            const Json::json_pointer pointer(std::string("/properties/") + row.field);
            const Json value = card.contains(pointer) ? card.at(pointer) : Json("");
            return value.is_string() ? value.get<std::string>() : value.dump();
        }
        return "no such card in " + cards.dump();
    }

    std::string folder;
    std::map<std::string, Imported> files;
};

TEST_F(CorpusTest, ComesOutAsTheStandardsSayOrAsToldHere)
{
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.file) + " " + row.card + " " + row.field);
        const std::string got = result(row);
        EXPECT_EQ(got, row.got ? row.got : row.expected);
        EXPECT_EQ(got != row.expected, row.got != nullptr) << "a difference that is none";
    }
}

// No file crashes or hangs, and what cannot be read is refused in words.
TEST_F(CorpusTest, EveryFileIsReadOrRefused)
{
    const ToolWorld world;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        const auto ended = world.tool({"--json", "import", entry.path().string()});
        SCOPED_TRACE(entry.path().string() + "\n" + ended.err);
        EXPECT_LE(ended.status, 1);
        EXPECT_FALSE(Json::parse(ended.out, nullptr, false).is_discarded());
        EXPECT_EQ(ended.status == 1, !ended.err.empty());
    }
    EXPECT_EQ(world.tool({"check"}).status, 0);
}

} // namespace
