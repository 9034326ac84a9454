// The profile of the global lock, and its file.
#include "core/ZRProfile.h"

#include "core/ZRLog.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

struct Entry {
    long calls = 0;
    double waited = 0;
    double held = 0;
    double longest = 0;
};
using Place = std::pair<std::string, long>;

struct Profile {
    platform::Mutex mutex{platform::LockRank::leaf};
    std::map<Place, Entry> entries ZR_GUARDED_BY(mutex);
    Entry* holder ZR_GUARDED_BY(mutex) = nullptr;
    double since ZR_GUARDED_BY(mutex) = 0;
};

Profile& profile()
{
    static const platform::NeverDestroyed<Profile> one;
    return *one;
}

double monotonic() { return platform::Clock::current().monotonic(); }

std::string lineOf(const Place& place, const Entry& entry)
{
    return fmt::format("{:>8} {:>10.6f} {:>10.6f} {:>10.6f}  {}:{}\n", entry.calls, entry.held, entry.longest,
        entry.waited, place.first, place.second);
}

} // namespace

double ZRProfile::now() { return __ZREnableSampling.load(std::memory_order_relaxed) ? monotonic() : 0; }

void ZRProfile::lockWasTaken(const char* file, long line, double requestedAt)
{
    if (requestedAt == 0)
        return;
    const double taken = monotonic();
    const platform::Lock guard(profile().mutex);
    Entry& entry = profile().entries[{file ? file : "", line}];
    ++entry.calls;
    entry.waited += taken - requestedAt;
    profile().holder = &entry;
    profile().since = taken;
}

void ZRProfile::lockIsGivenBack()
{
    if (now() == 0)
        return;
    const double held = monotonic();
    const platform::Lock guard(profile().mutex);
    Entry* const entry = std::exchange(profile().holder, nullptr);
    if (!entry)
        return;
    entry->held += held - profile().since;
    entry->longest = std::max(entry->longest, held - profile().since);
}

std::string ZRProfile::text()
{
    const platform::Lock guard(profile().mutex);
    std::vector<std::pair<Place, Entry>> byTime(profile().entries.begin(), profile().entries.end());
    std::ranges::stable_sort(byTime, std::greater(), [](const auto& one) { return one.second.held; });
    std::string all = byTime.empty() ? "" : "   calls     held s  longest s   waited s  place\n";
    for (const auto& [place, entry] : byTime)
        all += lineOf(place, entry);
    return all;
}

void ZRProfile::write()
{
    const std::string all = text();
    if (all.empty())
        return;
    const std::string directory = platform::Directories::current()->cacheHome() + "/Roster";
    auto written = platform::makePrivateDirectory(directory);
    if (written)
        written = platform::writeFileAtomically(
            fmt::format("{}/{}-{}.profile", directory, program_invocation_short_name, ::getpid()), all);
    if (!written)
        platform::log(written.error().text);
}
