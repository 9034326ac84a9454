// How the lists of a member cache follow what commands tell of their edits.
#include "store/ZRDBCacheState.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

using platform::Ref;

namespace {

using Handles = std::unordered_set<const ZRRecord*>;

Handles handlesOf(const ZRRecordList& records)
{
    Handles handles;
    for (const auto& record : records)
        if (record)
            handles.insert(record.get());
    return handles;
}

ZRRecordList::iterator placeOf(const ZRRecord* record, ZRRecordList& list)
{
    return std::ranges::find(list, record, &Ref<ZRRecord>::get);
}

/// Takes those of the records out of the list that are in it, and answers them, each once.
ZRRecordList take(const ZRRecordList& records, ZRRecordList& list)
{
    const Handles wanted = handlesOf(records);
    ZRRecordList taken;
    std::erase_if(list, [&](auto& record) {
        const bool isWanted = wanted.contains(record.get());
        if (isWanted)
            taken.push_back(std::move(record));
        return isWanted;
    });
    return taken;
}

/// Those of the records that are not in the list, each once.
ZRRecordList missing(const ZRRecordList& records, const ZRRecordList& list)
{
    Handles wanted = handlesOf(records);
    for (const auto& record : list)
        wanted.erase(record.get());
    ZRRecordList left;
    for (const auto& record : records)
        if (wanted.erase(record.get()) != 0)
            left.push_back(record);
    return left;
}

std::size_t countOf(const Handles& wanted, const ZRRecordList& list)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(list, [&](const auto& record) { return wanted.contains(record.get()); }));
}

} // namespace

// ---- one list

ZRIndex ZRDBCache::_doInsertMember(const Ref<ZRRecord>& member, ZRRecordList& sorted)
{
    if (!member)
        return kZRNotFound;
    const ZRIndex place = insertionIndexForMember(*member, sorted);
    if (placeOf(member.get(), sorted) != sorted.end())
        return place;
    _insertRecord(member, sorted);
    return place == kZRNotFound ? static_cast<ZRIndex>(sorted.size()) - 1 : place;
}

void ZRDBCache::_insertRecord(const Ref<ZRRecord>& record, ZRRecordList& sorted)
{
    const ZRIndex place = insertionIndexForMember(*record, sorted);
    sorted.insert(place == kZRNotFound ? sorted.end() : sorted.begin() + place, record);
}

void ZRDBCache::reinsertRecord(const Ref<ZRRecord>& record, ZRRecordList& sorted)
{
    const auto at = placeOf(record.get(), sorted);
    if (at == sorted.end())
        return;
    sorted.erase(at);
    _insertRecord(record, sorted);
}

// Many at once: the list is walked once, not moved for each.
void ZRDBCache::nts_insertRecords(ZRRecordList records, ZRRecordList& sorted)
{
    sortMembers(records);
    const ZRNameComparison comparison{.byLastName = _state->nameSorting != 0};
    ZRRecordList joined;
    joined.reserve(sorted.size() + records.size());
    auto from = sorted.begin();
    for (auto& record : records) {
        const auto to = zrPlaceByName(*record, from, sorted.end(), comparison);
        joined.insert(joined.end(), std::move_iterator(from), std::move_iterator(to));
        joined.push_back(std::move(record));
        from = to;
    }
    joined.insert(joined.end(), std::move_iterator(from), std::move_iterator(sorted.end()));
    sorted = std::move(joined);
}

// All are out before the first goes in, since among records that stand wrongly no place can be found.
void ZRDBCache::nts_reinsertRecords(const ZRRecordList& records, ZRRecordList& sorted)
{
    if (auto taken = take(records, sorted); !taken.empty())
        nts_insertRecords(std::move(taken), sorted);
}

// ---- members

ZRRecordList* ZRDBCache::nts_listOfGroup(const ZRGroup* group)
{
    if (!group)
        return nullptr;
    const auto at = _state->groupsPeople.find(group->nts_UniqueId());
    return at == _state->groupsPeople.end() ? nullptr : &at->second->_records;
}

void ZRDBCache::nts_addRecords(const ZRRecordList& records, ZRRecordList& sorted)
{
    if (records.size() == 1)
        _doInsertMember(records.front(), sorted);
    else
        nts_insertRecords(missing(records, sorted), sorted);
}

void ZRDBCache::addedMembers(const ZRRecordList& members)
{
    if (members.empty())
        return;
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        const auto at = _state->allPeopleMap.find(members.front()->_allLocation());
        if (at != _state->allPeopleMap.end())
            nts_addRecords(members, at->second->_records);
    });
}

void ZRDBCache::addedMembers(const ZRRecordList& members, const Ref<ZRGroup>& group)
{
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        if (auto* const list = nts_listOfGroup(group.get()))
            nts_addRecords(members, *list);
    });
}

// A record whose name has changed does not stand where its name belongs, so it is looked for by itself too.
void ZRDBCache::removedMembers(const ZRRecordList& members, const Ref<ZRGroup>& group)
{
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        auto* const list = nts_listOfGroup(group.get());
        if (!list)
            return;
        for (const auto& member : members) {
            const ZRIndex found = indexOfMember(member.get(), *list);
            const auto at = found == kZRNotFound ? placeOf(member.get(), *list) : list->begin() + found;
            if (at != list->end())
                list->erase(at);
        }
    });
}

void ZRDBCache::deletedMembers(const ZRRecordList& members)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        for (auto* const lists : {&_state->allPeopleMap, &_state->groupsPeople})
            for (const auto& [key, list] : *lists)
                take(members, list->_records);
    });
}

// Whoever is in a list stands in order there, also in that of a group which has just lost it: no place could
// be found around a record that does not.
void ZRDBCache::changedMember(const Ref<ZRRecord>& member)
{
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        for (auto* const lists : {&_state->allPeopleMap, &_state->groupsPeople})
            for (const auto& [key, list] : *lists)
                reinsertRecord(member, list->_records);
    });
}

void ZRDBCache::changedMembers(const ZRRecordList& members)
{
    constexpr std::size_t kMostPart = 3;
    if (members.size() == 1)
        return changedMember(members.front());
    locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        const Handles changed = handlesOf(members);
        std::erase_if(_state->allPeopleMap, [&](const auto& entry) {
            const auto& records = entry.second->records();
            const std::size_t count = countOf(changed, records);
            return count != 0 && count * kMostPart >= records.size();
        });
        for (auto* const lists : {&_state->allPeopleMap, &_state->groupsPeople})
            for (const auto& [key, list] : *lists)
                nts_reinsertRecords(members, list->_records);
    });
}

// ---- groups

void ZRDBCache::addedGroups(const ZRRecordList& groups)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        if (!_state->allGroups)
            return;
        for (const auto& group : missing(groups, *_state->allGroups)) {
            const auto place = _insertionIndexForGroup(static_cast<const ZRGroup&>(*group));
            _state->allGroups->insert(_state->allGroups->begin() + static_cast<ZRIndex>(place), group);
        }
    });
}

void ZRDBCache::deletedGroups(const ZRRecordList& groups)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        if (_state->allGroups)
            take(groups, *_state->allGroups);
    });
}

void ZRDBCache::changedGroups(const ZRRecordList& groups)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        if (_state->allGroups)
            addedGroups(take(groups, *_state->allGroups));
    });
}

// ---- lists dropped

void ZRDBCache::clearAll() { clearAllForRemoteLocation(kZRLocalLocation); }

void ZRDBCache::clearAllForRemoteLocation(std::string_view location)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        _state->groupsPeople.clear();
        if (const auto at = _state->allPeopleMap.find(location); at != _state->allPeopleMap.end())
            _state->allPeopleMap.erase(at);
    });
}

void ZRDBCache::clearCacheForGroup(const ZRGroup& group)
{
    locked(
        *_state->roster, ZRAccess::read, [&]() ZR_NTS { _state->groupsPeople.erase(group.nts_UniqueId()); });
}
