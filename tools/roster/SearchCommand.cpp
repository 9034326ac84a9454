// `roster search`: the people that terms and rules find, in the order of their names.
#include "Command.h"
#include "Listing.h"
#include "Rules.h"

#include "core/ZRPerson.h"
#include "search/ZRSearchElement.h"

#include <fmt/format.h>

namespace {

Json explanationJson(const ZRSearchElement& element, const std::vector<ZRSearchRoute>& routes)
{
    Json json{{"element", element.description()}, {"classes", Json::array()}};
    for (const auto& route : routes)
        json["classes"].push_back(Json{{"class", route.recordClass}, {"predicate", route.predicate},
            {"sql", route.sql}, {"plan", route.plan}});
    return json;
}

/// What cannot be asked of the store has neither predicate nor SQL.
std::string explanationText(const ZRSearchElement& element, const std::vector<ZRSearchRoute>& routes)
{
    std::string text = fmt::format("element    {}\n", element.description());
    for (const auto& route : routes) {
        text += fmt::format("class      {}\n", route.recordClass);
        text += fmt::format("predicate  {}\n", route.predicate.empty() ? "none" : route.predicate);
        text +=
            fmt::format("sql        {}\n", route.sql.empty() ? "none: every record is looked at" : route.sql);
        for (const auto& step : route.plan)
            text += fmt::format("plan       {}\n", step);
    }
    return text;
}

} // namespace

int runSearch(const Options& options)
{
    if (options.words.empty() && options.rules.empty() && options.first.empty())
        throw Failure(exitStatus::usage, "say what to look for: terms, --first or --where");
    const auto roster = openRoster(options);
    const auto element = elementOfOptions(options, *roster);
    if (options.explain) {
        const auto routes = roster->explainSearch(element);
        options.json ? printJson(explanationJson(*element, routes))
                     : print(explanationText(*element, routes));
        return exitStatus::done;
    }
    auto people = roster->recordsMatchingSearchElement(element);
    arrange(options, *roster, people);
    if (people.empty() && !options.json)
        throw Failure(exitStatus::refused, "no card matches");
    printRecords(options, *roster, people);
    return people.empty() ? exitStatus::refused : exitStatus::done;
}
