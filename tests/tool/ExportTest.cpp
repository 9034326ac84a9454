// What `roster export` writes, where to, and what it says of what stays behind.
#include "tool/FullCard.h"
#include "tool/PeopleWorld.h"

#include <map>

namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

/// The rows of a table as another program reads them, which is strict.
Json tableIn(const std::string& text)
{
    EXPECT_TRUE(text.ends_with("\r\n"));
    const auto read = run({.words = {"/usr/bin/python3", "-c",
                               "import csv, json;"
                               "print(json.dumps(list(csv.reader(open(0, newline=''), strict=True))))"},
        .input = text});
    EXPECT_EQ(read.err, "");
    return Json::parse(read.out, nullptr, false);
}

int countOf(const std::string& text, std::string_view line)
{
    int count = 0;
    for (std::size_t at = 0; (at = text.find(line, at)) != text.npos; ++at)
        ++count;
    return count;
}

class ExportTest : public PeopleWorld {
protected:
    void SetUp() override
    {
        PeopleWorld::SetUp();
        fs::create_directory(world.path("out"));
    }

    std::vector<std::string> filesBeside() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(world.path("out")))
            names.push_back(entry.path().filename().string());
        return names;
    }
};

TEST_F(ExportTest, ComesBackAsItWas)
{
    const Json before = world.cards();
    for (const std::string format : {"vcard3", "vcard4"}) {
        const auto exported = done("export --with-notes --format " + format).out;
        ToolWorld other;
        ASSERT_EQ(other.tool("import " + other.write("all.vcf", exported)).status, 0);
        const Json after = other.cards();
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t i = 0; i < before.size(); ++i)
            EXPECT_EQ(withoutIds(after[i]), withoutIds(before[i])) << format;
    }
}

TEST_F(ExportTest, IsOfWhomItIsAskedFor)
{
    done("group make Friends");
    done("group add Friends Lima Dubois");
    const std::pair<std::string, std::string> cases[] = {
        {"", names("list")},
        {"porto", "Ben Ek, Ana Lima"},
        {"ana porto met", "Ben Ek"},
        {"--group friends", "Chloé Dubois, Ana Lima"},
        {"--group Friends porto", "Ana Lima"},
        {world.idOf("Ek").substr(0, 8), "Ben Ek"},
    };
    for (const auto& [line, wanted] : cases)
        EXPECT_EQ(namesIn(Json::parse(done("export --format json " + line).out)), wanted) << line;
}

TEST_F(ExportTest, WritesJsonAsAListDoes)
{
    const std::string listed = done("--json list").out;
    EXPECT_EQ(done("export --format json").out, listed);
    EXPECT_EQ(done("--json export").out, listed);
    const Json bare = Json::parse(done("export --format json --no-notes Ek").out);
    EXPECT_FALSE(bare[0]["properties"].contains("Note"));
    done("remove 'Ana Lima' 'Ben Ek' 'Chloé Dubois' 'Dan Analund' 'Anvil Works'");
    EXPECT_EQ(done("export --format json").out, "[]\n");
    EXPECT_EQ(done("export").out, "");
}

TEST_F(ExportTest, WritesGroupsAsCardsOnlyWhereTheyAreACard)
{
    for (const char* line : {"group make Friends", "group make Family", "group add Friends Lima"})
        done(line);
    const std::pair<std::string, std::vector<int>> cases[] = {
        {"", {5, 0, 0}},
        {"--with-groups", {7, 2, 1}},
        {"--with-groups --group Friends", {2, 1, 1}},
    };
    for (const auto& [line, counts] : cases) {
        const auto cards = done("export --format vcard4 " + line).out;
        EXPECT_EQ((std::vector{countOf(cards, "BEGIN:VCARD"), countOf(cards, "KIND:group"),
                      countOf(cards, "MEMBER:")}),
            counts)
            << line;
    }
    ToolWorld other;
    const auto all = done("export --format vcard4 --with-groups").out;
    ASSERT_EQ(other.tool("import --groups " + other.write("all.vcf", all)).status, 0);
    EXPECT_EQ(namesIn(other.json("list --group Friends")), "Ana Lima");
    EXPECT_EQ(other.cards().size(), 5U) << "a group is nobody";
    EXPECT_THAT(done("export --format vcard4 Anvil").out, HasSubstr("\r\nKIND:org\r\n"));
}

TEST_F(ExportTest, PutsAFileInPlaceWholeOrNotAtAll)
{
    const std::string file = world.write("out/cards.vcf", "former"), link = world.path("out/link");
    EXPECT_EQ(world.tool("export --strict --format vcard21 -o " + file).status, 1);
    EXPECT_EQ(contentsOf(file), "former");
    EXPECT_EQ(done("export -o " + file).out, "5 cards in " + file + "\n");
    EXPECT_EQ(contentsOf(file), done("export -o -").out);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_THAT(filesBeside(), testing::ElementsAre("cards.vcf"));

    // A link is followed; what is no plain file is written as it is.
    fs::create_symlink("cards.vcf", link);
    done("export -o " + link + " Ek");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_THAT(contentsOf(file), HasSubstr("Ben Ek"));
    expectRefusals({{"export -o /dev/full", 1, "cannot write /dev/full: No space left"},
        {"export -o " + world.path("out"), 1, "cannot write " + world.path("out")},
        {"export -o " + world.path("none/x"), 1, "cannot write"}});
    EXPECT_EQ(filesBeside().size(), 2U);
}

// The disk is full behind the first cards: nothing is left, and what was there stays.
TEST_F(ExportTest, LeavesNothingWhenItFailsHalfWay)
{
    const std::string file = world.write("out/cards.vcf", "former");
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += simpleCard("Person" + std::to_string(i), "+1 555");
    done("import " + world.write("many.vcf", many));
    // More than SQLite's own files need, and less than the cards.
    const auto ended = run({{"/bin/sh", "-c",
        "ulimit -f 100; trap '' XFSZ; exec " + std::string(ROSTER_TOOL) + " --roster " + world.roster()
            + " export --format json -o " + file}});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("cannot write " + file));
    EXPECT_EQ(contentsOf(file), "former");
    EXPECT_THAT(filesBeside(), testing::ElementsAre("cards.vcf"));
}

TEST_F(ExportTest, SaysWhatStaysBehind)
{
    // A note of Ben Ek, and a company: a vCard 2.1 has no place for that.
    const std::string held = "roster: held back: notes of 1 card\n";
    const std::pair<std::string, std::string> cases[] = {
        {"export", held},
        {"export --with-notes", ""},
        {"--default ZRIncludeNotesInVCard=true export", ""},
        {"--default ZRIncludeNotesInVCard=true export --no-notes", held},
        {"export --with-notes --format vcard21", "roster: not carried by vcard21: ZRPersonFlags (1 card)\n"},
    };
    for (const auto& [line, told] : cases)
        EXPECT_EQ(done(line).err, told) << line;
    EXPECT_THAT(done("export --strict").out, HasSubstr("Anvil"));
}

/// A roster with the card that has everything, of Me.
class FullExportTest : public ToolTest {
protected:
    void SetUp() override { addFullCard(world.roster()); }
};

TEST_F(FullExportTest, HoldsBackWhatMeKeepsPrivate)
{
    const auto ended = done("export");
    EXPECT_THAT(ended.err,
        AllOf(HasSubstr("held back: notes of 1 card, pictures of 1 card, 2 fields of Me\n"),
            HasSubstr("not carried by vcard3: x.bytes (1 card), x.day (1 card)")));
    EXPECT_THAT(ended.out,
        AllOf(Not(HasSubstr("555 0102")), Not(HasSubstr("BDAY")), HasSubstr("CATEGORIES:Friends")));
    const auto whole = done("export --with-notes --with-photos");
    EXPECT_THAT(whole.out, AllOf(HasSubstr("PHOTO;BASE64:\r\n  cGljdHVyZQ=="), HasSubstr("NOTE:One")));
    EXPECT_THAT(whole.err, HasSubstr("held back: 2 fields of Me\n"));
    EXPECT_EQ(world.tool("export --strict").status, 1);
}

TEST_F(FullExportTest, NamesEachThingThatAFormatCannotCarry)
{
    const auto notCarried = [&](const std::string& format) {
        const auto err = done("export --with-notes --with-photos --format " + format).err;
        return err.substr(std::min(err.find("not carried"), err.size()));
    };
    EXPECT_EQ(notCarried("json"), "not carried by json: Picture (1 card)\n");
    EXPECT_EQ(notCarried("vcard4"), notCarried("vcard3").replace(15, 6, "vcard4"));
    EXPECT_EQ(notCarried("csv"),
        "not carried by csv: Picture (1 card), x.bytes (1 card), x.list (1 card), x.table (1 card), "
        "x.tables (1 card)\n");
    EXPECT_THAT(notCarried("vcard21"),
        AllOf(HasSubstr("Phone labels (1 card)"), HasSubstr("Picture (1 card)"),
            HasSubstr("calendarURIs (1 card)"), HasSubstr("x.text (1 card)")));
}

TEST_F(FullExportTest, WritesATable)
{
    const Json table = tableIn(done("export --format csv").out);
    ASSERT_EQ(table.size(), 2U);
    ASSERT_EQ(table[1].size(), table[0].size());
    std::map<std::string, std::string> row;
    for (std::size_t i = 0; i < table[0].size(); ++i)
        row[table[0][i]] = table[1][i];
    EXPECT_EQ(row.size(), table[0].size()) << "a title comes once";
    const std::pair<const char*, const char*> expected[] = {{"First", "Ana"},
        {"Organization", "Works; & Co, \"Ltd\""}, {"Note", "One\nTwo; three\\four, \"five\"\r\nsix "},
        {"Birthday", "1970-05-01"}, {"ZRPersonFlags", "32"}, {"Phone 1 Label", "home"},
        {"Phone 4 Label", "boat"}, {"Phone 4 Value", "555 0103"}, {"Phone 3 Label", "work fax"},
        {"Address 1 Street", "Rua 1\nCasa 2"}, {"Address 1 CountryCode", "pt"}, {"Address 3 Label", "boat"},
        {"ZRDate 2 Value", "2001-02-03"}, {"x.text", "a,b"}, {"x.number", "42"}, {"x.real", "1.5"},
        {"x.numbers 2 Label", "b"}, {"x.numbers 2 Value", "2"}, {"Group 1", "Friends"}};
    for (const auto& [title, value] : expected)
        EXPECT_EQ(row[title], value) << title;
    EXPECT_EQ(table[0][0], "Id");
    EXPECT_FALSE(row.contains("Phone 5 Label"));
    EXPECT_EQ(tableIn(done("export --format csv --no-notes").out)[0].size(), row.size() - 1);
}

} // namespace
