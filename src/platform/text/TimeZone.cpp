// The rules of time zones, and when the local one is looked up anew.
#include "platform/text/Dates.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace platform {

// No ICU zone means GMT, whose moments cost nothing to convert.
struct TimeZone::Rules {
    const std::unique_ptr<const icu::BasicTimeZone> zone;
};

namespace {

constexpr std::string_view kZoneFolder = "/usr/share/zoneinfo/";

/// Counts how often the local zone was to be forgotten.
std::atomic<unsigned> generation = 0;

// All zones of ICU are of this class; a null answer stands for a name that it does not know.
std::unique_ptr<const icu::BasicTimeZone> basic(std::unique_ptr<icu::TimeZone> zone)
{
    if (!zone || *zone == icu::TimeZone::getUnknown())
        return nullptr;
    auto* basicZone = dynamic_cast<icu::BasicTimeZone*>(zone.get());
    if (basicZone)
        static_cast<void>(zone.release());
    return std::unique_ptr<const icu::BasicTimeZone>(basicZone);
}

std::unique_ptr<const icu::BasicTimeZone> zoneOfName(std::string_view name)
{
    const icu::UnicodeString id =
        icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())});
    return basic(std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(id)));
}

std::string idOfSystemZone()
{
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString id;
    std::string name;
    return zone ? zone->getID(id).toUTF8String(name) : name;
}

// The name behind TZ, in the forms of POSIX: a name, one behind a colon, or a path. Rules spelt out are left
// to ICU's guess, and so is a TZ that is not set. An empty one means GMT.
std::string nameOfVariable(const char* variable)
{
    std::string_view name = variable ? variable : "";
    if (name.starts_with(':'))
        name.remove_prefix(1);
    if (name.starts_with(kZoneFolder))
        name.remove_prefix(kZoneFolder.size());
    if (variable && name.empty())
        return "GMT";
    return variable && zoneOfName(name) ? std::string(name) : idOfSystemZone();
}

bool isGMT(std::string_view name)
{
    return name == "GMT" || name == "UTC" || name == "Etc/UTC" || name == "Zulu" || name == "Z";
}

} // namespace

TimeZone TimeZone::gmt()
{
    static const Rules* const rules = new Rules{};
    return TimeZone(rules);
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    static std::mutex mutex;
    static auto* const known = new std::unordered_map<std::string, const Rules*>;
    if (isGMT(name))
        return gmt();
    const std::lock_guard lock(mutex);
    std::string key(name);
    if (const auto found = known->find(key); found != known->end())
        return TimeZone(found->second);
    auto zone = zoneOfName(name);
    if (!zone)
        return std::nullopt;
    const Rules* rules = known->emplace(std::move(key), new Rules{std::move(zone)}).first->second;
    return TimeZone(rules);
}

// Every name leads to rules that stay, so a thread remembers only which ones TZ last meant, and since when.
TimeZone TimeZone::local()
{
    thread_local std::optional<std::string> variable;
    thread_local const Rules* rules = nullptr;
    thread_local unsigned seen = 0;
    const char* now = std::getenv("TZ");
    const unsigned current = generation.load(std::memory_order_relaxed);
    const bool isSame =
        rules && seen == current && variable.has_value() == (now != nullptr) && (!now || *variable == now);
    if (!isSame) {
        seen = current;
        const auto zone = named(nameOfVariable(now));
        rules = (zone ? *zone : gmt())._rules;
        variable = now ? std::optional<std::string>(now) : std::nullopt;
    }
    return TimeZone(rules);
}

void TimeZone::forgetLocal() { generation.fetch_add(1, std::memory_order_relaxed); }

std::string TimeZone::name() const
{
    if (!_rules->zone)
        return "GMT";
    icu::UnicodeString id;
    std::string name;
    return _rules->zone->getID(id).toUTF8String(name);
}

double TimeZone::offsetFromGMT(Date moment) const
{
    if (!_rules->zone)
        return 0;
    UErrorCode status = U_ZERO_ERROR;
    int32_t raw = 0, daylight = 0;
    _rules->zone->getOffset(moment.seconds * 1000, false, raw, daylight, status);
    return (raw + daylight) / 1000.0;
}

double TimeZone::offsetFromLocal(double localSeconds) const
{
    if (!_rules->zone)
        return 0;
    UErrorCode status = U_ZERO_ERROR;
    int32_t raw = 0, daylight = 0;
    _rules->zone->getOffsetFromLocal(
        localSeconds * 1000, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, raw, daylight, status);
    return (raw + daylight) / 1000.0;
}

} // namespace platform
