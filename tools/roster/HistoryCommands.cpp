// `roster undo`, `redo` and `history`: the steps that commands made, taken back, made again and listed.
#include "Command.h"

#include "history/ZRHistory.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

namespace {

using Status = ZRHistoryOutcome::Status;

std::string dateText(double date) { return platform::iso8601(platform::Date{date}); }

Json stepJson(const ZRHistoryEntry& step)
{
    return Json{{"number", step.number}, {"title", step.title}, {"date", dateText(step.date)}};
}

std::string countsText(std::size_t added, std::size_t changed, std::size_t removed)
{
    std::string text;
    for (const auto& [count, what] :
        {std::pair(added, "added"), std::pair(changed, "changed"), std::pair(removed, "removed")})
        if (count > 0)
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, what);
    return text.empty() ? "nothing left to change" : text;
}

void complainOfConflicts(const ZRHistoryOutcome& outcome)
{
    for (const auto& conflict : outcome.conflicts)
        complain(fmt::format("{} ({}) {}", conflict.name.empty() ? "a record without a name" : conflict.name,
            conflict.uniqueId, conflict.reason));
}

Json outcomeJson(const ZRHistoryOutcome& outcome)
{
    Json conflicts = Json::array();
    for (const auto& conflict : outcome.conflicts)
        conflicts.push_back(
            Json{{"id", conflict.uniqueId}, {"name", conflict.name}, {"reason", conflict.reason}});
    return Json{{"step", outcome.step ? stepJson(*outcome.step) : Json()},
        {"done", outcome.status == Status::done}, {"added", outcome.added}, {"changed", outcome.changed},
        {"removed", outcome.removed}, {"conflicts", conflicts}};
}

/// The exit status of what came of it, after a line about it on standard error where it failed.
int statusOf(const ZRHistoryOutcome& outcome, std::string_view verb)
{
    const std::string title = outcome.step ? outcome.step->title : "";
    switch (outcome.status) {
    case Status::done:
        return exitStatus::done;
    case Status::nothing:
        complain(fmt::format("there is nothing to {}", verb));
        return exitStatus::refused;
    case Status::inUse:
        complain(fmt::format("'{}' is still at work; nothing was changed", title));
        return exitStatus::refused;
    case Status::conflict:
        complainOfConflicts(outcome);
        complain(fmt::format(
            "cannot {} '{}': others changed that since; --force goes on all the same", verb, title));
        return exitStatus::refused;
    case Status::failed:
        complain(outcome.error.text);
        return exitStatus::noStore;
    }
    return exitStatus::noStore;
}

int report(const Options& options, const ZRHistoryOutcome& outcome, std::string_view verb, const char* done)
{
    const int status = statusOf(outcome, verb);
    if (options.json)
        printJson(outcomeJson(outcome));
    else if (outcome.status == Status::done)
        print(fmt::format("{} '{}': {}\n", done, outcome.step->title,
            countsText(outcome.added, outcome.changed, outcome.removed)));
    return status;
}

ZRHistoryForce forceOf(const Options& options)
{
    return options.force ? ZRHistoryForce::yes : ZRHistoryForce::no;
}

std::string lineOf(const ZRHistoryEntry& step)
{
    return fmt::format("{:>6}  {}  {}{}  ({} added, {} changed, {} removed)\n", step.number,
        dateText(step.date), step.title, step.isUndone ? "  [undone]" : "", step.added, step.changed,
        step.removed);
}

Json entryJson(const ZRHistoryEntry& step)
{
    Json json = stepJson(step);
    json["undone"] = step.isUndone;
    json["added"] = step.added;
    json["changed"] = step.changed;
    json["removed"] = step.removed;
    json["size"] = step.size;
    return json;
}

int clearHistory(const Options& options, ZRHistory& history)
{
    if (const auto cleared = history.clear(); !cleared)
        throw Failure(exitStatus::noStore, cleared.error().text);
    options.json ? printJson(Json{{"cleared", true}}) : print("The history is empty\n");
    return exitStatus::done;
}

} // namespace

int runUndo(const Options& options)
{
    const auto roster = openRoster(options);
    return report(options, ZRHistory(*roster).undo(forceOf(options)), "undo", "Undid");
}

int runRedo(const Options& options)
{
    const auto roster = openRoster(options);
    return report(options, ZRHistory(*roster).redo(forceOf(options)), "redo", "Redid");
}

int runHistory(const Options& options)
{
    const auto roster = openRoster(options);
    ZRHistory history(*roster);
    if (options.clear)
        return clearHistory(options, history);
    const auto steps = history.steps(options.limit);
    if (!steps)
        throw Failure(exitStatus::noStore, steps.error().text);
    Json json = Json::array();
    std::string text;
    for (const auto& step : *steps) {
        json.push_back(entryJson(step));
        text += lineOf(step);
    }
    options.json ? printJson(json) : print(text);
    return exitStatus::done;
}
