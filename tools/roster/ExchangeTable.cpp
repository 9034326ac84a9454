// What the commands that read and write files of cards can be told.
#include "CommandTable.h"

namespace {

Command importing()
{
    return {
        .name = "import",
        .summary = "Read cards from files",
        .run = runImport,
        .arguments = {{"FILE", "vCard files, folders of them; - is standard input", Offer::files,
            Count::oneOrMore}},
        .options =
            {
                {"--format", "FORMAT", "The format, whatever the name says", &Options::format, {"vcard"}},
                {"--prepare", "HOW", "Mend what the world writes (default), or read it raw",
                    &Options::prepare, {"full", "none"}},
                {"--group", "NAME", "Put the people into this group; made if missing", &Options::group, {},
                    Offer::ordinaryGroups},
                {"--duplicates", "HOW",
                    "Whose name is there already: flow into that card (default),"
                    " replace it, keep it, or have both",
                    &Options::duplicates, {"update", "replace", "keep", "both"}},
                {"--groups", "", "Make groups of cards that are groups", &Options::groupCards},
                {"--groups-from-categories", "", "Put people into groups named like their categories",
                    &Options::groupsFromCategories},
                {"--plan", "", "Write nothing; print what would become of each card", &Options::plan},
                {"--explain", "", "With --plan: print the cards as prepared", &Options::explain},
            },
        .examples =
            {
                {"roster import --plan people.vcf",
                    "What would become of each card, and what would be lost."},
                {"roster import --group Guests people.vcf more/",
                    "Read a file and a folder, and put the people into a group."},
                {"gunzip -c old.vcf.gz | roster import --duplicates keep -",
                    "Add only those who are not there yet."},
            },
        .refusal = "There is no card in the input, or some cards were refused; each is named with its reason",
    };
}

Command exporting()
{
    return {
        .name = "export",
        .summary = "Write cards to a file",
        .run = runExport,
        .arguments = {{"QUERY", "Text in the card, or an id; everybody without", Offer::cards, Count::any}},
        .options =
            {
                {"--format", "FORMAT", "The form; vcard3 is the default", &Options::format,
                    {"vcard3", "vcard4", "vcard21", "json", "csv"}},
                {"--group", "NAME", "Those of this group, smart or not", &Options::group, {}, Offer::groups},
                {"-o,--output", "FILE", "The file, in place of standard output", &Options::output, {},
                    Offer::files},
                {"--with-photos", "", "Write pictures", Choice{&Options::withPhotos, true}},
                {"--no-photos", "", "Hold pictures back", Choice{&Options::withPhotos, false}},
                {"--with-notes", "", "Write notes", Choice{&Options::withNotes, true}},
                {"--no-notes", "", "Hold notes back", Choice{&Options::withNotes, false}},
                {"--with-groups", "", "Write groups as cards too; vcard4 alone", &Options::withGroups},
                {"--strict", "", "Write nothing when the form cannot hold everything", &Options::strict},
            },
        .notes = "Standard error names what was held back, and what the form has no place for.\n"
                 "roster-export(1) tells the columns of CSV.\n",
        .examples =
            {
                {"roster export -o all.vcf --with-photos --with-notes", "Everything that a vCard can hold."},
                {"roster export --group Friends --format csv -o friends.csv", "A group as a table."},
                {"roster export --strict --format vcard21 Lima",
                    "One card, or nothing if it would lose data."},
            },
        .refusal = "No card matches, or --strict refused a loss",
    };
}

} // namespace

std::vector<Command> exchangeCommands() { return {importing(), exporting()}; }
