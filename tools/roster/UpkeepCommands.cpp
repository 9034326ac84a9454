// `roster init`, `stats` and `check`: making a roster, counting it, and looking whether it is sound.
#include "Command.h"

#include <fmt/format.h>

int runInit(const Options& options)
{
    const auto roster = openRoster(options, options.withSamples);
    if (!roster->save())
        throw Failure(exitStatus::noStore, "not saved: " + roster->lastSaveError().text);
    if (options.json)
        printJson(Json{{"directory", roster->databaseDirectory()}});
    else
        print(fmt::format("A roster is in {}\n", roster->databaseDirectory()));
    return exitStatus::done;
}

int runStats(const Options& options)
{
    const auto roster = openRoster(options);
    const auto counts = roster->statistics();
    if (options.json) {
        Json json = Json::object();
        for (const auto& [name, count] : counts)
            json[name] = count;
        printJson(json);
        return exitStatus::done;
    }
    std::string text;
    for (const auto& [name, count] : counts)
        text += fmt::format("{:<24} {:>10}\n", name, count);
    print(text);
    return exitStatus::done;
}

int runCheck(const Options& options)
{
    const auto roster = openRoster(options);
    const auto report = roster->check();
    if (options.json)
        printJson(Json{
            {"sound", report.problems.empty()}, {"problems", report.problems}, {"remarks", report.remarks}});
    else {
        for (const auto& problem : report.problems)
            complain(problem);
        for (const auto& remark : report.remarks)
            print(remark + "\n");
        if (report.problems.empty())
            print("The roster is sound.\n");
    }
    return report.problems.empty() ? exitStatus::done : exitStatus::refused;
}
