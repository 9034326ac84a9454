// What the commands that make, change and remove cards can be told.
#include "CommandTable.h"

namespace {

constexpr std::string_view changeNotes =
    "Without options a card is edited as text, a vCard, in $VISUAL or $EDITOR. Else:\n"
    "  --set First=Ana                  a single value; days are written 1970-05-01\n"
    "  --set 'Email;home=a@b.c'         the first entry of that label, or a new one\n"
    "  --set 'Email;home+=a@b.c'        one more entry of that label\n"
    "  --set 'Address.City;home=Porto'  a part of an address\n";

constexpr std::string_view removalNotes = "  --unset Nickname                 the value, or all entries\n"
                                          "  --unset 'Email;home'             the entries of that label\n"
                                          "  --unset 'Email;home=a@b.c'       the entry with that value\n"
                                          "  --unset 'Address.State;home'     a part of an address\n";

Option setting()
{
    return {"--set", "PROPERTY=VALUE", "Set a value, as below; may be repeated", &Options::sets, {},
        Offer::changes};
}

Command adding()
{
    return {
        .name = "add",
        .summary = "Make a card",
        .run = runAdd,
        .options = {setting()},
        .notes = std::string(changeNotes),
        .examples =
            {
                {"roster add --set First=Ana --set 'Phone;mobile=+49 30 123456'",
                    "A card with a name and a number."},
                {"roster add", "Write the card in an editor."},
            },
        .refusal = "A value was refused, or the text of the editor cannot be read; it is kept in a file",
    };
}

Command editing()
{
    return {
        .name = "edit",
        .summary = "Change a card",
        .run = runEdit,
        .arguments = {{"ID|TEXT", "A unique id, or text in the card", Offer::cards, Count::oneOrMore}},
        .options = {setting(),
            {"--unset", "PROPERTY", "Take something out, before anything is set", &Options::unsets, {},
                Offer::removals}},
        .notes = std::string(changeNotes) + std::string(removalNotes),
        .examples =
            {
                {"roster edit Ana Lima --set 'Email;home=a@lima.example' --unset Nickname",
                    "Set one entry, and take a value out."},
                {"roster edit 5C86BDEB", "Change the card in an editor."},
            },
        .refusal = "No card or several cards are meant, or a value was refused",
    };
}

Command removing()
{
    return {
        .name = "remove",
        .summary = "Remove cards",
        .run = runRemove,
        .arguments = {{"ID|NAME", "Cards, by unique id or by their whole name", Offer::cards,
            Count::oneOrMore}},
        .notes = "All that are named go, or none. roster undo brings them back.\n",
        .examples = {{"roster remove 'Ana Lima' 5C86BDEB", "Two cards, by name and by the start of an id."}},
        .refusal = "One of the words names no card or several; then nothing is removed",
    };
}

Command choosingMe()
{
    return {
        .name = "me",
        .summary = "Show or choose your card",
        .run = runMe,
        .arguments = {{"ID|TEXT", "A unique id, or text in the card", Offer::cards, Count::any}},
        .examples =
            {
                {"roster me", "Show the card that is you."},
                {"roster me Ana Lima", "Choose it."},
            },
        .refusal = "No card is Me, or no card or several have the text",
    };
}

Command duplicates()
{
    return {
        .name = "duplicates",
        .summary = "Find and merge doubles",
        .run = runDuplicates,
        .options =
            {
                {"--kind", "KIND", "List this kind alone; may be repeated", &Options::kinds,
                    {"identical", "similar", "inner", "shared"}},
                {"--merge", "KIND", "Merge this kind; may be repeated", &Options::merges,
                    {"identical", "similar", "inner", "shared"}},
            },
        .notes = "  identical  equal in everything but ids, dates, groups and pictures\n"
                 "  similar    of the same name, in any case\n"
                 "  inner      a card that says something twice\n"
                 "  shared     of different names, with an address or a number in common\n"
                 "A merge leaves the card that came first; lists and notes grow by what is new.\n",
        .examples =
            {
                {"roster duplicates", "All kinds, each with its reason."},
                {"roster duplicates --merge identical --merge inner", "What is safe to merge unseen."},
            },
        .refusal = "There are no duplicates",
    };
}

Command merging()
{
    return {
        .name = "merge",
        .summary = "Make one card of several",
        .run = runMerge,
        .arguments = {{"ID|NAME", "Cards, by unique id or whole name; the first one wins", Offer::cards,
            Count::oneOrMore}},
        .notes = "The first card's values stay. What the others say joins the lists, or the note.\n",
        .examples = {{"roster merge 'Ana Lima' 5C86BDEB", "One new card; the two go."}},
        .refusal = "One of the words names no card or several; then nothing is merged",
    };
}

} // namespace

std::vector<Command> cardCommands()
{
    return {adding(), editing(), removing(), choosingMe(), duplicates(), merging()};
}
