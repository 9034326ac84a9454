// What the tool can be told: one table from which the parser, the help, the manual pages and the completions
// are made.
#pragma once

#include "Command.h"

#include <initializer_list>
#include <string_view>
#include <variant>

/// What a shell offers where a word is expected.
enum class Offer {
    nothing,
    files,
    folders,
    /// People by name, or groups where --groups was said.
    cards,
    groups,
    ordinaryGroups,
    smartGroups,
    /// What stands behind --set, --unset, --where and --default.
    changes,
    removals,
    rules,
    preferences,
    /// Email, Phone and Address; what a group reaches somebody by.
    reachProperties,
};

/// A flag that can be said either way.
struct Choice {
    std::optional<bool> Options::*field;
    bool value;
};

/// Where the parser puts what was typed.
using Place = std::variant<std::string Options::*, std::size_t Options::*,
    std::vector<std::string> Options::*, bool Options::*, Choice>;

enum class Count { one, oneOrMore, atMostOne, any };

struct Argument {
    std::string_view name;
    std::string_view meaning;
    Offer offer = Offer::nothing;
    Count count = Count::one;
    Place place = &Options::words;
};

struct Option {
    /// "--sort", or "-o,--output": a letter first.
    std::string_view name;
    /// What its value is called; empty for a flag.
    std::string_view value;
    /// Begins with a capital, as it stands in a list; without a full stop.
    std::string_view meaning;
    Place place;
    /// All values that there are, where they can be told.
    std::vector<std::string_view> choices = {};
    Offer offer = Offer::nothing;

    /// Without the letter: "--output".
    std::string_view longName() const { return name.substr(name.find("--")); }
    bool isFlag() const { return value.empty(); }
    /// Whether it may be said more than once.
    bool isRepeated() const { return std::holds_alternative<std::vector<std::string> Options::*>(place); }
};

struct Example {
    std::string_view line;
    /// A sentence about it.
    std::string_view meaning;
};

struct Command {
    /// "members" of "group"; a command that has others below it has nothing to run.
    std::string_view parent = {};
    std::string_view name = {};
    /// At most 26 characters, with a capital and without a full stop.
    std::string_view summary = {};
    int (*run)(const Options&) = nullptr;
    std::vector<Argument> arguments = {};
    std::vector<Option> options = {};
    /// What the help says below the options, in lines of at most 80 columns.
    std::string notes = {};
    std::vector<Example> examples = {};
    /// When the exit status is 1.
    std::string_view refusal = {};

    /// "group members"
    std::string fullName() const;
    /// "roster group members [--sort ORDER] GROUP"; options that are many are "[OPTION]…".
    std::string synopsis() const;
};

/// All commands, in the order of a list; those below another one directly behind it.
const std::vector<Command>& allCommands();
/// What may be said to every command.
const std::vector<Option>& globalOptions();
/// The command of that parent and name; null without one.
const Command* commandNamed(std::string_view parent, std::string_view name);
/// Those that stand in that one; the commands of the tool itself for an empty name.
std::vector<const Command*> commandsIn(std::string_view parent);

/// The parts of the table, a subject each.
std::vector<Command> exchangeCommands();
std::vector<Command> readingCommands();
std::vector<Command> cardCommands();
std::vector<Command> groupCommands();
std::vector<Command> upkeepCommands();

/// Options that several commands have.
std::vector<Option> orderOptions();
std::vector<Option> ruleOptions();
/// The lists one behind the other.
std::vector<Option> joinedOptions(std::initializer_list<std::vector<Option>> lists);
