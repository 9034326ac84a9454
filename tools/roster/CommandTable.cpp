// The table of commands as a whole, and how a command is written.
#include "CommandTable.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

std::string argumentText(const Argument& argument)
{
    switch (argument.count) {
    case Count::one:
        return std::string(argument.name);
    case Count::oneOrMore:
        return fmt::format("{}…", argument.name);
    case Count::atMostOne:
        return fmt::format("[{}]", argument.name);
    case Count::any:
        return fmt::format("[{}…]", argument.name);
    }
    return {};
}

std::vector<Command> joinedCommands()
{
    std::vector<Command> all;
    for (auto* const part : {exchangeCommands, readingCommands, cardCommands, groupCommands, upkeepCommands})
        for (auto& command : part())
            all.push_back(std::move(command));
    return all;
}

} // namespace

std::string Command::fullName() const
{
    return parent.empty() ? std::string(name) : fmt::format("{} {}", parent, name);
}

std::string Command::synopsis() const
{
    std::string text = "roster " + fullName();
    if (!run)
        return text + " COMMAND …";
    if (!options.empty())
        text += " [OPTION]…";
    for (const auto& argument : arguments)
        text += " " + argumentText(argument);
    return text;
}

const std::vector<Command>& allCommands()
{
    static const std::vector<Command> commands = joinedCommands();
    return commands;
}

const std::vector<Option>& globalOptions()
{
    static const std::vector<Option> options{
        {"--roster", "DIR", "The roster's directory (default: the user's roster)", &Options::directory, {},
            Offer::folders},
        {"--default", "KEY=VALUE", "Set a preference for this run; may be repeated", &Options::defaults, {},
            Offer::preferences},
        {"--json", "", "Print JSON for programs", &Options::json},
    };
    return options;
}

const Command* commandNamed(std::string_view parent, std::string_view name)
{
    const auto& all = allCommands();
    const auto found = std::ranges::find_if(
        all, [&](const auto& command) { return command.parent == parent && command.name == name; });
    return found == all.end() ? nullptr : &*found;
}

std::vector<const Command*> commandsIn(std::string_view parent)
{
    std::vector<const Command*> found;
    for (const auto& command : allCommands())
        if (command.parent == parent)
            found.push_back(&command);
    return found;
}

std::vector<Option> orderOptions()
{
    return {
        {"--sort", "ORDER", "The first or the last name first", &Options::sort, {"first", "last"}},
        {"--limit", "N", "At most this many", &Options::limit},
    };
}

std::vector<Option> ruleOptions()
{
    return {
        {"--where", "RULE", "A rule, as below; may be repeated", &Options::rules, {}, Offer::rules},
        {"--any", "", "One of the rules is enough", &Options::any},
        {"--first", "PREFIX", "The first name begins so", &Options::first},
    };
}

std::vector<Option> joinedOptions(std::initializer_list<std::vector<Option>> lists)
{
    std::vector<Option> all;
    for (const auto& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}
