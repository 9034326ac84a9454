// What each command answers, and how it fails: status, standard output, one line on standard error.
#include "tool/ToolWorld.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace test;
using testing::HasSubstr;

struct Case {
    std::vector<std::string> words;
    int status;
    /// In standard output, and in the one line on standard error; an empty one wants nothing there.
    std::string out;
    std::string err;
};

/// A world with two cards in its roster.
class CommandsTest : public testing::Test {
protected:
    void SetUp() override
    {
        world.write("two.vcf", simpleCard("Lima", "+1 555 0101") + simpleCard("Ek", "+1 555 0102"));
        const auto ended = world.tool({"import", world.path("two.vcf")});
        ASSERT_EQ(ended.status, 0) << ended.err;
    }

    void expect(const Case& wanted)
    {
        const auto ended = world.tool(wanted.words);
        SCOPED_TRACE(testing::PrintToString(wanted.words) + "\n" + ended.out + ended.err);
        EXPECT_EQ(ended.status, wanted.status);
        EXPECT_THAT(ended.out, HasSubstr(wanted.out));
        EXPECT_EQ(ended.out.empty(), wanted.out.empty());
        EXPECT_THAT(ended.err, HasSubstr(wanted.err));
        EXPECT_EQ(std::ranges::count(ended.err, '\n'), wanted.err.empty() ? 0 : 1);
    }

    ToolWorld world;
};

TEST_F(CommandsTest, AnswerOrFailWithOneLine)
{
    const std::string missing = world.path("missing.vcf");
    const Case cases[] = {
        {{"--version"}, 0, "1.", ""},
        {{"--help"}, 0, "Exit status", ""},
        {{"import", "--help"}, 0, "--plan", ""},
        {{}, 2, "", "--help"},
        {{"frobnicate"}, 2, "", "frobnicate"},
        {{"list", "--frob"}, 2, "", "--frob"},
        {{"list", "--limit", "many"}, 2, "", "many"},
        {{"list", "--sort", "age"}, 2, "", "age"},
        {{"import"}, 2, "", "FILE"},
        {{"import", "--prepare", "half", "x"}, 2, "", "half"},
        {{"import", "--explain", "x"}, 2, "", "--plan"},
        {{"--default", "nonsense", "list"}, 2, "", "KEY=VALUE"},
        {{"init"}, 0, world.roster(), ""},
        {{"list"}, 0, "Ana Lima", ""},
        {{"list", "--limit", "1"}, 0, "Ana Ek", ""},
        {{"show", "lima"}, 0, "+1 555 0101", ""},
        {{"show", "Nobody", "At", "All"}, 1, "", "Nobody At All"},
        {{"show", "Ana"}, 1, "", "2 cards"},
        {{"me"}, 1, "", "no card is Me"},
        {{"me", "lima"}, 0, "Ana Lima", ""},
        {{"me"}, 0, "Ana Lima", ""},
        {{"stats"}, 0, "people", ""},
        {{"check"}, 0, "sound", ""},
        {{"check"}, 0, "Other holders", ""},
        {{"watch", "--help"}, 0, "inserted|updated|deleted", ""},
        {{"--roster", "/proc/nowhere", "watch"}, 3, "", "/proc/nowhere"},
        {{"import", missing}, 1, "", missing},
        {{"import", world.write("none.vcf", "no card here\n")}, 1, "", "no card"},
        {{"--roster", "/proc/nowhere", "list"}, 3, "", "/proc/nowhere"},
    };
    for (const auto& wanted : cases)
        expect(wanted);
}

TEST_F(CommandsTest, ListInTheOrderThatIsAskedFor)
{
    world.tool({"import", world.write("b.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Aa;Zoe\nEND:VCARD\n")});
    const auto first = world.json({"list", "--sort", "first"}), last = world.json({"list", "--sort", "last"});
    ASSERT_EQ(first.size(), 3U);
    EXPECT_EQ(first[2]["name"], "Zoe Aa");
    EXPECT_EQ(last[0]["name"], "Zoe Aa");
}

TEST_F(CommandsTest, GiveACardToProgramsAsOneObject)
{
    const Json card = world.json({"show", "lima"});
    EXPECT_EQ(card["kind"], "ZRPerson");
    EXPECT_EQ(card["name"], "Ana Lima");
    EXPECT_EQ(card["properties"]["Last"], "Lima");
    EXPECT_EQ(card["properties"]["Phone"][0]["value"], "+1 555 0101");
    EXPECT_EQ(card["properties"]["Phone"][0]["label"], "_$!<Home>!$_");
    EXPECT_EQ(card["properties"]["Phone"][0]["primary"], true);
    EXPECT_EQ(card["groups"], Json::array());
    // Found again by its id, and by the start of it.
    const auto id = card["id"].get<std::string>();
    EXPECT_EQ(world.json({"show", id}), card);
    EXPECT_EQ(world.json({"show", id.substr(0, 8)}), card);
}

TEST_F(CommandsTest, ImportTellsProgramsWhatCameOfEachCard)
{
    const std::string file = world.write("mixed.vcf",
        simpleCard("Reyes", "1")
            + "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:7\r\nX-COLOUR:red\r\nN:Okafor;Ben\r\nEND:VCARD\r\n"
            + "BEGIN:VCARD\r\nN:Cut;Off\r\n");
    const Json result = world.json({"import", file});
    EXPECT_EQ(result["added"], 2);
    EXPECT_EQ(result["updated"], 0);
    EXPECT_EQ(result["same"], 0);
    EXPECT_EQ(result["skipped"], 0);
    EXPECT_EQ(result["refused"], 1);
    ASSERT_EQ(result["errors"].size(), 1U);
    EXPECT_EQ(result["errors"][0]["file"], file);
    EXPECT_EQ(result["errors"][0]["card"], 3);
    EXPECT_EQ(result["errors"][0]["line"], 12);
    EXPECT_EQ(result["errors"][0]["text"], "N:Cut;Off");
    EXPECT_FALSE(result["errors"][0]["reason"].get<std::string>().empty());
    EXPECT_THAT(result["repairs"].dump(), HasSubstr("X-COLOUR"));
}

TEST_F(CommandsTest, ImportReadsStandardInput)
{
    const auto ended = world.tool({"import", "-"}, simpleCard("Pipe", "1"));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(world.tool({"show", "Pipe"}).status, 0);
}

TEST_F(CommandsTest, APlanWritesNothing)
{
    world.removeRoster();
    const auto ended = world.tool({"import", "--plan", "--explain", world.path("two.vcf")});
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr("add Ana Lima"));
    EXPECT_THAT(ended.out, HasSubstr("TEL;TYPE=HOME:+1 555 0101\n"));
    EXPECT_THAT(ended.out, HasSubstr("2 cards would be added"));
    EXPECT_FALSE(std::filesystem::exists(world.roster()));
}

// A name may hold what would drive a terminal.
TEST_F(CommandsTest, TextForPeopleCannotControlTheirTerminal)
{
    world.tool({"import", world.write("e.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Evil\x1b[2J;X\nEND:VCARD\n")});
    const auto listed = world.tool({"list"}).out;
    EXPECT_THAT(listed, HasSubstr("Evil"));
    EXPECT_EQ(listed.find('\x1b'), std::string::npos);
}

TEST_F(CommandsTest, AFullDiskBehindTheOutputIsTold)
{
    auto start = world.start({"list"});
    start.outputPath = "/dev/full";
    const auto ended = run(start);
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("standard output"));
}

TEST_F(CommandsTest, AReaderThatLeavesEndsNothingBadly)
{
    std::string many;
    for (int i = 0; i < 2000; ++i)
        many += simpleCard("Person" + std::to_string(i), "+1 555");
    ASSERT_EQ(world.tool({"import", world.write("many.vcf", many)}).status, 0);
    // Far more than a pipe holds.
    const auto ended = run({{"/bin/sh", "-c",
        std::string("(") + ROSTER_TOOL + " --json --roster " + world.roster()
            + " list; echo $? >&2) | head -n 1"}});
    EXPECT_EQ(ended.err, "1\n");
}

TEST_F(CommandsTest, CheckNamesAPictureThatNoCardHas)
{
    std::filesystem::create_directories(world.roster() + "/Images");
    world.write("roster/Images/00000000-0000-4000-8000-000000000000", "x");
    const auto ended = world.tool({"check"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.out, HasSubstr("00000000-0000-4000-8000-000000000000"));
}

} // namespace
