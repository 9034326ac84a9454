// `roster list`: the people in the order of their names.
#include "CardJson.h"
#include "Command.h"

#include <fmt/format.h>

int runList(const Options& options)
{
    const auto roster = openRoster(options);
    const auto order = options.sort == "first" ? ZRNameOrder::firstName
        : options.sort == "last"               ? ZRNameOrder::lastName
                                               : ZRNameOrder::preferred;
    const auto people = roster->sortedPeople(order, options.limit);
    if (options.json) {
        roster->prefetchDataForRecords(people);
        Json cards = Json::array();
        for (const auto& person : people)
            cards.push_back(cardJson(*person));
        printJson(cards);
        return exitStatus::done;
    }
    std::string text;
    for (const auto& person : people)
        text += fmt::format("{}  {}\n", person->uniqueId().substr(0, 8), displayName(*person));
    print(text);
    return exitStatus::done;
}
