// What `roster query` gives a mail program: who, in which order, in which form.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;

using QueryTest = PeopleWorld;

const std::string anasHome = "ana@home.example\tAna Lima\thome\n",
                  anasWork = "lima@works.example\tAna Lima\twork\n",
                  bens = "anaesthesia@ek.example\tBen Ek\twork\n",
                  chloes = "chloe@dubois.example\tChloé Dubois\twork\n",
                  dans = "dan@analund.example\tDan Analund\thome\n";

std::string firstLines(const std::string& lines, int count)
{
    std::size_t to = 0;
    for (; count > 0 && to < lines.size(); --count)
        to = lines.find('\n', to) + 1;
    return lines.substr(0, to);
}

TEST_F(QueryTest, RanksByWhereTheTextStandsThenByName)
{
    const std::pair<std::string, std::string> cases[] = {
        // Words of names first, then starts of addresses, then the rest.
        {"ana", anasHome + anasWork + dans + bens + chloes},
        {"ANALUND", dans},
        {"anaes", bens},
        // Of two addresses only the one that has what the name has not.
        {"home.example", anasHome},
        {"works", anasWork},
        {"chloe", chloes},
        {"CHLOÉ", chloes},
        // A nickname is a name.
        {"nia", anasHome + anasWork},
        // All words, in one argument or several.
        {"'lima ana'", anasHome + anasWork},
        {"lima ana", anasHome + anasWork},
        {"dan lima", ""},
        // Numbers, however they are written.
        {"0301234", anasHome + anasWork},
        {"'+49 (0) 30/1234-56'", anasHome + anasWork},
        // One and two letters.
        {"é", bens + anasHome + anasWork + chloes + dans},
        {"ek", bens},
    };
    for (const auto& [text, lines] : cases) {
        SCOPED_TRACE(text);
        const std::string query = "query --format aerc " + text;
        const auto ended = world.tool(query);
        EXPECT_EQ(ended.out, lines) << ended.err;
        EXPECT_EQ(ended.status, lines.empty() ? 1 : 0);
        EXPECT_EQ(ended.err, "");
        // However few are wanted, they are the first of all.
        EXPECT_EQ(world.tool(query + " --limit 1").out, firstLines(lines, 1));
        EXPECT_EQ(world.tool(query + " --limit 3").out, firstLines(lines, 3));
    }
}

TEST_F(QueryTest, PrintsAStatusLineForThoseWhoSkipOne)
{
    EXPECT_EQ(done("query anaes").out, "1 found for anaes\n" + bens);
    EXPECT_EQ(done("query --limit 1 ana").out, "The best 1 for ana\n" + anasHome);
    const auto nothing = world.tool("query 'no\tsuch'");
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.out, "Nothing found for no such\n");
    EXPECT_EQ(nothing.err, "");
}

TEST_F(QueryTest, GivesProgramsObjects)
{
    for (const char* line : {"query --format json anaes", "--json query anaes"}) {
        const Json json = Json::parse(done(line).out);
        ASSERT_EQ(json.size(), 1U);
        EXPECT_EQ(json[0]["address"], "anaesthesia@ek.example");
        EXPECT_EQ(json[0]["name"], "Ben Ek");
        EXPECT_EQ(json[0]["id"], world.idOf("anaes"));
    }
    EXPECT_EQ(world.tool("query --format json nobody").out, "[]\n");
}

TEST_F(QueryTest, KeepsItsOwnFormWhateverACardHolds)
{
    done("import " + world.write("odd.vcf", cardOf("N:Tab\\nbed;Zed;;;\nEMAIL:zed@tab.example")));
    EXPECT_EQ(done("query --format aerc zed").out, "zed@tab.example\tZed Tab bed\twork\n");
}

} // namespace
