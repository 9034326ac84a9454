// The table of what the reader has a place for, and the dates that it can read.
#include "interchange/vcard/prepare/Carry.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace vcard::prepare {

namespace {

constexpr auto kRows = std::to_array<Row>({
    {"N", Place::line, Count::one, Shape::fields, 5},
    {"FN", Place::line, Count::one},
    {"ADD", Place::line, Count::many, Shape::fields, 6, 6},
    {"ADR", Place::line, Count::many, Shape::fields, 7, 7},
    {"END", Place::bookkeeping},
    {"ORG", Place::line, Count::one, Shape::fields, 2},
    {"REV", Place::bookkeeping},
    {"TEL", Place::line},
    {"UID", Place::bookkeeping},
    {"URL", Place::line, Count::many, Shape::wholeLine},
    {"BDAY", Place::day, Count::one},
    {"NAME", Place::bookkeeping},
    {"NOTE", Place::note},
    {"AGENT", Place::bookkeeping},
    {"BEGIN", Place::bookkeeping},
    {"CLASS", Place::bookkeeping},
    {"EMAIL", Place::line},
    {"PHOTO", Place::picture, Count::one},
    {"TITLE", Place::line, Count::one},
    {"X-AIM", Place::line},
    {"X-ICQ", Place::line},
    {"X-MSN", Place::line},
    {"CALURI", Place::line, Count::many, Shape::wholeLine},
    {"MAILER", Place::bookkeeping},
    {"PRODID", Place::bookkeeping},
    {"SOURCE", Place::bookkeeping},
    {"PROFILE", Place::bookkeeping},
    {"VERSION", Place::frame},
    {"X-LABEL", Place::label},
    {"X-YAHOO", Place::line},
    {"X-ZRADR", Place::line, Count::many, Shape::fields},
    {"X-ZRUID", Place::line, Count::one},
    {"NICKNAME", Place::line, Count::one},
    {"X-JABBER", Place::line},
    {"X-ZRDATE", Place::day},
    {"SORT-STRING", Place::bookkeeping},
    {"X-ZRLABEL", Place::line, Count::many, Shape::fields},
    {"X-ZRORDER", Place::line, Count::one, Shape::fields},
    {"X-ZRPHOTO", Place::line, Count::one, Shape::fields},
    {"X-YAHOO-ID", Place::line},
    {"X-ZRSHOWAS", Place::line, Count::one, Shape::fields},
    {"X-MAIDENNAME", Place::line, Count::one},
    {"X-ZRRELATEDNAMES", Place::line},
    {"X-PHONETIC-LAST-NAME", Place::line, Count::one},
    {"X-PHONETIC-FIRST-NAME", Place::line, Count::one},
    {"X-PHONETIC-MIDDLE-NAME", Place::line, Count::one},
});

constexpr bool shorterOrBefore(std::string_view a, std::string_view b)
{
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

constexpr auto kSorted = [] {
    auto rows = kRows;
    std::sort(
        rows.begin(), rows.end(), [](const Row& a, const Row& b) { return shorterOrBefore(a.name, b.name); });
    return rows;
}();

constexpr std::size_t kLongest = kSorted.back().name.size();

/// Where the names of each length begin.
constexpr auto kStarts = [] {
    std::array<std::size_t, kLongest + 2> starts{};
    for (std::size_t length = 0; length < starts.size(); ++length)
        while (starts[length] < kSorted.size() && kSorted[starts[length]].name.size() < length)
            ++starts[length];
    return starts;
}();

constexpr bool isTableSound()
{
    for (std::size_t i = 0; i < kSorted.size(); ++i) {
        if (i > 0 && !shorterOrBefore(kSorted[i - 1].name, kSorted[i].name))
            return false;
        for (const char c : kSorted[i].name)
            if (c != upper(c) || !isNameCharacter(c))
                return false;
        if (kSorted[i].fields != 0 && kSorted[i].shape != Shape::fields)
            return false;
    }
    return true;
}
static_assert(isTableSound(), "names are unique and upper-case, and only fields are counted");

std::optional<int> number(std::string_view digits)
{
    int value = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

std::span<const Row> carryTable() { return kSorted; }

const Row* rowOf(std::string_view name)
{
    if (name.empty() || name.size() > kLongest)
        return nullptr;
    for (auto at = kStarts[name.size()]; at < kStarts[name.size() + 1]; ++at)
        if (equalInAnyCase(kSorted[at].name, name))
            return &kSorted[at];
    return nullptr;
}

std::optional<std::size_t> lengthOfDay(std::string_view value)
{
    const bool dashes = value.size() >= 10 && value[4] == '-' && value[7] == '-';
    const std::size_t length = dashes ? 10 : 8;
    if (value.size() < length)
        return std::nullopt;
    const auto year = number(value.substr(0, 4));
    const auto month = number(value.substr(dashes ? 5 : 4, 2));
    const auto day = number(value.substr(dashes ? 8 : 6, 2));
    if (!year || !month || !day || *year == 0)
        return std::nullopt;
    using namespace std::chrono;
    if (!year_month_day{std::chrono::year{*year} / *month / *day}.ok())
        return std::nullopt;
    if (value.size() > length && value[length] != 'T' && value[length] != ' ')
        return std::nullopt;
    return length;
}

} // namespace vcard::prepare
