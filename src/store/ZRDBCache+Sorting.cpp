// Where a record stands in a sorted list, where it would go, and how a list is sorted.
#include "store/ZRDBCacheState.h"

#include "core/ZRNameOrder.h"
#include "store/ZRPeopleSorting.h"

#include <algorithm>

using platform::Ref;

namespace {

/// From so many records on, several threads pay.
constexpr std::size_t kThreadedSortFrom = 800;

ZRNameComparison comparisonFor(std::int64_t order)
{
    return {.byLastName = (order == kZRNotFound ? zrNameSorting() : order) != 0};
}

/// A list with the keys of its records, all read under the lock of the caller.
class NamedPeople {
public:
    NamedPeople(const ZRRecordList& records, const ZRNameComparison& comparison) ZR_NTS
    {
        // Reading one record may bring another up to date, so nothing is pointed to in its row.
        std::vector<std::size_t> ends;
        ends.reserve(records.size());
        people.reserve(records.size());
        for (const auto& record : records) {
            const bool isThere = nts_appendNameKey(*record, comparison, _bytes);
            people.push_back({record.get(), {}, !isThere, people.size()});
            ends.push_back(_bytes.size());
        }
        std::size_t begin = 0;
        for (std::size_t i = 0; i < ends.size(); begin = ends[i++])
            people[i].key = std::string_view(_bytes).substr(begin, ends[i] - begin);
    }

    /// Puts the records of the list in the order of `people`.
    void arrange(ZRRecordList& records) const
    {
        ZRRecordList arranged;
        arranged.reserve(records.size());
        for (const auto& one : people)
            arranged.push_back(std::move(records[one.position]));
        records = std::move(arranged);
    }

    std::vector<ZRNamedRecord> people;

private:
    std::string _bytes;
};

ZRIndex insertionIndex(const ZRRecord& member, const ZRRecordList& sorted, const ZRNameComparison& comparison)
{
    const auto at = zrPlaceByName(member, sorted.begin(), sorted.end(), comparison);
    return at == sorted.end() ? kZRNotFound : at - sorted.begin();
}

/// The place of `member` among its equals around `place`, walking by `step`.
ZRIndex scan(const ZRRecord& member, const ZRRecordList& sorted, ZRIndex place, ZRIndex step,
    const ZRNameComparison& comparison)
{
    const auto count = static_cast<ZRIndex>(sorted.size());
    for (ZRIndex i = place + step; i >= 0 && i < count; i += step) {
        const ZRRecord& neighbour = *sorted[static_cast<std::size_t>(i)];
        if (ZRComparePeopleName(member, neighbour, comparison) != 0)
            break;
        if (neighbour.isEqual(member))
            return i;
    }
    return kZRNotFound;
}

} // namespace

void ZRDBCache::sortMembers(ZRRecordList& members) const
{
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        _state->nameSorting = zrNameSorting();
        NamedPeople named(members, comparisonFor(_state->nameSorting));
        zrSortPeople(named.people);
        named.arrange(members);
    });
}

// The threads touch keys only, which nobody else knows: they need no lock, and the caller may wait for them.
void ZRDBCache::nts_threaded_sortMembers(ZRRecordList& members) const
{
    if (members.size() < kThreadedSortFrom)
        return sortMembers(members);
    _state->nameSorting = zrNameSorting();
    NamedPeople named(members, comparisonFor(_state->nameSorting));
    for (const auto& step : zrSortOperations(named.people))
        _state->operations->add(step);
    _state->operations->waitUntilAllFinished();
    named.arrange(members);
}

ZRIndex ZRDBCache::insertionIndexForMember(const ZRRecord& member, const ZRRecordList& sorted) const
{
    return insertionIndexForMember(member, sorted, kZRNotFound);
}

ZRIndex ZRDBCache::insertionIndexForMember(
    const ZRRecord& member, const ZRRecordList& sorted, std::int64_t order) const
{
    return locked(*_state->roster, ZRAccess::read,
        [&]() ZR_NTS { return insertionIndex(member, sorted, comparisonFor(order)); });
}

ZRIndex ZRDBCache::indexOfMember(const ZRRecord* member, const ZRRecordList& sorted) const
{
    return indexOfMember(member, sorted, kZRNotFound);
}

ZRIndex ZRDBCache::indexOfMember(const ZRRecord* member, const ZRRecordList& sorted, std::int64_t order) const
{
    if (!member || sorted.empty())
        return kZRNotFound;
    return locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        const ZRNameComparison comparison = comparisonFor(order);
        const ZRIndex place = insertionIndex(*member, sorted, comparison);
        if (place == kZRNotFound || sorted[static_cast<std::size_t>(place)]->isEqual(*member))
            return place;
        const ZRIndex before = scan(*member, sorted, place, -1, comparison);
        return before != kZRNotFound ? before : scan(*member, sorted, place, 1, comparison);
    });
}
