// How the table of commands becomes a parser, and what was typed a wish.
#include "CommandLine.h"

#include "Help.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <limits>

namespace {

class Parser {
public:
    Parser()
    {
        _app.set_version_flag("--version", ROSTER_VERSION);
        _app.require_subcommand(0, 1);
        _app.fallthrough();
        for (const auto& option : globalOptions()) {
            CLI::Option* added = add(_app, option);
            if (!option.isFlag() && !option.isRepeated())
                added->take_last();
        }
        for (const Command* command : commandsIn(""))
            add(_app, *command);
    }

    Wish read(int argc, char** argv)
    {
        Wish wish;
        try {
            _app.parse(argc, argv);
            if (!_command)
                throw Failure(exitStatus::usage, "say what to do" + whereHelpIs(_app));
            wish.command = _command;
        } catch (const CLI::CallForVersion&) {
            wish.text = ROSTER_VERSION "\n";
        } catch (const CLI::CallForHelp&) {
            wish.text = helpOf(_app, "");
        } catch (const CLI::ExtrasError&) {
            const bool hasCommand = !_app.get_subcommands().empty();
            throw Failure(exitStatus::usage,
                fmt::format("{}: {}{}", hasCommand ? "nothing is known of" : "there is no command",
                    fmt::join(_app.remaining(true), " "), whereHelpIs(_app)));
        } catch (const CLI::ParseError& error) {
            throw Failure(exitStatus::usage, error.what() + whereHelpIs(_app));
        }
        wish.options = std::move(_options);
        return wish;
    }

private:
    void add(CLI::App& to, const Command& command)
    {
        CLI::App* sub = to.add_subcommand(std::string(command.name), std::string(command.summary));
        if (command.run)
            sub->callback([this, &command] { _command = &command; });
        else
            sub->require_subcommand(1);
        addArguments(*sub, command);
        for (const auto& option : command.options)
            add(*sub, option);
        if (command.parent.empty())
            for (const Command* below : commandsIn(command.name))
                add(*sub, *below);
    }

    /// Arguments that go to the same list are one to the parser, which fills a list from one place only.
    void addArguments(CLI::App& to, const Command& command)
    {
        std::string names;
        int least = 0, most = 0;
        for (const auto& argument : command.arguments) {
            const std::string name(argument.name);
            if (auto* const single = std::get_if<std::string Options::*>(&argument.place)) {
                to.add_option(name, _options.*(*single))->required();
                continue;
            }
            names += (names.empty() ? "" : " ") + name;
            least += argument.count == Count::one || argument.count == Count::oneOrMore;
            const bool isMany = argument.count == Count::oneOrMore || argument.count == Count::any;
            most = isMany ? std::numeric_limits<int>::max() / 2 : most + 1;
        }
        if (most == 0)
            return;
        CLI::Option* words = to.add_option(names, _options.words);
        if (least > 0)
            words->required();
        words->expected(std::max(least, 1), most);
    }

    CLI::Option* add(CLI::App& to, const Option& option)
    {
        CLI::Option* added = std::visit([&](auto place) { return add(to, option, place); }, option.place);
        if (!option.isFlag())
            added->type_name(std::string(option.value));
        if (!option.choices.empty())
            added->check(
                CLI::IsMember(std::vector<std::string>(option.choices.begin(), option.choices.end())));
        return added;
    }

    template <class Value>
    CLI::Option* add(CLI::App& to, const Option& option, Value Options::*field)
    {
        return to.add_option(std::string(option.name), _options.*field);
    }

    CLI::Option* add(CLI::App& to, const Option& option, std::vector<std::string> Options::*field)
    {
        return to.add_option(std::string(option.name), _options.*field)->allow_extra_args(false);
    }

    CLI::Option* add(CLI::App& to, const Option& option, bool Options::*field)
    {
        return to.add_flag(std::string(option.name), _options.*field);
    }

    CLI::Option* add(CLI::App& to, const Option& option, Choice choice)
    {
        return to.add_flag_callback(
            std::string(option.name), [this, choice] { _options.*choice.field = choice.value; });
    }

    /// The help on the innermost command that was typed.
    static std::string helpOf(const CLI::App& app, std::string_view parent)
    {
        const auto typed = app.get_subcommands();
        if (typed.empty())
            return helpText();
        const Command* const command = commandNamed(parent, typed.front()->get_name());
        return typed.front()->get_subcommands().empty() ? helpText(*command)
                                                        : helpOf(*typed.front(), command->name);
    }

    /// What to add to a complaint: which command tells how it is used.
    static std::string whereHelpIs(const CLI::App& app)
    {
        std::string command = "; see roster";
        for (auto typed = app.get_subcommands(); !typed.empty(); typed = typed.front()->get_subcommands())
            command += " " + typed.front()->get_name();
        return command + " --help";
    }

    CLI::App _app{"", "roster"};
    Options _options;
    const Command* _command = nullptr;
};

/// What was typed, for people who look at the history: without the options that only say which roster and how
/// to print.
std::string titleOf(int argc, char** argv)
{
    constexpr std::size_t longest = 200;
    std::string title;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--roster" || word == "--default")
            ++i;
        else if (word != "--json" && !word.starts_with("--roster=") && !word.starts_with("--default="))
            title += (title.empty() ? "" : " ") + word;
    }
    if (title.size() <= longest)
        return title;
    std::size_t end = longest;
    while ((static_cast<unsigned char>(title[end]) & 0xc0) == 0x80)
        --end;
    return title.substr(0, end) + "…";
}

} // namespace

Wish readCommandLine(int argc, char** argv)
{
    Wish wish = Parser().read(argc, argv);
    wish.options.title = titleOf(argc, argv);
    return wish;
}
