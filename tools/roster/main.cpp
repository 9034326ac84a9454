// The command line: which command, with which options.
#include "Command.h"
#include "Rules.h"

#include "core/ZRFailure.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <csignal>
#include <exception>
#include <tuple>

namespace {

using Run = int (*)(const Options&);

constexpr char watchHelp[] = R"(A save is one line a kind, in this order:
  {"process":{"id":N,"name":"…"},"kind":"inserted|updated|deleted","ids":[…],"names":[…]}
for people and groups, with the names in the order of the ids, null where none is known. The kind "reload",
without ids, stands for a save of more than 1,000 records, or for changes that nobody can name any more; its
process may be null. Equal saves in a row may be told once.

Standard error says "watching" when changes are heard from then on. SIGINT, SIGTERM and a reader that leaves
end it with status 0.)";

constexpr char ruleHelp[] =
    R"(A rule is PROPERTY OPERATOR VALUE. Property is a name as "roster show --json" prints it, in any case, with a
part of an address ("Address.City") and a label ("Email;work") where wanted; "Card" is the whole card and
"Group" the groups that a card is in. Value is text, a number, a day (1970-05-01), an interval ("7 days",
"2 weeks", "1 month", "1 year", or seconds) or a group by name or id ("any" for any group), in double quotes
where it begins or ends with a blank. Operators:
)";

constexpr char changeHelp[] =
    R"(Property is a name as "roster show --json" prints it, in any case. Behind a semicolon stands a label, one of
the property's own ("home", "work", "mobile") or one of yours; without one the primary entry is meant. Dates
are days, as 1970-05-01.
  --set First=Ana                    a single value
  --set 'Email;home=a@b.c'           the first entry of that label; one is added where there is none
  --set 'Email;home+=a@b.c'          one more entry of that label
  --set 'Address.City;home=Porto'    a part: Street, City, State, ZIP, Country, CountryCode
  --unset Nickname                   the value, or all entries
  --unset 'Email;home'               the entries of that label
  --unset 'Email;home=a@b.c'         the entry with that value
  --unset 'Address.State;home'       a part
Without these the card is edited as text, a vCard, in $VISUAL or $EDITOR: what differs then is applied, and
nothing else. An unchanged text changes nothing; one that cannot be read is kept in a file that is named.)";

constexpr char exportHelp[] =
    R"(Without these flags the preferences ZRIncludeNotesInVCard and ZRIncludePhotosInVCard decide, as for every
vCard; JSON and CSV hold notes unless --no-notes. Standard error names what was held back, and what the form
has no place for. JSON is what "roster list --json" prints. Cards come in the order of a list; everybody's
vCards in that in which they came into the roster.

CSV (RFC 4180, UTF-8) has a line of titles: Id, then the properties as "roster show --json" names them, in the
order of a card, custom ones last, ZRPersonFlags and the groups behind them. Properties with several entries
have numbered columns, as many as any of the cards needs and one at least: "Email 1 Label", "Email 1 Value";
"Address 1 Label", then its Street, City, State, ZIP, Country and CountryCode; "Group 1". Labels are English
words or your own; days are written 1970-05-01.)";

constexpr char historyHelp[] =
    R"(Whatever one command changes is one step, an import of many cards too. undo takes the last step back, redo
makes it again; a new step drops what was undone. Records that others changed since are named, and then nothing
is changed; --force goes on all the same, as far as it can. The last 1,000 steps and 64 MB are kept, a bigger
step by itself. See docs/history.md.)";

constexpr char duplicatesHelp[] =
    R"(Kinds of duplicates:
  identical  equal in everything but ids, dates of making and change, groups and pictures
  similar    of the same name, in any case
  inner      a card that says something twice: numbers that dial the same, texts that differ in punctuation
  shared     of different names, with an e-mail address or telephone number in common
A merge leaves the card that came first. It joins the groups of the others, is Me if one of them was, and takes
their single values and pictures; lists and notes grow by what is new. "similar" merges identical cards, too;
"shared" puts together cards that have each nothing but a card in common. Exit status 1 when there are none.)";

struct CommandLine {
    CLI::App app{"Keeps people: a contact store for the desktop", "roster"};
    Options options;
    Run run = nullptr;

    CommandLine()
    {
        app.set_version_flag("--version", ROSTER_VERSION);
        app.require_subcommand(0, 1);
        app.fallthrough();
        app.add_option("--roster", options.directory, "The roster's directory (default: the user's roster)")
            ->take_last();
        app.add_option("--default", options.defaults, "Set a preference for this run: KEY=VALUE")
            ->type_name("KEY=VALUE")
            ->allow_extra_args(false);
        app.add_flag("--json", options.json, "Print JSON for programs");
        app.footer(
            "Exit status: 0 done; 1 nothing found or some input refused; 2 wrong usage; 3 the store cannot "
            "be used.");
        addWriting();
        addReading();
        addSearching();
        addGroups();
        addSmartGroups();
        addUpkeep();
        addHistory();
    }

    CLI::App* add(const std::string& name, const std::string& what, Run command)
    {
        return add(app, name, what, command);
    }

    CLI::App* add(CLI::App& to, const std::string& name, const std::string& what, Run command)
    {
        CLI::App* sub = to.add_subcommand(name, what);
        sub->callback([this, command] { run = command; });
        return sub;
    }

    void addGroup(CLI::App* to)
    {
        to->add_option("GROUP", options.group, "A group, by name or unique id")->required();
    }

    void addOrder(CLI::App* to)
    {
        to->add_option("--sort", options.sort, "first or last name first")
            ->check(CLI::IsMember({"first", "last"}));
        to->add_option("--limit", options.limit, "At most this many");
    }

    void addRules(CLI::App* to)
    {
        to->add_option("--where", options.rules, "A rule, as below; may be repeated")
            ->type_name("RULE")
            ->allow_extra_args(false);
        to->add_flag("--any", options.any, "One of the rules is enough");
        to->add_option("--first", options.first, "The first name begins so")->type_name("PREFIX");
        to->footer(ruleHelp + ruleOperators());
    }

    void addWriting()
    {
        CLI::App* init = add("init", "Make an empty roster", runInit);
        init->add_flag("--with-samples", options.withSamples, "Put the sample cards and a Me card in");

        CLI::App* import = add("import", "Read cards from files into the roster", runImport);
        import->add_option("FILE", options.words, "vCard files; - is standard input")->required();
        import->add_option("--format", options.format, "The format, whatever the name says")
            ->check(CLI::IsMember({"vcard"}));
        import->add_option("--prepare", options.prepare, "full: mend what the world writes; none: read raw")
            ->check(CLI::IsMember({"full", "none"}))
            ->capture_default_str();
        import
            ->add_option("--group", options.group, "Put the people into this group; made where it is missing")
            ->type_name("NAME");
        import
            ->add_option("--duplicates", options.duplicates,
                "Whose name is there already: update the card (as without this, unless the preference "
                "ZRDontAutoMerge is true: then both), replace it, keep it and pass the new one over, or both")
            ->check(CLI::IsMember({"update", "replace", "keep", "both"}));
        import->add_flag("--plan", options.plan, "Write nothing; print what would become of each card");
        import->add_flag("--explain", options.explain, "With --plan: print the cards as prepared");

        addChanging();
        addExport();

        CLI::App* me = add("me", "Show the card of the user, or choose it", runMe);
        me->add_option("ID", options.words, "The unique id of a card, or text that finds one");
    }

    void addChanging()
    {
        CLI::App* make = add("add", "Make a card", runAdd);
        CLI::App* edit = add("edit", "Change a card", runEdit);
        edit->add_option("ID|TEXT", options.words, "A unique id, or text in the card")->required();
        for (CLI::App* changing : {make, edit}) {
            changing->add_option("--set", options.sets, "Set a value, as below; may be repeated")
                ->type_name("PROPERTY=VALUE")
                ->allow_extra_args(false);
            changing->footer(changeHelp);
        }
        edit->add_option("--unset", options.unsets, "Take something out, before anything is set")
            ->type_name("PROPERTY")
            ->allow_extra_args(false);
        CLI::App* remove = add("remove", "Remove cards: all that are named, or none", runRemove);
        remove->add_option("ID|NAME", options.words, "Cards, by unique id or by their name")->required();
        addMerging();
    }

    void addMerging()
    {
        const auto isKind = CLI::IsMember({"identical", "similar", "inner", "shared"});
        CLI::App* duplicates =
            add("duplicates", "List cards that stand for one person, or merge them", runDuplicates);
        duplicates->add_option("--kind", options.kinds, "List this kind alone; may be repeated")
            ->check(isKind)
            ->allow_extra_args(false);
        duplicates->add_option("--merge", options.merges, "Merge this kind; may be repeated")
            ->check(isKind)
            ->allow_extra_args(false);
        duplicates->footer(duplicatesHelp);
        CLI::App* merge = add("merge", "Make one new card of several, which go", runMerge);
        merge
            ->add_option("ID|NAME", options.words, "Cards, by unique id or by their name; the first one wins")
            ->required();
        merge->footer("The first card's values stay. What the others say joins the lists, or the note.");
    }

    static void addChoice(
        CLI::App& sub, std::string_view name, std::string_view what, std::optional<bool>& choice)
    {
        sub.add_flag_callback(
            fmt::format("--with-{}", name), [&choice] { choice = true; }, fmt::format("Write {}", what));
        sub.add_flag_callback(
            fmt::format("--no-{}", name), [&choice] { choice = false; }, fmt::format("Hold {} back", what));
    }

    void addExport()
    {
        CLI::App* sub = add("export", "Write cards for other programs", runExport);
        sub->add_option("QUERY", options.words, "Text somewhere in the card, or an id; everybody without");
        sub->add_option("--format", options.format, "The form")
            ->check(CLI::IsMember({"vcard3", "vcard4", "vcard21", "json", "csv"}))
            ->default_str("vcard3");
        sub->add_option("--group", options.group, "Those of this group, smart or not")->type_name("NAME");
        sub->add_option("-o,--output", options.output, "The file, in place of standard output")
            ->type_name("FILE");
        addChoice(*sub, "photos", "pictures", options.withPhotos);
        addChoice(*sub, "notes", "notes", options.withNotes);
        sub->add_flag("--with-groups", options.withGroups,
            "Write groups as cards too, of which only vcard4 has a kind: that of --group, or all but smart "
            "ones");
        sub->add_flag("--strict", options.strict, "Write nothing when the form cannot hold everything");
        sub->footer(exportHelp);
    }

    void addReading()
    {
        CLI::App* list = add("list", "List the people", runList);
        list->add_option("--group", options.group, "Those of this group, smart or not")->type_name("NAME");
        addOrder(list);

        CLI::App* show = add("show", "Show one card, complete", runShow);
        show->add_option("ID|TEXT", options.words, "A unique id, or text in the card")->required();
    }

    void addSearching()
    {
        CLI::App* search = add("search", "Find people by text in their cards and by rules", runSearch);
        search->add_option("TERM", options.words, "Text somewhere in the card; all terms must be there");
        addRules(search);
        search->add_flag("--explain", options.explain, "Print how the store is asked instead of asking it");
        addOrder(search);

        CLI::App* query = add("query", "Complete mail addresses, the best first", runQuery);
        query->add_option("TEXT", options.words, "Words of a name or of an address, or a phone number")
            ->required();
        query->add_option("--format", options.format, "mutt: a status line first; aerc: none; json")
            ->check(CLI::IsMember({"mutt", "aerc", "json"}))
            ->default_str("mutt");
        query->add_option("--limit", options.completions, "At most this many; 0: all")->capture_default_str();
        query->footer(
            "Prints ADDRESS<TAB>NAME<TAB>LABEL. Best are names of which a word begins so, then addresses "
            "that do, then whatever else has the text.");
    }

    void addGroups()
    {
        CLI::App* group = app.add_subcommand("group", "Groups of people and of groups");
        group->require_subcommand(1);
        add(*group, "list", "List the groups", runGroupList);
        addShared(*group);
        CLI::App* make = add(*group, "make", "Make a group", runGroupMake);
        make->add_option("NAME", options.words, "Its name")->required();
        make->add_option("--in", options.group, "The group that it goes into")->type_name("GROUP");
        for (const auto& [name, what, command] :
            {std::tuple{"add", "Put people into a group", Run(runGroupAdd)},
                std::tuple{"remove", "Take people out of a group; their cards stay", Run(runGroupRemove)}}) {
            CLI::App* change = add(*group, name, what, command);
            addGroup(change);
            change->add_option("WHO", options.words, "People, by unique id or text in their card")
                ->required();
            change->add_flag("--groups", options.asGroups, "WHO are groups");
        }
        addGroup(add(*group, "subgroups", "List the groups in a group", runGroupSubgroups));
        CLI::App* reach =
            add(*group, "reach", "Show or choose the entry by which a group reaches a person", runGroupReach);
        addGroup(reach);
        reach
            ->add_option("PERSON PROPERTY ENTRY", options.words,
                "The person; then, to choose, Email, Phone or Address, and an entry by value, label or id")
            ->required()
            ->expected(1, 3);
        addGroup(add(*group, "show", "Show a group, complete", runGroupShow));
    }

    void addSmartGroups()
    {
        CLI::App* group = app.add_subcommand("smart-group", "Groups whose members are found by rules");
        group->require_subcommand(1);
        group->preparse_callback([this](std::size_t) { options.smart = true; });
        add(*group, "list", "List the smart groups", runGroupList);
        addShared(*group);
        CLI::App* make = add(*group, "make", "Make a smart group", runSmartGroupMake);
        make->add_option("NAME", options.words, "Its name")->required();
        CLI::App* edit = add(*group, "edit", "Give a smart group other rules", runSmartGroupEdit);
        addGroup(edit);
        for (CLI::App* rules : {make, edit}) {
            addRules(rules);
            rules->add_flag_callback(
                "--track", [this] { options.tracks = true; }, "It notes that its members change");
            rules->add_flag_callback(
                "--no-track", [this] { options.tracks = false; }, "It does not");
        }
        edit->add_flag("--seen", options.seen, "Its changes were seen");
        addGroup(add(*group, "show", "Show a smart group, its rules and members", runSmartGroupShow));
    }

    /// What groups of both kinds can do.
    void addShared(CLI::App& group)
    {
        CLI::App* members = add(group, "members", "List the people in a group", runGroupMembers);
        addGroup(members);
        addOrder(members);
        members->add_flag("--deep", options.deep, "Those of the groups in it, too");
        CLI::App* rename = add(group, "rename", "Give a group another name", runGroupRename);
        addGroup(rename);
        rename->add_option("NAME", options.words, "The new name")->required();
        CLI::App* remove = add(group, "delete", "Delete groups; the people in them stay", runGroupDelete);
        remove->add_option("GROUP", options.words, "Groups, by name or unique id")->required();
    }

    void addUpkeep()
    {
        add("stats", "Count what is in the roster", runStats);
        add("check", "Check that the store is sound, and show its locks, versions and other holders",
            runCheck);
        addWatch();
    }

    void addHistory()
    {
        for (CLI::App* replay : {add("undo", "Take back the last step: what one command changed", runUndo),
                 add("redo", "Make the step again that was undone last", runRedo)}) {
            replay->add_flag("--force", options.force, "Also where records were changed since by others");
            replay->footer(historyHelp);
        }
        CLI::App* history = add("history", "List the steps, the last one first", runHistory);
        history->add_option("--limit", options.limit, "At most this many");
        history->add_flag("--clear", options.clear, "Forget all steps; records stay as they are");
        history->footer(historyHelp);
    }

    void addWatch()
    {
        CLI::App* watch = add(
            "watch", "Print one JSON line for each change that any process saves, until stopped", runWatch);
        watch->add_flag("--once", options.once, "End after the first change");
        watch->footer(watchHelp);
    }
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

int main(int argc, char** argv)
{
    // Whoever reads our output may stop; the write then fails and says so.
    std::signal(SIGPIPE, SIG_IGN);
    CommandLine line;
    line.options.title = titleOf(argc, argv);
    try {
        line.app.parse(argc, argv);
        if (!line.run)
            throw Failure(exitStatus::usage, "say what to do; see roster --help");
        return line.run(line.options);
    } catch (const CLI::Success& help) {
        return line.app.exit(help);
    } catch (const CLI::ParseError& error) {
        complain(error.what() + std::string("; see roster --help"));
        return exitStatus::usage;
    } catch (const Failure& failure) {
        if (*failure.what() != '\0')
            complain(failure.what());
        return failure.status;
    } catch (const std::exception& error) {
        complain(error.what());
        return exitStatus::noStore;
    }
}
