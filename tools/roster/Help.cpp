// How help is laid out: two columns, lines that a terminal of 80 columns shows whole.
#include "Help.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr std::size_t kColumns = 80;

std::size_t width(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

/// A line of two columns; what does not fit goes on below its beginning.
std::string entry(std::string_view label, std::string_view meaning, std::size_t indent)
{
    std::string text = fmt::format("  {}{}", label, std::string(indent - 2 - width(label), ' '));
    std::size_t column = indent;
    for (std::size_t from = 0; from < meaning.size();) {
        const auto to = std::min(meaning.find(' ', from), meaning.size());
        const auto word = meaning.substr(from, to - from);
        if (column > indent && column + 1 + width(word) > kColumns) {
            text += "\n" + std::string(indent, ' ');
            column = indent;
        }
        text += (column > indent ? " " : "") + std::string(word);
        column += width(word) + (column > indent ? 1 : 0);
        from = to + 1;
    }
    return text + "\n";
}

std::string labelOf(const Option& option)
{
    std::string text(option.name);
    if (const auto comma = text.find(','); comma != std::string::npos)
        text.insert(comma + 1, " ");
    return option.isFlag() ? text : fmt::format("{} {}", text, option.value);
}

using Entry = std::pair<std::string, std::string>;

std::string entries(const std::vector<Entry>& all)
{
    std::size_t indent = 0;
    for (const auto& [label, meaning] : all)
        indent = std::max(indent, width(label) + 4);
    std::string text;
    for (const auto& [label, meaning] : all)
        text += entry(label, meaning, indent);
    return text;
}

std::vector<Entry> entriesOf(const Command& command)
{
    std::vector<Entry> all;
    for (const auto& argument : command.arguments)
        all.emplace_back(argument.name, argument.meaning);
    for (const auto& option : command.options)
        all.emplace_back(labelOf(option), meaningOf(option));
    for (const auto* below : commandsIn(command.name))
        if (command.parent.empty())
            all.emplace_back(
                below->synopsis().substr(sizeof "roster" + command.name.size() + 1), below->summary);
    return all;
}

/// The commands of the tool in two columns, read downwards.
std::string commandColumns()
{
    const auto commands = commandsIn("");
    const std::size_t rows = (commands.size() + 1) / 2;
    std::string text;
    for (std::size_t row = 0; row < rows; ++row) {
        std::string line;
        for (std::size_t i = row; i < commands.size(); i += rows)
            line += fmt::format("  {:<11} {:<25}", commands[i]->name, commands[i]->summary);
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

} // namespace

std::string meaningOf(const Option& option)
{
    std::string choices;
    for (const auto choice : option.choices)
        choices += (choices.empty() ? "" : "|") + std::string(choice);
    return (choices.empty() ? "" : choices + ": ") + std::string(option.meaning);
}

std::string helpText()
{
    std::vector<Entry> options;
    for (const auto& option : globalOptions())
        options.emplace_back(labelOf(option), meaningOf(option));
    options.emplace_back("--help, --version", "Print this, or help on a COMMAND; print the version");
    return "Usage: roster [OPTION]… COMMAND …\nKeeps people: one contact store for all programs of a "
           "user.\n\n"
        + entries(options) + "\n" + commandColumns()
        + "\nExit status: 0 done; 1 nothing found or some input refused; 2 wrong usage;\n"
          "3 the store cannot be used. More: roster COMMAND --help, man roster.\n";
}

std::string helpText(const Command& command)
{
    std::string text = fmt::format("Usage: {}\n{}.\n", command.synopsis(), command.summary);
    if (const auto all = entriesOf(command); !all.empty())
        text += "\n" + entries(all);
    if (!command.notes.empty())
        text += "\n" + command.notes;
    if (!command.examples.empty())
        text += fmt::format("\nExample: {}\n", command.examples.front().line);
    return text
        + fmt::format("More: man roster-{}; options of all commands: roster --help\n",
            command.parent.empty() ? command.name : command.parent);
}
