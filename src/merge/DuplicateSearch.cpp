// How duplicates are found: numbers of columns first, then the few cards in question.
#include "merge/DuplicateSearch.h"

#include "core/ZRMultiValue.h"
#include "core/ZRPropertyType.h"
#include "merge/CardColumns.h"
#include "merge/ColumnReading.h"
#include "merge/ComparePeople.h"
#include "merge/SharedContact.h"
#include "merge/ZRNewMerger.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>

using platform::Ref;
using platform::Value;

namespace merge {

namespace {

/// Places of cards in the table; several of them are in order.
using Places = std::vector<std::uint32_t>;
/// Numbers beside the card that they stand for.
using Numbers = std::vector<std::pair<std::uint64_t, std::uint32_t>>;

/// Calls `visit` with each run of neighbours that `isSame` holds together, and that has two at least.
template <class List, class Same, class Visit>
void forEachRun(const List& sorted, Same isSame, Visit visit)
{
    for (auto first = sorted.begin(); first != sorted.end();) {
        const auto last =
            std::find_if_not(first, sorted.end(), [&](const auto& one) { return isSame(*first, one); });
        if (last - first > 1)
            visit(first, last);
        first = last;
    }
}

/// The values in which one card repeats itself.
std::vector<ZRDuplicateReason> repeatedValues(ZRPerson& person)
{
    std::vector<ZRDuplicateReason> repeated;
    ZRRoster& roster = *person.nts_Roster();
    for (const auto& property : ZRRecord::propertiesWithRoster(person.recordClass(), &roster)) {
        if (!zrIsMultiValueType(roster.typeOfProperty(property, person._table())))
            continue;
        const Value value = person.valueForProperty(property);
        const auto* entries = value.as<ZRMultiValue>();
        ZRPropertyChanges changes;
        const auto left =
            entries ? ZRNewMerger::mergedSimilarMultiValuesIn(*entries, property, changes) : nullptr;
        for (ZRIndex i = 0; left && !changes.empty() && i < entries->count(); ++i)
            if (left->indexForIdentifier(entries->identifierAtIndex(i)) == kZRNotFound)
                repeated.push_back({property, entries->valueAtIndex(i)});
    }
    return repeated;
}

class Search {
public:
    Search(ZRRoster& roster, const std::function<bool()>& isCancelled)
        : _roster(roster), _isCancelled(isCancelled), _table(roster)
    {
    }

    ZRDuplicates run()
    {
        _found.people = _table.cards().size();
        for (const auto& kind : entryKindsOfPeople())
            if (!_isCancelled())
                readEntries(kind);
        groupByName();
        findIdentical();
        findRepeating();
        for (auto& [places, reasons] : _shared)
            _found.shared.push_back({idsOf(places), std::move(reasons)});
        return std::move(_found);
    }

private:
    const CardColumns& card(std::uint32_t place) const { return _table.cards()[place]; }

    std::vector<std::string> idsOf(const Places& places) const
    {
        std::vector<std::string> ids;
        for (const auto place : places)
            ids.push_back(card(place).uniqueId);
        return ids;
    }

    void readEntries(const EntryKind& kind)
    {
        Numbers similar, reached;
        _table.forEachEntry(kind, [&](std::uint32_t place, const EntryColumns& entry) {
            _table.addToContent(place, entry.exact);
            similar.emplace_back(entry.similar, place);
            if (const std::string key = sharedContactKey(entry.property, entry.text); !key.empty())
                reached.emplace_back(numberOf(key), place);
        });
        std::ranges::sort(similar);
        forEachRun(
            similar, std::equal_to<>(), [&](auto first, auto) { _repeating.push_back(first->second); });
        findShared(kind, std::move(reached));
    }

    // The texts are read again for the few that several cards have, rather than kept of all.
    void findShared(const EntryKind& kind, Numbers reached)
    {
        std::ranges::sort(reached);
        std::unordered_set<std::uint64_t> several;
        const auto isSame = [](const auto& a, const auto& b) { return a.first == b.first; };
        forEachRun(reached, isSame, [&](auto first, auto last) {
            if (first->second != std::prev(last)->second)
                several.insert(first->first);
        });
        if (several.empty())
            return;
        struct Owners {
            Places places;
            std::string text;
        };
        std::map<std::string, Owners> byKey;
        _table.forEachEntry(kind, [&](std::uint32_t place, const EntryColumns& entry) {
            const std::string key = sharedContactKey(entry.property, entry.text);
            if (key.empty() || !several.contains(numberOf(key)))
                return;
            auto& [places, text] = byKey.try_emplace(key, Owners{{}, std::string(entry.text)}).first->second;
            places.push_back(place);
        });
        for (auto& [key, owners] : byKey)
            addShared(std::move(owners.places), {std::string(kind.property()), Value(owners.text)});
    }

    void addShared(Places places, ZRDuplicateReason reason)
    {
        std::ranges::sort(places);
        places.erase(std::unique(places.begin(), places.end()), places.end());
        const CardColumns& first = card(places.front());
        const bool isOneName = !first.isNameless && std::ranges::all_of(places, [&](std::uint32_t place) {
            return card(place).similarName == first.similarName;
        });
        if (places.size() > 1 && !isOneName)
            _shared[std::move(places)].push_back(std::move(reason));
    }

    void groupByName()
    {
        Places all(_table.cards().size());
        for (std::uint32_t place = 0; place < all.size(); ++place)
            all[place] = place;
        std::ranges::sort(all, [&](std::uint32_t a, std::uint32_t b) {
            const int order = card(a).similarName.compare(card(b).similarName);
            return order != 0 ? order < 0 : a < b;
        });
        const auto isSame = [&](std::uint32_t a, std::uint32_t b) {
            return card(a).similarName == card(b).similarName;
        };
        forEachRun(all, isSame, [&](auto first, auto last) { _similar.emplace_back(first, last); });
        std::ranges::sort(_similar);
        for (const Places& places : _similar)
            _found.similar.push_back({idsOf(places), {}, card(places.front()).isNameless});
    }

    /// Of cards of one name, those that seem to say the same.
    std::vector<Places> candidates() const
    {
        std::vector<Places> equal;
        const auto content = [&](std::uint32_t place) { return std::pair(card(place).content, place); };
        for (Places places : _similar) {
            std::ranges::sort(places, {}, content);
            const auto isSame = [&](std::uint32_t a, std::uint32_t b) {
                return card(a).content == card(b).content;
            };
            forEachRun(places, isSame, [&](auto first, auto last) { equal.emplace_back(first, last); });
        }
        std::ranges::sort(equal);
        return equal;
    }

    void findIdentical()
    {
        std::vector<std::string> ids;
        std::unordered_map<std::string, std::size_t> candidateOf;
        const auto equal = candidates();
        for (std::size_t i = 0; i < equal.size(); ++i)
            for (auto& id : idsOf(equal[i])) {
                candidateOf.emplace(id, i);
                ids.push_back(std::move(id));
            }
        std::size_t current = 0;
        forEachPerson(_roster, ids, {}, [&](const Ref<ZRPerson>& person) {
            const std::size_t candidate = candidateOf.at(person->uniqueId());
            if (candidate != std::exchange(current, candidate))
                keepIdentical();
            addToIdentical(person);
            return !_isCancelled();
        });
        keepIdentical();
    }

    void addToIdentical(const Ref<ZRPerson>& person)
    {
        const auto isSame = [&](const auto& one) { return peopleAreIdentical(*one.first, *person); };
        const auto known = std::ranges::find_if(_equals, isSame);
        if (known == _equals.end())
            _equals.push_back({person, {person->uniqueId()}});
        else
            known->second.push_back(person->uniqueId());
    }

    void keepIdentical()
    {
        for (auto& [first, ids] : _equals)
            if (ids.size() > 1)
                _found.identical.push_back({std::move(ids)});
        _equals.clear();
    }

    void findRepeating()
    {
        std::ranges::sort(_repeating);
        _repeating.erase(std::unique(_repeating.begin(), _repeating.end()), _repeating.end());
        forEachPerson(_roster, idsOf(_repeating), {}, [&](const Ref<ZRPerson>& person) {
            if (auto repeated = repeatedValues(*person); !repeated.empty())
                _found.inner.push_back({{person->uniqueId()}, std::move(repeated)});
            return !_isCancelled();
        });
    }

    ZRRoster& _roster;
    const std::function<bool()>& _isCancelled;
    CardTable _table;
    Places _repeating;
    std::vector<Places> _similar;
    std::map<Places, std::vector<ZRDuplicateReason>> _shared;
    /// Cards that differ, of those under comparison, each with the ids of all that are as it is.
    std::vector<std::pair<Ref<ZRPerson>, std::vector<std::string>>> _equals;
    ZRDuplicates _found;
};

} // namespace

} // namespace merge

ZRDuplicates zrFindDuplicates(ZRRoster& roster, const std::function<bool()>& isCancelled)
{
    return merge::Search(roster, isCancelled).run();
}

ZRDuplicateBuckets ZRDuplicates::similarAlone() const
{
    std::unordered_set<std::string> merged;
    for (const auto& bucket : identical)
        merged.insert(bucket.uniqueIds.begin() + 1, bucket.uniqueIds.end());
    ZRDuplicateBuckets alone;
    for (ZRDuplicateBucket bucket : similar) {
        std::erase_if(bucket.uniqueIds, [&](const auto& id) { return merged.contains(id); });
        if (bucket.uniqueIds.size() > 1 && !bucket.isNameless)
            alone.push_back(std::move(bucket));
    }
    return alone;
}
