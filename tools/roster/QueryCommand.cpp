// `roster query`: mail addresses for a mail program that completes what is typed.
#include "AddressCompletion.h"
#include "Command.h"
#include "Lookup.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

/// Tabs and line ends are the format's own.
std::string field(std::string text)
{
    std::ranges::replace_if(
        text, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::string lines(const std::vector<AddressCompletion>& found)
{
    std::string text;
    for (const auto& completion : found)
        text += fmt::format(
            "{}\t{}\t{}\n", field(completion.address), field(completion.name), field(completion.label));
    return text;
}

/// Mail programs that wait for a status line take the first line for it, whatever it says.
std::string statusLine(const std::string& text, std::size_t count, std::size_t limit)
{
    if (count == 0)
        return fmt::format("Nothing found for {}\n", field(text));
    if (count == limit)
        return fmt::format("The best {} for {}\n", count, field(text));
    return fmt::format("{} found for {}\n", count, field(text));
}

Json completionsJson(const std::vector<AddressCompletion>& found)
{
    Json json = Json::array();
    for (const auto& completion : found)
        json.push_back(Json{{"address", completion.address}, {"name", completion.name},
            {"label", completion.label}, {"id", completion.personId}});
    return json;
}

} // namespace

int runQuery(const Options& options)
{
    const std::string text = joined(options.words);
    if (text.find_first_not_of(" \t\n") == std::string::npos)
        throw Failure(exitStatus::usage, "say what to look for");
    const auto roster = openRoster(options);
    const auto found = addressCompletions(*roster, text, options.completions);
    if (options.json || options.format == "json")
        printJson(completionsJson(found));
    else if (options.format == "aerc")
        print(lines(found));
    else
        print(statusLine(text, found.size(), options.completions) + lines(found));
    return found.empty() ? exitStatus::refused : exitStatus::done;
}
