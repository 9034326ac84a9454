// What `roster export` writes, where to, and what it says of what stays behind.
#include "tool/FullCard.h"
#include "tool/PeopleWorld.h"

#include <array>
#include <filesystem>

#include <sys/stat.h>

namespace {

using namespace test;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// Reads what RFC 4180 says.
std::vector<std::vector<std::string>> tableIn(const std::string& text)
{
    std::vector<std::vector<std::string>> table{{""}};
    bool isQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string& field = table.back().back();
        if (text[i] == '"' && isQuoted && text.substr(i + 1, 1) == "\"")
            field += text[i++];
        else if (text[i] == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && text[i] == ',')
            table.back().emplace_back();
        else if (!isQuoted && text.substr(i, 2) == "\r\n")
            table.push_back({""}), ++i;
        else
            field += text[i];
    }
    EXPECT_EQ(table.back(), std::vector<std::string>{""}) << "no line end at the end";
    table.pop_back();
    return table;
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
    std::vector<std::string> filesBeside() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(world.path("out")))
            names.push_back(entry.path().filename().string());
        return names;
    }
    void SetUp() override
    {
        PeopleWorld::SetUp();
        fs::create_directory(world.path("out"));
    }
};

TEST_F(ExportTest, ComesBackAsItWas)
{
    const Json before = world.cards();
    for (const char* const format : {"vcard3", "vcard4"}) {
        const auto ended = done({"export", "--with-notes", "--format", format});
        ToolWorld other;
        ASSERT_EQ(other.tool({"import", other.write("all.vcf", ended.out)}).status, 0);
        const Json after = other.cards();
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t i = 0; i < before.size(); ++i)
            EXPECT_EQ(withoutIds(after[i]), withoutIds(before[i])) << format;
    }
}

TEST_F(ExportTest, IsOfWhomItIsAskedFor)
{
    done({"group", "make", "Friends"});
    done({"group", "add", "Friends", "Lima", "Dubois"});
    const auto exported = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"export", "--format", "json"});
        return namesIn(Json::parse(done(words).out));
    };
    EXPECT_EQ(exported({}), names({"list"}));
    EXPECT_EQ(exported({"porto"}), "Ben Ek, Ana Lima");
    EXPECT_EQ(exported({"ana", "porto", "met"}), "Ben Ek");
    EXPECT_EQ(exported({"--group", "friends"}), "Chloé Dubois, Ana Lima");
    EXPECT_EQ(exported({"--group", "Friends", "porto"}), "Ana Lima");
    EXPECT_EQ(exported({world.json({"show", "Ek"})["id"].get<std::string>().substr(0, 8)}), "Ben Ek");
    expectRefusal({"export", "nobody"}, 1, "no card matches");
    expectRefusal({"export", "--group", "Friends", "anaesthesia"}, 1, "no card matches");
    expectRefusal({"export", "--group", "Nowhere"}, 1, "no group 'Nowhere'");
    expectRefusal({"export", "--format", "tar"}, 2, "tar");
}

TEST_F(ExportTest, WritesJsonAsAListDoes)
{
    EXPECT_EQ(done({"export", "--format", "json"}).out, done({"--json", "list"}).out);
    EXPECT_EQ(done({"--json", "export"}).out, done({"--json", "list"}).out);
    const Json bare = Json::parse(done({"export", "--format", "json", "--no-notes", "Ek"}).out);
    EXPECT_FALSE(bare[0]["properties"].contains("Note"));
    for (const char* name : {"Ana Lima", "Ben Ek", "Chloé Dubois", "Dan Analund", "Anvil Works"})
        done({"remove", name});
    EXPECT_EQ(done({"export", "--format", "json"}).out, "[]\n");
    EXPECT_EQ(done({"export"}).out, "");
}

TEST_F(ExportTest, WritesGroupsAsCardsOnlyWhereTheyAreACard)
{
    done({"group", "make", "Friends"});
    done({"group", "make", "Family"});
    done({"group", "add", "Friends", "Lima"});
    const auto kinds = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"export", "--format", "vcard4"});
        const auto cards = done(words).out;
        return std::array{
            countOf(cards, "BEGIN:VCARD"), countOf(cards, "KIND:group"), countOf(cards, "MEMBER:")};
    };
    EXPECT_EQ(kinds({}), (std::array{5, 0, 0}));
    EXPECT_EQ(kinds({"--with-groups"}), (std::array{7, 2, 1}));
    EXPECT_EQ(kinds({"--with-groups", "--group", "Friends"}), (std::array{2, 1, 1}));
    ToolWorld other;
    const auto all = done({"export", "--format", "vcard4", "--with-groups"}).out;
    ASSERT_EQ(other.tool({"import", "--groups", other.write("all.vcf", all)}).status, 0);
    EXPECT_EQ(namesIn(other.json({"list", "--group", "Friends"})), "Ana Lima");
    EXPECT_EQ(other.cards().size(), 5U) << "a group is nobody";
    EXPECT_THAT(done({"export", "--format", "vcard4", "Anvil"}).out, HasSubstr("\r\nKIND:org\r\n"));
    expectRefusal({"export", "--with-groups"}, 2, "--with-groups: only vcard4 has cards of groups");
}

TEST_F(ExportTest, PutsAFileInPlaceWholeOrNotAtAll)
{
    const std::string file = world.path("out/cards.vcf");
    world.write("out/cards.vcf", "former");
    EXPECT_EQ(world.tool({"export", "--strict", "--format", "vcard21", "-o", file}).status, 1);
    EXPECT_EQ(contentsOf(file), "former");
    EXPECT_EQ(done({"export", "-o", file}).out, "5 cards in " + file + "\n");
    EXPECT_EQ(contentsOf(file), done({"export", "-o", "-"}).out);
    struct stat status { };
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_THAT(filesBeside(), testing::ElementsAre("cards.vcf"));

    // A link is followed; what is no plain file is written as it is.
    fs::create_symlink("cards.vcf", world.path("out/link"));
    done({"export", "-o", world.path("out/link"), "Ek"});
    EXPECT_TRUE(fs::is_symlink(world.path("out/link")));
    EXPECT_THAT(contentsOf(file), HasSubstr("Ben Ek"));
    expectRefusal({"export", "-o", "/dev/full"}, 1, "cannot write /dev/full: No space left");
    expectRefusal({"export", "-o", world.path("out")}, 1, "cannot write " + world.path("out"));
    expectRefusal({"export", "-o", world.path("none/x")}, 1, "cannot write");
    EXPECT_EQ(filesBeside().size(), 2U);
}

// The disk is full behind the first cards: nothing is left, and what was there stays.
TEST_F(ExportTest, LeavesNothingWhenItFailsHalfWay)
{
    const std::string file = world.path("out/cards.vcf");
    world.write("out/cards.vcf", "former");
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += simpleCard("Person" + std::to_string(i), "+1 555");
    done({"import", world.write("many.vcf", many)});
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
    EXPECT_EQ(done({"export"}).err, "roster: held back: notes of 1 card\n");
    EXPECT_EQ(done({"export", "--with-notes"}).err, "");
    EXPECT_EQ(done({"--default", "ZRIncludeNotesInVCard=true", "export"}).err, "");
    EXPECT_EQ(done({"--default", "ZRIncludeNotesInVCard=true", "export", "--no-notes"}).err,
        "roster: held back: notes of 1 card\n");
    EXPECT_EQ(done({"export", "--with-notes", "--format", "vcard21"}).err,
        "roster: not carried by vcard21: ZRPersonFlags (1 card)\n");
    expectRefusal({"export", "--strict", "--format", "vcard21"}, 1,
        "nothing written: vcard21 does not carry ZRPersonFlags (1 card)");
    EXPECT_THAT(done({"export", "--strict"}).out, HasSubstr("Anvil"));
}

/// A roster with the card that has everything, of Me.
class FullExportTest : public testing::Test {
protected:
    void SetUp() override { addFullCard(world.roster()); }

    ToolWorld world;
};

TEST_F(FullExportTest, HoldsBackWhatMeKeepsPrivate)
{
    const auto ended = world.tool({"export"});
    EXPECT_THAT(ended.err, HasSubstr("held back: notes of 1 card, pictures of 1 card, 2 fields of Me\n"));
    EXPECT_THAT(ended.err, HasSubstr("not carried by vcard3: x.bytes (1 card), x.day (1 card)"));
    EXPECT_THAT(ended.out, testing::Not(HasSubstr("555 0102")));
    EXPECT_THAT(ended.out, testing::Not(HasSubstr("BDAY")));
    EXPECT_THAT(ended.out, HasSubstr("CATEGORIES:Friends"));
    const auto whole = world.tool({"export", "--with-notes", "--with-photos"});
    EXPECT_THAT(whole.out, HasSubstr("PHOTO;BASE64:\r\n  cGljdHVyZQ=="));
    EXPECT_THAT(whole.out, HasSubstr("NOTE:One"));
    EXPECT_THAT(whole.err, HasSubstr("held back: 2 fields of Me\n"));
    EXPECT_EQ(world.tool({"export", "--strict"}).status, 1);
}

TEST_F(FullExportTest, NamesEachThingThatAFormatCannotCarry)
{
    const auto notCarried = [&](const char* format) {
        const auto ended = world.tool({"export", "--with-notes", "--with-photos", "--format", format});
        const auto at = ended.err.find("not carried");
        return at == ended.err.npos ? std::string() : ended.err.substr(at);
    };
    EXPECT_EQ(notCarried("json"), "not carried by json: Picture (1 card)\n");
    EXPECT_EQ(notCarried("vcard4"), notCarried("vcard3").replace(15, 6, "vcard4"));
    EXPECT_EQ(notCarried("csv"),
        "not carried by csv: Picture (1 card), x.bytes (1 card), x.list (1 card), x.table (1 card), x.tables "
        "(1 "
        "card)\n");
    EXPECT_THAT(notCarried("vcard21"),
        testing::AllOf(HasSubstr("Phone labels (1 card)"), HasSubstr("Picture (1 card)"),
            HasSubstr("calendarURIs (1 card)"), HasSubstr("x.text (1 card)")));
}

TEST_F(FullExportTest, WritesATable)
{
    const auto table = tableIn(world.tool({"export", "--format", "csv"}).out);
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
    EXPECT_EQ(tableIn(world.tool({"export", "--format", "csv", "--no-notes"}).out)[0].size(), row.size() - 1);
}

} // namespace
