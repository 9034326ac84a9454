// What the commands that look people up can be told.
#include "CommandTable.h"

namespace {

Command listing()
{
    return {
        .name = "list",
        .summary = "List the people",
        .run = runList,
        .options = joinedOptions(
            {{{"--group", "NAME", "Those of this group, smart or not", &Options::group, {}, Offer::groups}},
                orderOptions()}),
        .examples =
            {
                {"roster list --limit 20 --sort first", "The first twenty, by first name."},
                {"roster list --group Friends --json", "A group as an array of cards."},
            },
        .refusal = "There is no such group",
    };
}

Command showing()
{
    return {
        .name = "show",
        .summary = "Show one card, complete",
        .run = runShow,
        .arguments = {{"ID|TEXT", "A unique id, or text in the card", Offer::cards, Count::oneOrMore}},
        .examples =
            {
                {"roster show Ana Lima", "The one card that has both words."},
                {"roster show 5C86BDEB --json", "By the start of its id, for a program."},
            },
        .refusal = "No card has the text, or several have it; these are named with their ids",
    };
}

Command searching()
{
    return {
        .name = "search",
        .summary = "Find people",
        .run = runSearch,
        .arguments = {{"TERM", "Text somewhere in the card; all terms must be there", Offer::nothing,
            Count::any}},
        .options = joinedOptions({ruleOptions(),
            {{"--explain", "", "Print how the store is asked instead of asking it", &Options::explain}},
            orderOptions()}),
        .notes = "A rule is 'PROPERTY[.PART][;LABEL] OPERATOR VALUE', as 'Address.City = Porto',\n"
                 "'Birthday within-next 2 weeks' or 'Group member-of any'; roster-query(7) tells\n"
                 "which operators there are.\n",
        .examples =
            {
                {"roster search lima porto", "Both texts are somewhere in the card."},
                {"roster search --where 'Email;work contains example' --where 'Nickname is absent'",
                    "Both rules hold."},
                {"roster search --any --where 'First = Ana' --where 'First = Anna'", "Either holds."},
            },
        .refusal = "No card matches",
    };
}

Command querying()
{
    return {
        .name = "query",
        .summary = "Complete mail addresses",
        .run = runQuery,
        .arguments = {{"TEXT", "Words of a name or an address, or a number", Offer::nothing,
            Count::oneOrMore}},
        .options =
            {
                {"--format", "FORMAT", "A status line first (default), none, or JSON", &Options::format,
                    {"mutt", "aerc", "json"}},
                {"--limit", "N", "At most this many (default: 200); 0: all", &Options::completions},
            },
        .notes = "Prints ADDRESS<TAB>NAME<TAB>LABEL, the best first: names of which a word begins\n"
                 "so, then addresses that do, then whatever else has the text.\n",
        .examples =
            {
                {"roster query ana", "Addresses of people whose name or address has the text."},
                {"set query_command = \"roster query %s\"", "In the settings of mutt."},
                {"address-book-cmd = roster query --format aerc %s", "In the settings of aerc."},
            },
        .refusal = "Nothing was found",
    };
}

} // namespace

std::vector<Command> readingCommands() { return {listing(), showing(), searching(), querying()}; }
