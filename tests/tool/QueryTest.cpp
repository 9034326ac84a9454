// What `roster query` gives a mail program: who, in which order, in which form.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;

using QueryTest = PeopleWorld;

constexpr char anasHome[] = "ana@home.example\tAna Lima\thome\n";
constexpr char anasWork[] = "lima@works.example\tAna Lima\twork\n";
constexpr char bens[] = "anaesthesia@ek.example\tBen Ek\twork\n";
constexpr char chloes[] = "chloe@dubois.example\tChloé Dubois\twork\n";
std::string firstLines(const std::string& lines, int count)
{
    std::size_t to = 0;
    for (; count > 0 && to < lines.size(); --count)
        to = lines.find('\n', to) + 1;
    return lines.substr(0, to);
}

constexpr char dans[] = "dan@analund.example\tDan Analund\thome\n";

TEST_F(QueryTest, RanksByWhereTheTextStandsThenByName)
{
    struct Case {
        std::vector<std::string> words;
        std::string lines;
    };
    const std::string none;
    const Case cases[] = {
        // Words of names first, then starts of addresses, then the rest.
        {{"ana"}, std::string(anasHome) + anasWork + dans + bens + chloes},
        {{"ANALUND"}, dans},
        {{"anaes"}, bens},
        // Of two addresses only the one that has what the name has not.
        {{"home.example"}, anasHome},
        {{"works"}, anasWork},
        {{"chloe"}, chloes},
        {{"CHLOÉ"}, chloes},
        // A nickname is a name.
        {{"nia"}, std::string(anasHome) + anasWork},
        // All words, in one argument or several.
        {{"lima ana"}, std::string(anasHome) + anasWork},
        {{"lima", "ana"}, std::string(anasHome) + anasWork},
        {{"dan", "lima"}, none},
        // Numbers, however they are written.
        {{"0301234"}, std::string(anasHome) + anasWork},
        {{"+49 (0) 30/1234-56"}, std::string(anasHome) + anasWork},
        // One and two letters.
        {{"é"}, std::string(bens) + anasHome + anasWork + chloes + dans},
        {{"ek"}, bens},
    };
    for (const auto& [words, lines] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        std::vector<std::string> all{"query", "--format", "aerc"};
        all.insert(all.end(), words.begin(), words.end());
        const auto ended = world.tool(all);
        EXPECT_EQ(ended.out, lines) << ended.err;
        EXPECT_EQ(ended.status, lines.empty() ? 1 : 0);
        EXPECT_EQ(ended.err, "");
        // However few are wanted, they are the first of all.
        all.insert(all.end(), {"--limit", "1"});
        EXPECT_EQ(world.tool(all).out, firstLines(lines, 1));
        all.back() = "3";
        EXPECT_EQ(world.tool(all).out, firstLines(lines, 3));
    }
}

TEST_F(QueryTest, PrintsAStatusLineForThoseWhoSkipOne)
{
    const auto found = world.tool({"query", "anaes"});
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.out, std::string("1 found for anaes\n") + bens);
    EXPECT_EQ(
        world.tool({"query", "--limit", "1", "ana"}).out, std::string("The best 1 for ana\n") + anasHome);
    const auto nothing = world.tool({"query", "no\tsuch"});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.out, "Nothing found for no such\n");
    EXPECT_EQ(nothing.err, "");
}

TEST_F(QueryTest, GivesProgramsObjects)
{
    for (const auto& words : {std::vector<std::string>{"query", "--format", "json", "anaes"},
             std::vector<std::string>{"--json", "query", "anaes"}}) {
        const Json json = Json::parse(world.tool(words).out);
        ASSERT_EQ(json.size(), 1U);
        EXPECT_EQ(json[0]["address"], "anaesthesia@ek.example");
        EXPECT_EQ(json[0]["name"], "Ben Ek");
        EXPECT_EQ(json[0]["id"], world.json({"show", "anaes"})["id"]);
    }
    EXPECT_EQ(world.tool({"query", "--format", "json", "nobody"}).out, "[]\n");
}

TEST_F(QueryTest, KeepsItsOwnFormWhateverACardHolds)
{
    done({"import",
        world.write("odd.vcf",
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Tab\\nbed;Zed;;;\r\nEMAIL:zed@tab.example\r\nEND:VCARD\r\n")});
    EXPECT_EQ(world.tool({"query", "--format", "aerc", "zed"}).out, "zed@tab.example\tZed Tab bed\twork\n");
}

TEST_F(QueryTest, LimitsAndRefuses)
{
    EXPECT_EQ(world.tool({"query", "--format", "aerc", "--limit", "1", "ana"}).out, anasHome);
    expectRefusal({"query"}, 2, "TEXT");
    expectRefusal({"query", "  "}, 2, "what to look for");
    expectRefusal({"query", "--format", "elm", "x"}, 2, "elm");
}

} // namespace
