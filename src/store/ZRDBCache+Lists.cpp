// The lists of a member cache: how each is found, sorted once and kept.
#include "store/ZRDBCacheState.h"

#include "core/ZRAllGroup.h"
#include "core/ZRNameOrder.h"
#include "platform/run/Log.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <algorithm>

using platform::makeRef;
using platform::Ref;

namespace {

/// The people of the roster itself, with their rows: a sort reads a column of each.
ZRRecordList fetchLocalPeople(ZRRoster& roster) ZR_NTS
{
    const auto context = roster.managedObjectContext();
    if (!context)
        return {};
    objectstore::StoreFetch fetch(contactSlots().entity);
    fetch.includesSubentities = false;
    const auto found = context->runFetch(fetch);
    if (!found) {
        platform::log(fmt::format("Cannot list the people: {}", found.error().text));
        return {};
    }
    return ZROSRecord::copyPublicRecordsForClass(ZRPerson::recordClassDescription, *found, roster);
}

ZRRecordList peopleAtRemoteLocation(ZRRoster& roster, const std::string& location)
{
    const auto& service = ZRServices::registered().peopleAtRemoteLocation;
    return service ? service(roster, location) : ZRRecordList();
}

void appendOnce(const Ref<ZRPerson>& person, ZRRecordList& list)
{
    if (std::ranges::find(list, person.get(), &Ref<ZRRecord>::get) == list.end())
        list.emplace_back(person);
}

bool isSmart(const Ref<ZRRecord>& group) { return dynamic_cast<const ZRSmartGroup*>(group.get()); }

bool precedes(const ZRRecord& a, const ZRRecord& b)
{
    return ZRCompareGroupName(static_cast<const ZRGroup&>(a), static_cast<const ZRGroup&>(b)) < 0;
}

} // namespace

Ref<const ZRMemberList> ZRDBCache::allPeople() { return allPeopleForRemoteLocation(kZRLocalLocation); }

Ref<const ZRMemberList> ZRDBCache::allPeopleForRemoteLocation(std::string_view location)
{
    return locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        if (const auto known = _state->allPeopleMap.find(location); known != _state->allPeopleMap.end())
            return Ref<const ZRMemberList>(known->second);
        const std::string key(location);
        auto people = nts_peopleAt(key);
        return Ref<const ZRMemberList>(_state->allPeopleMap.insert_or_assign(key, people).first->second);
    });
}

Ref<ZRMemberList> ZRDBCache::nts_peopleAt(const std::string& location)
{
    const bool isLocal = location == kZRLocalLocation;
    ZRRecordList people =
        isLocal ? fetchLocalPeople(*_state->roster) : peopleAtRemoteLocation(*_state->roster, location);
    // The card that is being made shows where it was started.
    const auto& group = _state->newPersonParentGroup;
    if (_state->newPerson
        && (_state->newPerson->_allLocation() == location || (group && group->_allLocation() == location)))
        appendOnce(_state->newPerson, people);
    nts_threaded_sortMembers(people);
    return makeRef<ZRMemberList>(std::move(people));
}

// What is in a smart group changes by itself, so its list is made each time; it is kept for the edits.
Ref<const ZRMemberList> ZRDBCache::membersOfGroup(const Ref<ZRGroup>& group)
{
    if (!group)
        return makeRef<const ZRMemberList>(ZRRecordList());
    if (dynamic_cast<const ZRAllGroup*>(group.get()))
        return allPeopleForRemoteLocation(group->remoteLocation());
    return locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        auto& lists = _state->groupsPeople;
        if (const auto known = lists.find(group->nts_UniqueId()); known != lists.end() && !isSmart(group))
            return Ref<const ZRMemberList>(known->second);
        ZRRecordList members = group->membersAndSubgroups();
        if (_state->newPerson && _state->newPersonParentGroup == group)
            appendOnce(_state->newPerson, members);
        sortMembers(members);
        auto list = makeRef<ZRMemberList>(std::move(members));
        return Ref<const ZRMemberList>(lists.insert_or_assign(group->nts_UniqueId(), list).first->second);
    });
}

// ---- groups

void ZRDBCache::nts_buildGroups()
{
    if (_state->allGroups)
        return;
    auto& roster = *_state->roster;
    ZRRecordList groups = roster.nts_Groups();
    for (auto& group : roster.nts_AllRecordsForClass(ZRSubscribedGroup::recordClassDescription))
        groups.push_back(std::move(group));
    std::ranges::stable_sort(groups, [](const auto& a, const auto& b) { return precedes(*a, *b); });
    _state->allGroups = std::move(groups);
}

ZRRecordList ZRDBCache::allGroups()
{
    return locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        nts_buildGroups();
        return *_state->allGroups;
    });
}

ZRRecordList ZRDBCache::allSimpleGroups()
{
    ZRRecordList groups = allGroups();
    std::erase_if(groups, isSmart);
    return groups;
}

ZRRecordList ZRDBCache::enclosedSubscriptionGroupsForAllGroup(const ZRGroup& allGroup)
{
    const std::string location = allGroup.remoteLocation();
    ZRRecordList groups = allGroups();
    std::erase_if(groups, [&](const auto& group) {
        return !dynamic_cast<const ZRSubscribedGroup*>(group.get()) || group->remoteLocation() != location;
    });
    return groups;
}

std::size_t ZRDBCache::_insertionIndexForGroup(const ZRGroup& group)
{
    return locked(*_state->roster, ZRAccess::read, [&]() ZR_NTS {
        nts_buildGroups();
        const auto& groups = *_state->allGroups;
        const auto at = std::upper_bound(groups.begin(), groups.end(), group,
            [](const ZRGroup& one, const auto& other) { return precedes(one, *other); });
        return static_cast<std::size_t>(at - groups.begin());
    });
}
