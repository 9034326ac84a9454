// The sync tool: started after saves, one at a time for each client.
#include "SyncLog.h"

#include "platform/files/NamedClaim.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

namespace {

namespace exitStatus {
// The library that started us tells of statuses above 1 only: those are mistakes of ours.
constexpr int done = 0;
constexpr int noLog = 1;
constexpr int usage = 2;
constexpr int broken = 3;
} // namespace exitStatus

struct Options {
    std::string client;
    std::int64_t retryMinutes = 0;
};

void complain(const std::string& text) { std::fprintf(stderr, "RosterSync: %s\n", text.c_str()); }

void declare(CLI::App& app, Options& options)
{
    app.set_version_flag("--version", ROSTER_VERSION);
    app.add_option("--tricklesync", options.client, "Synchronise what this client has saved")
        ->type_name("CLIENTID")
        ->required()
        ->check([](const std::string& id) { return id.empty() ? "the client id is empty" : ""; });
    app.add_option("--retry", options.retryMinutes, "This is another try, so many minutes after the last one")
        ->type_name("MINUTES")
        ->check(CLI::PositiveNumber);
    app.footer("What would be synchronised is written to " + syncLogPath()
        + "; no service is connected.\nA second one for a client ends at once.\n"
          "Exit status: 0 done; 1 the log cannot be written; 2 wrong usage; 3 something is broken.");
}

int sync(const Options& options)
{
    const auto claim = platform::NamedClaim::take("org.quillon.Roster.sync:" + options.client);
    if (!claim) {
        complain(claim.error().text);
        return exitStatus::broken;
    }
    if (!*claim)
        return exitStatus::done;
    std::string line = "would sync " + options.client;
    if (options.retryMinutes > 0)
        line += ", tried again after " + std::to_string(options.retryMinutes) + " minutes";
    const auto written = appendToSyncLog(line);
    if (!written)
        complain(written.error().text);
    return written ? exitStatus::done : exitStatus::noLog;
}

int runTool(int argc, char** argv)
{
    CLI::App app{"Synchronises a roster; the library starts it after a save", "RosterSync"};
    Options options;
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        complain(error.what() + std::string("; see RosterSync --help"));
        return exitStatus::usage;
    }
    return sync(options);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return runTool(argc, argv);
    } catch (const std::exception& error) {
        complain(error.what());
        return exitStatus::broken;
    }
}
