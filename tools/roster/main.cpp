// The command line: which command, with which options.
#include "Command.h"

#include "core/ZRFailure.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>

namespace {

using Run = int (*)(const Options&);

constexpr char watchHelp[] = R"(A save is one line a kind, in this order:
  {"process":{"id":N,"name":"…"},"kind":"inserted|updated|deleted","ids":[…],"names":[…]}
for people and groups, with the names in the order of the ids, null where none is known. The kind "reload",
without ids, stands for a save of more than 1,000 records, or for changes that nobody can name any more; its
process may be null. Equal saves in a row may be told once.

Standard error says "watching" when changes are heard from then on. SIGINT, SIGTERM and a reader that leaves
end it with status 0.)";

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
        addUpkeep();
    }

    CLI::App* add(const std::string& name, const std::string& what, Run command)
    {
        CLI::App* sub = app.add_subcommand(name, what);
        sub->callback([this, command] { run = command; });
        return sub;
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
        import->add_flag("--plan", options.plan, "Write nothing; print what would happen");
        import->add_flag("--explain", options.explain, "With --plan: print the cards as prepared");

        CLI::App* me = add("me", "Show the card of the user, or choose it", runMe);
        me->add_option("ID", options.words, "The unique id of a card, or text that finds one");
    }

    void addReading()
    {
        CLI::App* list = add("list", "List the people", runList);
        list->add_option("--sort", options.sort, "first or last name first")
            ->check(CLI::IsMember({"first", "last"}));
        list->add_option("--limit", options.limit, "At most this many");

        CLI::App* show = add("show", "Show one card, complete", runShow);
        show->add_option("ID|TEXT", options.words, "A unique id, or text in the card")->required();
    }

    void addUpkeep()
    {
        add("stats", "Count what is in the roster", runStats);
        add("check", "Check that the store is sound, and show its locks, versions and other holders",
            runCheck);
        addWatch();
    }

    void addWatch()
    {
        CLI::App* watch = add(
            "watch", "Print one JSON line for each change that any process saves, until stopped", runWatch);
        watch->add_flag("--once", options.once, "End after the first change");
        watch->footer(watchHelp);
    }
};

} // namespace

int main(int argc, char** argv)
{
    // Whoever reads our output may stop; the write then fails and says so.
    std::signal(SIGPIPE, SIG_IGN);
    CommandLine line;
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
