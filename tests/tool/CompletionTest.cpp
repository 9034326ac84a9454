// What the completions of the three shells offer, as each shell would get it.
#include "tool/ToolWorld.h"

#include <filesystem>
#include <sstream>

namespace {

using namespace test;
using testing::UnorderedElementsAreArray;

/// What is offered, with "|" between; blanks at an end count.
Words parted(const std::string& offers)
{
    Words parts;
    std::istringstream stream(offers);
    for (std::string part; std::getline(stream, part, '|');)
        parts.push_back(part);
    return parts;
}

/// The user's roster, with some people and groups in it.
class CompletionTest : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string two = simpleCard("Lima", "1") + simpleCard("O'Ek", "2"),
                          lines[] = {"import " + world.write("two.vcf", two), "group make Friends",
                              "group make 'Old Friends'", "smart-group make Found --where 'First = Ana'"};
        for (const auto& line : lines)
            answered(ROSTER_TOOL, wordsOf(line));
    }

    /// Runs the program as that user, and answers the lines that it prints, without what explains them.
    Words answered(const std::string& program, const Words& words) const
    {
        const std::string bin = std::filesystem::path(ROSTER_TOOL).parent_path();
        Process::Start start{.words = {program},
            .environment = {{"HOME", world.path("")}, {"XDG_DATA_HOME", world.path("data")},
                {"PATH", bin + ":/usr/bin:/bin"}, {"LC_ALL", "C.UTF-8"}}};
        start.words.insert(start.words.end(), words.begin(), words.end());
        const auto ended = run(start);
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_EQ(ended.err, "");
        Words lines;
        std::istringstream stream(ended.out);
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line.substr(0, line.find('\t')));
        return lines;
    }

    ToolWorld world;
};

const std::string completions = std::string(SOURCE_FOLDER) + "/tools/completions/";

TEST_F(CompletionTest, OffersWhatMayStandThere)
{
    for (const auto& [place, line, wanted] : lineCasesIn("completions.txt")) {
        Words offers = answered(ROSTER_TOOL, wordsOf("complete -- " + line));
        for (auto& offer : offers)
            if (offer.ends_with(' '))
                offer.replace(offer.size() - 1, 1, "·");
        EXPECT_THAT(offers, UnorderedElementsAreArray(wanted)) << place << " " << line;
    }
    EXPECT_FALSE(answered(ROSTER_TOOL, {"complete", "--"}).empty());
}

TEST_F(CompletionTest, LeavesPathsToTheShellAndMakesNoRoster)
{
    for (const Words& words : {Words{"import", ""}, Words{"--roster", ""}}) {
        const Words all{"complete", "--", words[0], words[1]};
        EXPECT_EQ(answered(ROSTER_TOOL, all), Words{""}) << words[0];
    }
    const auto nowhere = world.path("nowhere");
    EXPECT_EQ(
        answered(ROSTER_TOOL, wordsOf("complete -- --roster " + nowhere + " list --group ''")), Words());
    EXPECT_FALSE(std::filesystem::exists(nowhere));
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
        Words words;
        std::string current, offers;
    };
    const Case cases[] = {
        {"roster gro", {"roster", "gro"}, "gro", "group"},
        {"roster list --group ", {"roster", "list", "--group", ""}, "", R"(Friends|Old\ Friends|Found)"},
        {"roster list --group=O", {"roster", "list", "--group", "=", "O"}, "O", R"(Old\ Friends)"},
        {"roster list --sort=", {"roster", "list", "--sort", "="}, "", "first|last"},
        {"roster list --group 'Old", {"roster", "list", "--group", "'Old"}, "Old", "Old Friends"},
        {"roster show \"Ana O'", {"roster", "show", "\"Ana O'"}, "Ana O'", "Ana O'Ek"},
        {"roster show Ana\\ O", {"roster", "show", "Ana\\ O"}, "Ana\\ O", R"(Ana\ O\'Ek)"},
        {"roster show 'Ana O", {"roster", "show", "'Ana O"}, "Ana O", R"(Ana O'\''Ek)"},
        {"roster search --where 'Group m", {"roster", "search", "--where", "'Group m"}, "Group m",
            "Group member-of |Group member-of …"},
    };
    for (const auto& [line, words, current, offers] : cases) {
        Words all{"-c", bashScript, "bash", completions + "roster.bash", line, current};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_THAT(answered("/bin/bash", all), UnorderedElementsAreArray(parted(offers))) << line;
    }
}

constexpr char zshScript[] = "compadd() { print -rl -- ${(P)@[-1]} }; completion=$1; shift;"
                             "words=(\"$@\") CURRENT=$# PREFIX=${@[-1]}; source $completion";

TEST_F(CompletionTest, ZshGetsWholeWords)
{
    // The words as they were typed, the last one without the quote that it begins with.
    const std::pair<Words, std::string> cases[] = {
        {{"roster", "gro"}, "group"},
        {{"roster", "list", "--group", ""}, "Friends|Old Friends|Found"},
        {{"roster", "list", "--group=O"}, "--group=Old Friends"},
        {{"roster", "group", "add", "'Old Friends'", "Ana\\ L"}, "Ana Lima"},
        {{"roster", "search", "--where", "Group m"}, "Group member-of "},
    };
    for (const auto& [words, offers] : cases) {
        Words all{"-f", "-c", zshScript, "zsh", completions + "_roster"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_THAT(answered(ZSH, all), UnorderedElementsAreArray(parted(offers)))
            << testing::PrintToString(words);
    }
}

TEST_F(CompletionTest, FishCompletesItsCommandLine)
{
    const std::pair<std::string, std::string> cases[] = {
        {"roster gro", "group"},
        {"roster list --group ", "Friends|Old Friends|Found"},
        {"roster list --sort=l", "--sort=last"},
        {"roster show 'Ana L", "Ana Lima"},
        {"roster group add 'Old Friends' Ana\\ L", "Ana Lima"},
    };
    const std::string script = "source $argv[1]; complete -C $argv[2]";
    for (const auto& [line, offers] : cases)
        EXPECT_THAT(answered(FISH, {"--no-config", "-c", script, completions + "roster.fish", line}),
            UnorderedElementsAreArray(parted(offers)))
            << line;
}

} // namespace
