// What each command answers, and what becomes of its output.
#include "tool/ToolWorld.h"

namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A world with two cards in its roster.
class CommandsTest : public ToolTest {
protected:
    void SetUp() override
    {
        done("import "
            + world.write("two.vcf", simpleCard("Lima", "+1 555 0101") + simpleCard("Ek", "+1 555 0102")));
    }
};

TEST_F(CommandsTest, AnswerWhatTheyAreAskedFor)
{
    const std::pair<std::string, std::string> cases[] = {
        {"--version", "1."},
        {"--help", "Exit status"},
        {"import --help", "--plan"},
        {"watch --help", "inserted|updated|deleted"},
        {"init", world.roster()},
        {"list", "Ana Lima"},
        {"list --limit 1", "Ana Ek"},
        {"show lima", "+1 555 0101"},
        {"me lima", "Ana Lima"},
        {"me", "Ana Lima"},
        {"stats", "people"},
        {"check", "sound"},
        {"check", "Other holders"},
    };
    for (const auto& [line, wanted] : cases) {
        const auto ended = done(line);
        EXPECT_THAT(ended.out, HasSubstr(wanted)) << line;
        EXPECT_EQ(ended.err, "") << line;
    }
}

TEST_F(CommandsTest, GiveACardToProgramsAsOneObject)
{
    const Json card = world.json("show lima");
    EXPECT_EQ(
        withoutIds(card), Json::parse(R"({"kind":"ZRPerson", "name":"Ana Lima", "groups":[], "properties":
        {"First":"Ana", "Last":"Lima", "Phone":[{"label":"_$!<Home>!$_", "value":"+1 555 0101", "primary":true}]}})"));
    const std::string id = card["id"];
    for (const auto& part : {id, id.substr(0, 8)})
        EXPECT_EQ(world.json("show " + part), card) << part;
}

TEST_F(CommandsTest, ImportTellsProgramsWhatCameOfEachCard)
{
    const std::string file = world.write("mixed.vcf",
        simpleCard("Reyes", "1") + cardOf("UID:7\nX-COLOUR:red\nN:Okafor;Ben") + "BEGIN:VCARD\nN:Cut;Off\n");
    Json result = world.json("import " + file);
    Json& error = result["errors"][0];
    EXPECT_FALSE(error["reason"].get<std::string>().empty());
    EXPECT_THAT(result["repairs"].dump(), HasSubstr("X-COLOUR"));
    error.erase("reason");
    result.erase("repairs");
    EXPECT_EQ(result,
        Json({{"added", 2}, {"updated", 0}, {"same", 0}, {"skipped", 0}, {"refused", 1},
            {"errors", {{{"file", file}, {"card", 3}, {"line", 12}, {"text", "N:Cut;Off"}}}}}));
}

TEST_F(CommandsTest, ImportRefusesAFileWithoutCards)
{
    expectRefusals({{"import " + world.write("none.vcf", "no card here\n"), 1, "no card"}});
}

TEST_F(CommandsTest, ImportReadsStandardInput)
{
    const auto ended = world.tool("import -", simpleCard("Pipe", "1"));
    EXPECT_EQ(ended.status, 0) << ended.err;
    done("show Pipe");
}

TEST_F(CommandsTest, APlanWritesNothing)
{
    world.removeRoster();
    EXPECT_THAT(done("import --plan --explain " + world.path("two.vcf")).out,
        AllOf(HasSubstr("add Ana Lima"), HasSubstr("TEL;TYPE=HOME:+1 555 0101\n"),
            HasSubstr("2 cards would be added")));
    EXPECT_FALSE(std::filesystem::exists(world.roster()));
}

// A name may hold what would drive a terminal.
TEST_F(CommandsTest, TextForPeopleCannotControlTheirTerminal)
{
    done("import " + world.write("e.vcf", cardOf("N:Evil\x1b[2J;X")));
    EXPECT_THAT(done("list").out, AllOf(HasSubstr("Evil"), Not(HasSubstr("\x1b"))));
}

TEST_F(CommandsTest, AFullDiskBehindTheOutputIsTold)
{
    auto start = world.start("list");
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
    done("import " + world.write("many.vcf", many));
    // Far more than a pipe holds.
    const auto ended = run({{"/bin/sh", "-c",
        std::string("(") + ROSTER_TOOL + " --json --roster " + world.roster()
            + " list; echo $? >&2) | head -n 1"}});
    EXPECT_EQ(ended.err, "1\n");
}

TEST_F(CommandsTest, CheckNamesAPictureThatNoCardHas)
{
    constexpr char name[] = "00000000-0000-4000-8000-000000000000";
    std::filesystem::create_directories(world.roster() + "/Images");
    world.write(std::string("roster/Images/") + name, "x");
    EXPECT_THAT(done("check").out, HasSubstr(name));
}

} // namespace
