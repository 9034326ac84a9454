// The helper program of the user's session: one process that does what others leave to it.
#include "SpoolDuty.h"

#include "platform/files/Files.h"
#include "platform/processes/Helper.h"
#include "platform/processes/Launch.h"
#include "platform/processes/MessagePort.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

using namespace platform;

namespace {

constexpr int kWrongUsage = 2;
/// How long it stays with nothing to do.
constexpr double kIdleSeconds = 180;
/// Then it looks again in any case: the user may have set the clock, or removed the run-time directory.
constexpr double kLongestSleep = 30;
/// So that what cannot be taken out of the spool, on a full or read-only disk, does not keep it busy.
constexpr double kShortestSleep = 0.5;

constexpr char kUsage[] =
    "usage: zrd [--foreground | --once] [--idle SECONDS]\n"
    "\n"
    "Runs the commands that programs of this user have scheduled, each in its time. Programs start it\n"
    "themselves when they need it; a second one ends at once.\n"
    "\n"
    "  --foreground     stay in the foreground and report on standard error\n"
    "  --once           run what is due, wait for it, and end\n"
    "  --idle SECONDS   end after so long with nothing scheduled (default: 180)\n"
    "  --help           print this\n"
    "\n"
    "Exit status: 0 done, or another one runs; 1 the helper cannot work; 2 wrong usage.\n";

enum class Mode { background, foreground, once, help, wrong };

struct Options {
    Mode mode = Mode::background;
    double idleSeconds = kIdleSeconds;
};

bool readSeconds(const char* text, double& seconds)
{
    char* end = nullptr;
    seconds = text ? std::strtod(text, &end) : -1;
    return end && *end == '\0' && end != text && seconds >= 0 && seconds < 1e9;
}

Options optionsOf(int count, char** words)
{
    Options options;
    for (int at = 1; at < count; ++at) {
        const std::string_view word = words[at];
        if (word == "--foreground")
            options.mode = Mode::foreground;
        else if (word == "--once")
            options.mode = Mode::once;
        else if (word == "--help")
            return {Mode::help};
        else if (word != "--idle" || !readSeconds(++at < count ? words[at] : nullptr, options.idleSeconds))
            return {Mode::wrong};
    }
    return options;
}

int fail(const Error& error)
{
    std::fprintf(stderr, "zrd: %s\n", error.text.c_str());
    return EXIT_FAILURE;
}

/// The name of the helper for as long as its result lives. A message needs no answer but a turn of the loop.
Result<std::unique_ptr<ServedPort>> takeName()
{
    return MessagePort::serve(kHelperPort, [](std::uint32_t message, std::string_view) {
        if (message != kLookAfterYourWork)
            log("Message " + std::to_string(message) + " is unknown");
        return std::string();
    });
}

/// Works until nothing was scheduled or under way for so long, or nobody can reach the helper any more.
void work(SpoolDuty& duty, const ServedPort& port, double idleSeconds)
{
    double busyAt = Clock::current().monotonic();
    while (port.isReachable()) {
        duty.look();
        const double now = Clock::current().monotonic();
        const auto next = duty.secondsToNext();
        if (next || duty.underWay() > 0)
            busyAt = now;
        const double idleLeft = busyAt + idleSeconds - now;
        if (!next && duty.underWay() == 0 && idleLeft <= 0)
            return;
        const double sleep = std::min({next.value_or(kLongestSleep), std::max(idleLeft, 0.0), kLongestSleep});
        MainQueue::shared().runOnce(std::max(sleep, kShortestSleep));
    }
}

int stay(const Options& options)
{
    for (;;) {
        const auto port = takeName();
        if (!port)
            return port.error().code == EADDRINUSE ? EXIT_SUCCESS : fail(port.error());
        SpoolDuty duty{Spool(userSpoolDirectory())};
        work(duty, **port, options.idleSeconds);
        const bool wasReachable = (*port)->isReachable();
        (*port)->invalidate();
        // Whoever put something there before the name was free believes that it was heard.
        if (!wasReachable || !duty.secondsToNext())
            return EXIT_SUCCESS;
    }
}

int serveOnce()
{
    const auto port = takeName();
    if (!port)
        return port.error().code == EADDRINUSE ? EXIT_SUCCESS : fail(port.error());
    SpoolDuty duty{Spool(userSpoolDirectory())};
    duty.look();
    while (duty.underWay() > 0)
        MainQueue::shared().runOnce(kLongestSleep);
    return EXIT_SUCCESS;
}

int startInBackground(double idleSeconds)
{
    const auto self = std::filesystem::read_symlink("/proc/self/exe").string();
    const auto started =
        launch({.program = self, .arguments = {"--foreground", "--idle", std::to_string(idleSeconds)}});
    return started ? EXIT_SUCCESS : fail(started.error());
}

int run(const Options& options)
{
    switch (options.mode) {
    case Mode::help:
        std::fputs(kUsage, stdout);
        return EXIT_SUCCESS;
    case Mode::wrong:
        std::fputs(kUsage, stderr);
        return kWrongUsage;
    case Mode::background:
        return startInBackground(options.idleSeconds);
    case Mode::foreground:
    case Mode::once:
        break;
    }
    setLogToStandardError(true);
    MainQueue::shared().fileDescriptor();
    return options.mode == Mode::once ? serveOnce() : stay(options);
}

} // namespace

int main(int count, char** words)
{
    try {
        return run(optionsOf(count, words));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "zrd: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
