// How a table becomes the sections of a manual page, and how these are put among the others.
#include "ManPage.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr std::string_view kHeading = ".SH ";
/// When somebody last went through the pages as a whole.
constexpr std::string_view kDay = "2026-11-22";

std::string upper(std::string text)
{
    std::ranges::transform(text, text.begin(),
        [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::string lowerFirst(std::string_view text)
{
    std::string result(text);
    if (result[0] >= 'A' && result[0] <= 'Z')
        result[0] = static_cast<char>(result[0] - 'A' + 'a');
    return result;
}

std::string withStop(std::string_view text) { return std::string(text) + (text.ends_with('.') ? "" : "."); }

ManSection section(std::string_view title, const std::string& body)
{
    return {std::string(title), fmt::format("{}{}\n{}", kHeading, title, body)};
}

std::string head(const std::string& name)
{
    return fmt::format(
        ".\\\" NAME, SYNOPSIS, OPTIONS, EXAMPLES and EXIT STATUS repeat the table of commands; the\n"
        ".\\\" other sections are written here. ROSTER_UPDATE_PAGES=1 man_pages_test brings them up to "
        "date.\n.TH {} 1 {} \"Roster\" \"Roster\"\n",
        upper(name), kDay);
}

ManSection name(const std::string& page, std::string_view summary)
{
    return section("NAME", fmt::format("{} \\- {}\n", roff(page), roff(lowerFirst(summary))));
}

// ---- arguments and options

std::string synopsisLine(const Command& command)
{
    const std::string all = command.synopsis(), named = "roster " + command.fullName();
    return fmt::format(".B {}\n{}", roff(named),
        all.size() > named.size() ? fmt::format(".I {}\n", roff(all.substr(named.size() + 1)))
                                  : std::string());
}

std::string tagged(const std::string& tag, std::string_view meaning)
{
    return fmt::format(".TP\n{}\n{}\n", tag, roff(withStop(meaning)));
}

std::string optionTag(const Option& option)
{
    std::string text;
    for (std::size_t from = 0; from < option.name.size();) {
        const auto to = std::min(option.name.find(',', from), option.name.size());
        text +=
            fmt::format("{}\\fB{}\\fR", text.empty() ? "" : ", ", roff(option.name.substr(from, to - from)));
        from = to + 1;
    }
    return option.isFlag() ? text : fmt::format("{} \\fI{}\\fR", text, roff(option.value));
}

std::string choicesText(const Option& option)
{
    std::string text;
    for (const auto choice : option.choices)
        text += (text.empty() ? "" : ", ") + fmt::format("\\fB{}\\fR", roff(choice));
    return text.empty() ? ""
                        : fmt::format("{} is {} {}.\n", roff(option.value),
                            option.choices.size() > 1 ? "one of" : "always", text);
}

std::string optionsText(const std::vector<Option>& options)
{
    std::string text;
    for (const auto& option : options)
        text += tagged(optionTag(option), option.meaning) + choicesText(option);
    return text;
}

std::string argumentsText(const Command& command)
{
    std::string text;
    for (const auto& argument : command.arguments)
        text += tagged(fmt::format("\\fI{}\\fR", roff(argument.name)), argument.meaning);
    return text;
}

std::string subcommandText(const Command& command)
{
    const std::string text = fmt::format(".SS {}\n{}.PP\n{}\n", roff(command.fullName()),
        synopsisLine(command), roff(withStop(command.summary)));
    return text + argumentsText(command) + optionsText(command.options);
}

ManSection options(const Command& command)
{
    std::string body = argumentsText(command) + optionsText(command.options);
    for (const auto* below : commandsIn(command.name))
        if (command.parent.empty())
            body += subcommandText(*below);
    return section("OPTIONS",
        body + (body.empty() ? "" : ".PP\n")
            + "The options of all commands, such as\n.B \\-\\-roster\nand\n.BR \\-\\-json ,\nare told "
              "in\n.BR roster (1).\n");
}

// ---- examples, exit status

ManSection examples(const std::vector<Example>& all)
{
    std::string body;
    for (const auto& example : all)
        body += fmt::format(
            ".PP\n{}\n.PP\n.RS 4\n.EX\n{}\n.EE\n.RE\n", roff(example.meaning), roff(example.line));
    return section("EXAMPLES", body.substr(sizeof ".PP"));
}

ManSection statuses(std::string_view refusal)
{
    std::string body = tagged("0", "Done");
    if (!refusal.empty())
        body += tagged("1", refusal);
    return section(
        "EXIT STATUS", body + tagged("2", "Wrong usage") + tagged("3", "The store cannot be used"));
}

// ---- the page

bool isHandWritten(const ManSection& one)
{
    for (const char* told : {"", "NAME", "SYNOPSIS", "OPTIONS", "EXAMPLES", "EXIT STATUS"})
        if (one.title == told)
            return false;
    return true;
}

/// The sections of a page in their usual order: description, then options; files and what else there is
/// behind the exit status.
std::string arranged(const std::string& front, const std::vector<ManSection>& told, const std::string& page)
{
    std::string description = ".SH DESCRIPTION\n", rest;
    for (const auto& one : sectionsOf(page))
        if (one.title == "DESCRIPTION")
            description = one.text;
        else if (isHandWritten(one))
            rest += one.text;
    std::string text = front;
    for (const auto& one : told)
        text += (one.title == "OPTIONS" ? description : "") + one.text;
    return text + rest;
}

std::string subcommandSynopsis(const Command& command)
{
    std::string text;
    for (const auto* below : commandsIn(command.name))
        text += (text.empty() ? "" : ".br\n") + synopsisLine(*below);
    return text;
}

std::string commandList()
{
    std::string text = ".SS Commands\n";
    for (const auto* command : commandsIn(""))
        text += fmt::format(
            ".TP\n.BR roster\\-{} (1)\n{}\n", roff(command->name), roff(withStop(command->summary)));
    return text;
}

} // namespace

std::string roff(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view rest = text.substr(i);
        if (rest.starts_with("…")) {
            result += "\\&...";
            i += std::string_view("…").size() - 1;
        } else if (text[i] == '-') {
            result += "\\-";
        } else if (text[i] == '\\') {
            result += "\\e";
        } else if (text[i] == '\'') {
            result += "\\(aq";
        } else {
            result += text[i];
        }
    }
    return result.starts_with('.') ? "\\&" + result : result;
}

std::vector<ManSection> sectionsOf(const std::string& page)
{
    std::vector<ManSection> sections;
    for (std::size_t from = 0; from < page.size();) {
        const auto next = page.find("\n.SH ", from);
        const auto to = next == std::string::npos ? page.size() : next + 1;
        std::string text = page.substr(from, to - from);
        std::string title;
        if (text.starts_with(kHeading))
            title = text.substr(kHeading.size(), text.find('\n') - kHeading.size());
        std::erase(title, '"');
        sections.push_back({std::move(title), std::move(text)});
        from = to;
    }
    return sections;
}

std::string pageOf(const Command& command, const std::string& page)
{
    const std::string title = "roster-" + std::string(command.name);
    return arranged(head(title),
        {name(title, command.summary),
            section("SYNOPSIS", command.run ? synopsisLine(command) : subcommandSynopsis(command)),
            options(command), examples(command.examples), statuses(command.refusal)},
        page);
}

std::string pageOfTool(const std::string& page)
{
    // The parser has these by itself; where they would put something is of no matter here.
    const std::vector<Option> standing{
        {"--help", "", "Print help, or behind a command help on it", &Options::json},
        {"--version", "", "Print the version", &Options::json}};
    return arranged(head("roster"),
        {name("roster", "Keep people: a contact store for all programs of a user"),
            section("SYNOPSIS", fmt::format(".B roster\n.I {}\n", roff("[OPTION]… COMMAND …"))),
            section("OPTIONS", optionsText(joinedOptions({globalOptions(), standing})) + commandList()),
            examples({
                {"roster import people.vcf", "Read a file of vCards; the first command makes the roster."},
                {"roster search lima porto", "Who has both words in the card?"},
                {"roster --json show Ana Lima", "One card, for a program."},
                {"roster undo", "Take back what the last command changed."},
            }),
            statuses("Nothing found, or some input was refused; what, is named on standard error")},
        page);
}
