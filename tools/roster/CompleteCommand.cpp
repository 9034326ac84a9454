// `roster complete`: what may stand next on a command line, for the shells.
#include "CommandTable.h"
#include "Help.h"
#include "Offers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

namespace {

using Words = std::span<const std::string>;

/// The path as the shell will have it: words come as they are typed.
std::string atHome(const std::string& path)
{
    const char* const home = std::getenv("HOME");
    return home && path.starts_with("~/") ? home + path.substr(1) : path;
}

/// How far a command line was typed: what is known of the word that comes next.
class Typed {
public:
    explicit Typed(Words words)
    {
        for (const auto& word : words)
            read(word);
    }

    /// The words that may stand there, and what of them was typed.
    std::vector<Candidate> candidates(const std::string& text) const
    {
        if (_pending)
            return valuesOf(*_pending, text, "");
        if (!_onlyArguments && text.starts_with("--") && text.find('=') != std::string::npos)
            return valuesBehind(text);
        if (!_onlyArguments && text.starts_with('-'))
            return optionsLike(text);
        const bool isOpen = !_command || !_command->run;
        return isOpen ? commandsLike(text) : offered(offer(), text, _options);
    }

    /// Which kind of path is meant; nothing where none is.
    Offer path() const
    {
        const Offer wanted = _pending ? _pending->offer : _command ? offer() : Offer::nothing;
        return wanted == Offer::files || wanted == Offer::folders ? wanted : Offer::nothing;
    }

private:
    void read(const std::string& word)
    {
        if (_pending)
            take(*std::exchange(_pending, nullptr), word);
        else if (_onlyArguments || !word.starts_with('-') || word == "-")
            readArgument(word);
        else if (word == "--")
            _onlyArguments = true;
        else
            readOption(word);
    }

    void readArgument(const std::string& word)
    {
        if (_command && _command->run)
            ++_arguments;
        else if (const Command* const next = commandNamed(_command ? _command->name : "", word))
            _command = next;
    }

    void readOption(const std::string& word)
    {
        const auto equals = word.find('=');
        const Option* const option = optionNamed(word.substr(0, equals));
        if (!option)
            return;
        if (option->isFlag())
            take(*option, "");
        else if (equals == std::string::npos)
            _pending = option;
        else
            take(*option, word.substr(equals + 1));
    }

    /// What decides which roster is asked, and for what.
    void take(const Option& option, const std::string& value)
    {
        if (option.name == "--roster")
            _options.directory = atHome(value);
        else if (option.name == "--default")
            _options.defaults.push_back(value);
        else if (option.name == "--groups")
            _options.asGroups = true;
    }

    std::vector<const Option*> options() const
    {
        std::vector<const Option*> all;
        if (_command)
            for (const auto& option : _command->options)
                all.push_back(&option);
        for (const auto& option : globalOptions())
            all.push_back(&option);
        return all;
    }

    const Option* optionNamed(const std::string& name) const
    {
        for (const auto* option : options())
            if (option->longName() == name || (name.size() == 2 && option->name.starts_with(name + ",")))
                return option;
        return nullptr;
    }

    std::vector<Candidate> optionsLike(const std::string& text) const
    {
        std::vector<Candidate> found;
        for (const auto* option : options())
            if (option->longName().starts_with(text))
                found.push_back({std::string(option->longName()), std::string(option->meaning)});
        if (std::string_view("--help").starts_with(text))
            found.push_back({"--help", "Print help"});
        return found;
    }

    std::vector<Candidate> commandsLike(const std::string& text) const
    {
        std::vector<Candidate> found;
        for (const auto* command : commandsIn(_command ? _command->name : ""))
            if (command->name.starts_with(text))
                found.push_back({std::string(command->name), std::string(command->summary)});
        return found;
    }

    std::vector<Candidate> valuesOf(
        const Option& option, const std::string& text, const std::string& front) const
    {
        std::vector<Candidate> found;
        for (const auto choice : option.choices)
            if (choice.starts_with(text))
                found.push_back({front + std::string(choice), ""});
        for (auto& [word, meaning] : offered(option.offer, text, _options))
            found.push_back({front + word, meaning});
        return found;
    }

    /// "--format=js" is completed as a whole.
    std::vector<Candidate> valuesBehind(const std::string& text) const
    {
        const auto equals = text.find('=');
        const Option* const option = optionNamed(text.substr(0, equals));
        return option && !option->isFlag()
            ? valuesOf(*option, text.substr(equals + 1), text.substr(0, equals + 1))
            : std::vector<Candidate>();
    }

    Offer offer() const
    {
        std::size_t at = 0;
        for (const auto& argument : _command->arguments) {
            const bool isMany = argument.count == Count::oneOrMore || argument.count == Count::any;
            if (isMany || at++ == _arguments)
                return argument.offer;
        }
        return Offer::nothing;
    }

    const Command* _command = nullptr;
    const Option* _pending = nullptr;
    std::size_t _arguments = 0;
    bool _onlyArguments = false;
    Options _options;
};

std::string lines(const std::vector<Candidate>& candidates)
{
    const auto field = [](std::string text) {
        std::ranges::replace_if(
            text, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
        return text;
    };
    std::string text;
    for (const auto& candidate : candidates)
        text += fmt::format("{}{}{}\n", field(candidate.word), candidate.meaning.empty() ? "" : "\t",
            field(candidate.meaning));
    return text;
}

} // namespace

int runComplete(const Options& options)
{
    const Words words = options.words;
    try {
        const Typed typed(words.first(words.empty() ? 0 : words.size() - 1));
        const Offer path = typed.path();
        const auto found = typed.candidates(words.empty() ? "" : words.back());
        print(found.empty() && path != Offer::nothing ? path == Offer::files ? "\tfiles\n" : "\tfolders\n"
                                                      : lines(found));
    } catch (
        const std::exception&) { // NOLINT(bugprone-empty-catch): who types is not told of a store's state
    }
    return exitStatus::done;
}
