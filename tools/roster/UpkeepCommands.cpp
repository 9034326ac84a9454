// `roster init` and `stats`: making a roster, and counting what is in it.
#include "Command.h"

#include <fmt/format.h>

int runInit(const Options& options)
{
    const auto roster = openRoster(options, options.withSamples);
    save(*roster);
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
