// What the commands that look after the roster can be told.
#include "CommandTable.h"

namespace {

constexpr std::string_view stepNotes =
    "Whatever one command changes is one step, an import of many cards too. A step\n"
    "whose records others changed since is refused, and they are named.\n";

Command making()
{
    return {
        .name = "init",
        .summary = "Make an empty roster",
        .run = runInit,
        .options = {{"--with-samples", "", "Put the sample cards and a Me card in", &Options::withSamples}},
        .examples = {{"roster --roster /tmp/try init --with-samples", "A roster to play with."}},
    };
}

Command replaying(
    std::string_view name, std::string_view summary, int (*run)(const Options&), Example example)
{
    return {
        .name = name,
        .summary = summary,
        .run = run,
        .options = {{"--force", "", "Also where others changed records since", &Options::force}},
        .notes = std::string(stepNotes),
        .examples = {example},
        .refusal = "There is no step, its command is still at work, or others changed its records",
    };
}

Command history()
{
    return {
        .name = "history",
        .summary = "List the steps",
        .run = runHistory,
        .options = {{"--limit", "N", "At most this many", &Options::limit},
            {"--clear", "", "Forget all steps; records stay as they are", &Options::clear}},
        .examples = {{"roster history --limit 5", "The last five steps, the last one first."}},
    };
}

Command checking()
{
    return {
        .name = "check",
        .summary = "Check the store",
        .run = runCheck,
        .examples = {{"roster check", "Whether it is sound, who holds it, and which versions are at work."}},
        .refusal = "Something is wrong with the store; each finding is printed",
    };
}

Command watching()
{
    return {
        .name = "watch",
        .summary = "Tell of changes",
        .run = runWatch,
        .options = {{"--once", "", "End after the first change", &Options::once}},
        .notes = "Prints a line of JSON for each change that any process saves, until stopped:\n"
                 "  {\"process\":{\"id\":N,\"name\":\"…\"},\"kind\":\"inserted|updated|deleted\",\n"
                 "   \"ids\":[…],\"names\":[…]}\n"
                 "Standard error says \"watching\" when changes are heard from then on.\n",
        .examples =
            {
                {"roster watch | while read -r line; do refresh-my-list; done",
                    "Do something at each change."},
                {"roster watch --once", "Wait for the next change."},
            },
    };
}

Command completing()
{
    return {
        .name = "complete",
        .summary = "Offer words to a shell",
        .run = runComplete,
        .arguments = {{"WORD", "What was typed behind \"roster\", the word to complete last", Offer::nothing,
            Count::any}},
        .notes = "Options stand behind --. Prints WORD<TAB>MEANING, a line each. A line that\n"
                 "begins with a tab says that files or folders are meant. It makes no roster, and\n"
                 "is silent about what is wrong.\n",
        .examples = {{"roster complete -- group members ''", "The groups that may stand there."}},
    };
}

} // namespace

std::vector<Command> upkeepCommands()
{
    return {
        making(),
        replaying("undo", "Take back the last step", runUndo,
            {"roster undo", "Take back what the last command changed."}),
        replaying("redo", "Make it again", runRedo, {"roster redo", "Make the step again that was undone."}),
        history(),
        {.name = "stats",
            .summary = "Count what is there",
            .run = runStats,
            .examples = {{"roster stats --json", "The counts for a program."}}},
        checking(),
        watching(),
        completing(),
    };
}
