// What the completions of the three shells offer, as each shell would get it.
#include "tool/ToolWorld.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>

namespace {

using namespace test;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line.substr(0, line.find('\t')));
    return lines;
}

/// The user's roster, with some people and groups in it.
class CompletionTest : public testing::Test {
protected:
    void SetUp() override
    {
        world.write("two.vcf", simpleCard("Lima", "1") + simpleCard("O'Ek", "2"));
        for (const Lines& words : {Lines{"import", world.path("two.vcf")}, Lines{"group", "make", "Friends"},
                 Lines{"group", "make", "Old Friends"},
                 Lines{"smart-group", "make", "Found", "--where", "First = Ana"}})
            ASSERT_EQ(user(words).status, 0);
    }

    std::map<std::string, std::string> environment() const
    {
        const std::string bin = std::filesystem::path(ROSTER_TOOL).parent_path();
        return {{"HOME", world.path("")}, {"XDG_DATA_HOME", world.path("data")},
            {"PATH", bin + ":/usr/bin:/bin"}, {"LC_ALL", "C.UTF-8"}};
    }

    Ended user(const Lines& words) const
    {
        Process::Start start{{ROSTER_TOOL}, {}, environment()};
        start.words.insert(start.words.end(), words.begin(), words.end());
        return run(start);
    }

    Lines offered(const Lines& words) const
    {
        Lines all{"complete", "--"};
        all.insert(all.end(), words.begin(), words.end());
        const auto ended = user(all);
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.err, "");
        return linesOf(ended.out);
    }

    Lines shell(const std::string& program, const Lines& words) const
    {
        Process::Start start{{program}, {}, environment()};
        start.words.insert(start.words.end(), words.begin(), words.end());
        const auto ended = run(start);
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_EQ(ended.err, "");
        return linesOf(ended.out);
    }

    ToolWorld world;
};

const std::string completions = std::string(SOURCE_FOLDER) + "/tools/completions/";

TEST_F(CompletionTest, OffersWhatMayStandThere)
{
    const std::string ana = "Ana Lima";
    struct Case {
        Lines words, offers;
    };
    const Case cases[] = {
        {{"gro"}, {"group"}},
        {{"group", "re"}, {"rename", "remove", "reach"}},
        {{"list", "--sort", ""}, {"first", "last"}},
        {{"list", "--so"}, {"--sort"}},
        {{"list", "--sort=l"}, {"--sort=last"}},
        {{"list", "--sort", "last", "--li"}, {"--limit"}},
        {{"export", "-o", "a.vcf", "--stri"}, {"--strict"}},
        {{"list", ""}, {}},
        {{"list", "--limit", ""}, {}},
        // Groups of the kinds that the place takes, in any case.
        {{"list", "--group", ""}, {"Friends", "Old Friends", "Found"}},
        {{"group", "add", "f"}, {"Friends"}},
        {{"smart-group", "show", ""}, {"Found"}},
        {{"group", "members", "--deep", "OLD"}, {"Old Friends"}},
        // People, in all places but those that are taken.
        {{"show", "ana l"}, {ana}},
        {{"remove", ana, "ana o"}, {"Ana O'Ek"}},
        {{"group", "add", "Friends", "Ana L"}, {ana}},
        {{"group", "add", "--groups", "Friends", "o"}, {"Old Friends"}},
        {{"group", "reach", "Friends", "Ana L"}, {ana}},
        {{"group", "reach", "Friends", ana, "e"}, {"Email"}},
        {{"group", "reach", "Friends", ana, "Email", ""}, {}},
        // What is set, and by which label.
        {{"add", "--set", "Bir"}, {"Birthday="}},
        {{"edit", "x", "--set", "emai"}, {"Email=", "Email;"}},
        {{"edit", "x", "--set", "Email;ho"}, {"Email;home="}},
        {{"edit", "x", "--unset", "Email;ho"}, {"Email;home"}},
        {{"edit", "x", "--set", "First=A"}, {}},
        // Rules, piece by piece.
        {{"search", "--where", "Nick"}, {"Nickname "}},
        {{"search", "--where", "Nickname is"}, {"Nickname is absent", "Nickname is present"}},
        {{"search", "--where", "Nickname lack"}, {"Nickname lacks ", "Nickname lacks-exactly "}},
        {{"search", "--where", "Group m"}, {"Group member-of "}},
        {{"search", "--where", "Group member-of Fo"}, {"Group member-of Found"}},
        {{"--default", "ZRDont"}, {"ZRDontAutoMerge="}},
        // Another roster; none is made.
        {{"--roster", world.path("nowhere"), "list", "--group", ""}, {}},
        {{"--roster", "~/data/Roster", "list", "--group", "o"}, {"Old Friends"}},
        {{"--roster", "/proc/nowhere", "list", "--group", ""}, {}},
        // Paths are the shell's to know.
        {{"import", ""}, {""}},
        {{"--roster", ""}, {""}},
        {{"nonsense", "--nonsense", "x"}, {}},
        {{}, {}},
    };
    for (const auto& [words, offers] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        if (words.empty())
            EXPECT_FALSE(offered(words).empty());
        else
            EXPECT_THAT(offered(words), UnorderedElementsAreArray(offers));
    }
    EXPECT_FALSE(std::filesystem::exists(world.path("nowhere")));
}

constexpr char bashScript[] =
    "source \"$1\"; compopt() { :; }; COMP_LINE=$2 COMP_POINT=${#2}; current=$3; shift 3;"
    "COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1)); _roster roster \"$current\" x;"
    "printf '%s\\n' \"${COMPREPLY[@]}\"";

// The way of bash: it parts words at "=" and ":", and wants back what stands behind the last of these.
TEST_F(CompletionTest, BashGetsItsWordsBack)
{
    struct Case {
        std::string line;
        Lines words;
        std::string current;
        Lines offers;
    };
    const Case cases[] = {
        {"roster gro", {"roster", "gro"}, "gro", {"group"}},
        {"roster list --group ", {"roster", "list", "--group", ""}, "",
            {"Friends", "Old\\ Friends", "Found"}},
        {"roster list --group=O", {"roster", "list", "--group", "=", "O"}, "O", {"Old\\ Friends"}},
        {"roster list --sort=", {"roster", "list", "--sort", "="}, "", {"first", "last"}},
        {"roster list --group 'Old", {"roster", "list", "--group", "'Old"}, "Old", {"Old Friends"}},
        {"roster show \"Ana O'", {"roster", "show", "\"Ana O'"}, "Ana O'", {"Ana O'Ek"}},
        {"roster show Ana\\ O", {"roster", "show", "Ana\\ O"}, "Ana\\ O", {"Ana\\ O\\'Ek"}},
        {"roster show 'Ana O", {"roster", "show", "'Ana O"}, "Ana O", {"Ana O'\\''Ek"}},
        {"roster search --where 'Group m", {"roster", "search", "--where", "'Group m"}, "Group m",
            {"Group member-of ", "Group member-of …"}},
    };
    for (const auto& [line, words, current, offers] : cases) {
        SCOPED_TRACE(line);
        Lines all{"-c", bashScript, "bash", completions + "roster.bash", line, current};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_THAT(shell("/bin/bash", all), UnorderedElementsAreArray(offers));
    }
}

constexpr char zshScript[] = "compadd() { print -rl -- ${(P)@[-1]} }; completion=$1; shift;"
                             "words=(\"$@\") CURRENT=$# PREFIX=${@[-1]}; source $completion";

TEST_F(CompletionTest, ZshGetsWholeWords)
{
    struct Case {
        /// The words as they were typed, the last one without the quote that it begins with.
        Lines words;
        Lines offers;
    };
    const Case cases[] = {
        {{"roster", "gro"}, {"group"}},
        {{"roster", "list", "--group", ""}, {"Friends", "Old Friends", "Found"}},
        {{"roster", "list", "--group=O"}, {"--group=Old Friends"}},
        {{"roster", "group", "add", "'Old Friends'", "Ana\\ L"}, {"Ana Lima"}},
        {{"roster", "search", "--where", "Group m"}, {"Group member-of "}},
    };
    for (const auto& [words, offers] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        Lines all{"-f", "-c", zshScript, "zsh", completions + "_roster"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_THAT(shell(ZSH, all), UnorderedElementsAreArray(offers));
    }
}

TEST_F(CompletionTest, FishCompletesItsCommandLine)
{
    const std::pair<std::string, Lines> cases[] = {
        {"roster gro", {"group"}},
        {"roster list --group ", {"Friends", "Old Friends", "Found"}},
        {"roster list --sort=l", {"--sort=last"}},
        {"roster show 'Ana L", {"Ana Lima"}},
        {"roster group add 'Old Friends' Ana\\ L", {"Ana Lima"}},
    };
    for (const auto& [line, offers] : cases) {
        SCOPED_TRACE(line);
        EXPECT_THAT(shell(FISH,
                        {"--no-config", "-c", "source $argv[1]; complete -C $argv[2]",
                            completions + "roster.fish", line}),
            UnorderedElementsAreArray(offers));
    }
}

} // namespace
