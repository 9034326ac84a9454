// Help, manual pages and what shells are offered name the same options, and a command's help fits a screen.
#include "CommandTable.h"
#include "pages/Page.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace {

using namespace test;

using Names = std::set<std::string>;

std::vector<std::string> words(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string tool(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), ROSTER_TOOL);
    const auto ended = run({arguments});
    EXPECT_EQ(ended.status, 0) << testing::PrintToString(arguments) << ended.err;
    return ended.out;
}

std::string helpOn(const Command& command)
{
    auto arguments = words(command.fullName());
    arguments.emplace_back("--help");
    return tool(arguments);
}

/// The long options in the lines that begin so.
Names found(const std::string& text, std::string_view beginning)
{
    Names names;
    for (const auto& line : linesOf(text))
        if (const auto from = line.find("--"); from != std::string::npos && line.starts_with(beginning))
            names.insert(
                line.substr(from, line.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", from) - from));
    return names;
}

Names inHelp(const Command& command) { return found(helpOn(command), "  -"); }

/// In the part of a page that is about the command: of one with a parent, the subsection with its name.
Names inPage(const Command& command)
{
    const auto& topic = command.parent.empty() ? command.name : command.parent;
    std::string page = contentsOf(pagePath("man/roster-" + std::string(topic) + ".1"));
    for (auto at = page.find("\\-"); at != std::string::npos; at = page.find("\\-", at))
        page.erase(at, 1);
    page = page.substr(page.find(".SH OPTIONS"));
    if (!command.parent.empty()) {
        page = page.substr(page.find(".SS " + command.fullName() + "\n") + 1);
        page = page.substr(0, std::min(page.find("\n.SS "), page.find("\n.SH ")));
    }
    return found(page.substr(0, page.find("\n.SH ")), "\\fB-");
}

Names offered(const Command& command)
{
    auto arguments = words("complete -- " + command.fullName());
    arguments.emplace_back("--");
    Names names = found(tool(arguments), "-");
    for (const auto& option : globalOptions())
        EXPECT_EQ(names.erase(std::string(option.name)), 1U) << option.name;
    EXPECT_EQ(names.erase("--help"), 1U);
    return names;
}

TEST(Options, AreTheSameInHelpManualPageAndCompletion)
{
    std::size_t count = 0;
    for (const auto& command : allCommands()) {
        if (!command.run)
            continue;
        SCOPED_TRACE(command.fullName());
        const Names named = inHelp(command);
        EXPECT_EQ(inPage(command), named);
        EXPECT_EQ(offered(command), named);
        count += named.size();
    }
    EXPECT_GT(count, allCommands().size());
}

std::size_t columns(const std::string& line)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(line, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

void expectScreen(const std::string& help)
{
    const auto lines = linesOf(help);
    EXPECT_LE(lines.size(), 24U) << help;
    for (const auto& line : lines)
        EXPECT_LE(columns(line), 80U) << line;
}

TEST(Help, FitsAScreen)
{
    expectScreen(tool({"--help"}));
    for (const auto& command : allCommands())
        expectScreen(helpOn(command));
}

TEST(Help, NamesEveryCommand)
{
    const auto help = words(tool({"--help"}));
    for (const auto* command : commandsIn(""))
        EXPECT_NE(std::ranges::find(help, command->name), help.end()) << command->name;
}

} // namespace
