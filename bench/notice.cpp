// How long it takes until the observers of other processes know what was saved.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "platform/notify/NotificationCenter.h"
#include "store/ZRRoster.h"
#include "support/Commands.h"
#include "support/Measure.h"
#include "support/OpenRoster.h"

#include <fmt/format.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace {

using platform::Value;

constexpr int kListeners = 8;

/// All processes of a machine read the same one.
double monotonic()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Hears of so many new cards, each of which says when its save began, and prints how old each news was.
int listen(const std::string& directory, std::size_t saves)
{
    const auto roster = bench::openRoster(directory);
    std::mutex mutex;
    std::condition_variable heardAll;
    std::vector<double> ages;
    const auto token = platform::NotificationCenter::shared().subscribe(
        kZRDatabaseChangedExternallyNotification, roster.get(), [&](const platform::Notification& notice) {
            const double now = monotonic();
            for (const Value& id : notice.userInfo[zr::kZRInsertedRecords].asArray())
                if (const auto card = roster->recordForUniqueId(id.asText())) {
                    const Value began = card->valueForProperty(zr::kZRJobTitleProperty);
                    const std::lock_guard guard(mutex);
                    ages.push_back(now - std::strtod(std::string(began.asText()).c_str(), nullptr));
                }
            heardAll.notify_one();
        });
    fmt::print("ready\n");
    std::fflush(stdout);
    std::unique_lock lock(mutex);
    if (!heardAll.wait_for(lock, std::chrono::minutes(5), [&] { return ages.size() >= saves; }))
        bench::fail(fmt::format("heard of {} of {} saves", ages.size(), saves));
    for (const double age : ages)
        fmt::print("{:.9f}\n", age);
    return 0;
}

FILE* startListener(const std::string& directory, std::size_t saves)
{
    const auto self = std::filesystem::read_symlink("/proc/self/exe").string();
    FILE* const pipe = popen(fmt::format("'{}' listen '{}' {}", self, directory, saves).c_str(), "r");
    char line[64];
    if (!pipe || !std::fgets(line, sizeof line, pipe) || std::string_view(line) != "ready\n")
        bench::fail("a listener could not be started");
    return pipe;
}

/// Saves so many new cards, one after the other, while eight processes listen.
int notice(const std::string& directory, std::size_t saves)
{
    const auto roster = bench::openRoster(directory);
    std::vector<FILE*> listeners;
    for (int i = 0; i < kListeners; ++i)
        listeners.push_back(startListener(directory, saves));
    std::vector<double> saving;
    for (std::size_t i = 0; i < saves; ++i) {
        const auto person = ZRPerson::initWithRoster(roster);
        person->setValue(Value(fmt::format("Card{}", i)), zr::kZRLastNameProperty);
        const double began = monotonic();
        person->setValue(Value(fmt::format("{:.9f}", began)), zr::kZRJobTitleProperty);
        if (!roster->save())
            bench::fail(roster->lastSaveError().text);
        saving.push_back(monotonic() - began);
    }
    bench::Result result("notice", "roster", directory, saves);
    char line[64];
    for (FILE* const listener : listeners) {
        while (std::fgets(line, sizeof line, listener))
            result.add(std::strtod(line, nullptr), 0);
        if (pclose(listener) != 0)
            bench::fail("a listener has not heard everything");
    }
    result.note("save_median_s", bench::percentile(saving, 0.5));
    result.note("listeners", kListeners);
    result.print();
    return 0;
}

constexpr bench::Command kCommands[] = {{"notice", notice}, {"listen", listen}};

} // namespace

int main(int count, char** arguments)
{
    return bench::runCommand(kCommands, {arguments, static_cast<std::size_t>(count)},
        "notice ROSTER SAVES\nIt adds a card a save: give it a roster of its own.");
}
