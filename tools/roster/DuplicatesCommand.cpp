// `roster duplicates`: cards that stand for one person, listed with the reason, and merged where that is
// asked.
#include "CardJson.h"
#include "Command.h"

#include "core/ZRLabels.h"
#include "core/ZRPerson.h"
#include "merge/DuplicateMerge.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>

namespace {

enum Kind : std::size_t { identical, similar, inner, shared };

struct KindWords {
    std::string_view name;
    /// The title of a list of them, and why cards are in it where they say it no nearer.
    std::string_view title, reason;
};
constexpr std::array kinds = {
    KindWords{"identical", "Identical cards", "all is equal but ids, dates, groups and pictures"},
    KindWords{"similar", "Cards of the same name", "the same name"},
    KindWords{"inner", "Cards that say something twice", ""},
    KindWords{"shared", "Cards of different names that share an address or a number", ""},
};

bool isWanted(const std::vector<std::string>& names, std::size_t kind)
{
    return std::ranges::find(names, kinds[kind].name) != names.end();
}

/// What is listed: a card that is identical to another is not told again as one of the same name.
ZRDuplicateBuckets listed(const ZRDuplicates& found, std::size_t kind)
{
    switch (kind) {
    case identical:
        return found.identical;
    case similar:
        return found.similarAlone();
    case inner:
        return found.inner;
    default:
        return found.shared;
    }
}

/// What is merged. Cards of one name become one whether or not some of them are identical; having no name is
/// nothing in common.
ZRDuplicateBuckets toBeMerged(const ZRDuplicates& found, std::size_t kind)
{
    ZRDuplicateBuckets buckets = kind == similar ? found.similar : listed(found, kind);
    std::erase_if(buckets, [](const auto& bucket) { return bucket.isNameless; });
    return buckets;
}

// ---- listing

/// The names of the cards in the buckets, some hundreds of cards at a time.
std::map<std::string, std::string> namesIn(ZRRoster& roster, const ZRDuplicateBuckets& buckets)
{
    constexpr std::size_t atATime = 500;
    std::map<std::string, std::string> names;
    std::vector<std::string> ids;
    const auto read = [&] {
        for (const auto& record : roster.recordsForUniqueIds(ids))
            names[record->uniqueId()] = displayName(*record);
        ids.clear();
    };
    for (const auto& bucket : buckets) {
        ids.insert(ids.end(), bucket.uniqueIds.begin(), bucket.uniqueIds.end());
        if (ids.size() >= atATime)
            read();
    }
    read();
    return names;
}

std::string textOf(const ZRDuplicateReason& reason)
{
    const Json value = valueJson(reason.value, reason.property);
    return fmt::format("{} {}", ZRLocalizedPropertyOrLabel(reason.property),
        value.is_string() ? value.get<std::string>() : value.dump());
}

std::string reasonText(const ZRDuplicateBucket& bucket, std::size_t kind)
{
    std::string text(kinds[kind].reason);
    for (const auto& reason : bucket.reasons)
        text += (text.empty() ? "" : "; ") + textOf(reason);
    return text;
}

class Listing {
public:
    explicit Listing(ZRRoster& roster) : _roster(roster) { }

    void add(const ZRDuplicateBuckets& buckets, std::size_t kind)
    {
        _count += buckets.size();
        const auto names = namesIn(_roster, buckets);
        Json& list = _json[kinds[kind].name] = Json::array();
        if (!buckets.empty())
            _text += fmt::format("{}{}: {}\n", _text.empty() ? "" : "\n", kinds[kind].title, buckets.size());
        for (const auto& bucket : buckets) {
            _text += fmt::format("  {}\n", reasonText(bucket, kind));
            Json one{{"reason", reasonText(bucket, kind)}, {"cards", Json::array()}};
            for (const auto& id : bucket.uniqueIds) {
                one["cards"].push_back({{"id", id}, {"name", names.at(id)}});
                _text += fmt::format("    {}  {}\n", id, names.at(id));
            }
            if (!bucket.reasons.empty())
                one["values"] = valuesOf(bucket);
            list.push_back(std::move(one));
        }
    }

    std::size_t count() const { return _count; }
    const Json& json() const { return _json; }
    const std::string& text() const { return _text; }

private:
    static Json valuesOf(const ZRDuplicateBucket& bucket)
    {
        Json values = Json::array();
        for (const auto& [property, value] : bucket.reasons)
            values.push_back({{"property", property}, {"value", valueJson(value, property)}});
        return values;
    }

    ZRRoster& _roster;
    Json _json = Json::object();
    std::string _text;
    std::size_t _count = 0;
};

int listDuplicates(const Options& options)
{
    const auto roster = openRoster(options);
    const auto found = zrFindDuplicates(*roster);
    Listing listing(*roster);
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
        if (options.kinds.empty() || isWanted(options.kinds, kind))
            listing.add(listed(found, kind), kind);
    options.json ? printJson(listing.json()) : print(listing.text());
    if (listing.count() > 0)
        return exitStatus::done;
    complain("no duplicates");
    return exitStatus::refused;
}

// ---- merging

class Merging {
public:
    explicit Merging(ZRRoster& roster) : _roster(roster) { }

    /// Looks anew, since what was merged before may have changed what is alike.
    void merge(std::size_t kind)
    {
        const auto done = zrMergeDuplicates(toBeMerged(zrFindDuplicates(_roster), kind),
            kind == inner ? ZRMergeKind::doubledValues : ZRMergeKind::wholeCards);
        if (!done.failure.domain.empty())
            throw Failure(exitStatus::noStore, "not saved: " + done.failure.text);
        for (const auto& merged : done.merged)
            tell(merged, kind);
    }

    bool isEmpty() const { return _text.empty(); }
    Json json() const { return Json{{"merged", _merged}}; }
    const std::string& text() const { return _text; }

private:
    void tell(const ZRMergedCards& merged, std::size_t kind)
    {
        const auto survivor = _roster.recordForUniqueId(merged.survivor);
        if (!survivor)
            return;
        _merged.push_back({{"kind", kinds[kind].name}, {"id", merged.survivor},
            {"name", displayName(*survivor)}, {"from", merged.dropped}});
        _text += kind == inner
            ? fmt::format("Cleaned {}\n", nameAndId(*survivor))
            : fmt::format("Merged {} into {}\n",
                merged.dropped.size() == 1 ? "one card" : fmt::format("{} cards", merged.dropped.size()),
                nameAndId(*survivor));
    }

    ZRRoster& _roster;
    Json _merged = Json::array();
    std::string _text;
};

int mergeDuplicates(const Options& options)
{
    const auto roster = openRosterToChange(options);
    Merging merging(*roster);
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
        if (isWanted(options.merges, kind))
            merging.merge(kind);
    options.json ? printJson(merging.json()) : print(merging.text());
    if (!merging.isEmpty())
        return exitStatus::done;
    complain("nothing to merge");
    return exitStatus::refused;
}

} // namespace

int runDuplicates(const Options& options)
{
    if (!options.kinds.empty() && !options.merges.empty())
        throw Failure(exitStatus::usage, "--kind lists and --merge merges: say one of them");
    return options.merges.empty() ? listDuplicates(options) : mergeDuplicates(options);
}
