// The groups that searches name: how a smart group's own search is reached without going in circles.
#include "search/SearchedGroups.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/run/Log.h"
#include "search/ZRSmartGroup.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <set>

using objectstore::ObjectList;
using objectstore::StoreObject;
using platform::Ref;

namespace {

/// The ids of the smart groups that this thread is in.
std::set<std::string>& visited()
{
    thread_local std::set<std::string> groups;
    return groups;
}

/// What the search keeps that this thread runs.
thread_local SmartGroupSearches* searchesOfThread = nullptr;

ObjectList nts_groupsAbove(StoreObject* object) ZR_NTS
{
    const auto* key = object && object->context() ? object->entity().slot("parentGroups") : nullptr;
    return key ? object->objects(*key) : ObjectList();
}

/// Goes up from the card: a card is in few groups, and a group may have all cards.
bool nts_isBelow(const ZRRecord& record, std::string_view groupId) ZR_NTS
{
    auto waiting = record.recordClass().isKindOf(ZRPerson::recordClassDescription)
        ? nts_groupsAbove(record.zrDatabaseImpl())
        : ObjectList();
    std::set<StoreObject*> seen;
    while (!waiting.empty()) {
        const auto group = std::move(waiting.back());
        waiting.pop_back();
        if (group->text(group->slot("uniqueId")) == groupId)
            return true;
        if (seen.insert(group.get()).second)
            std::ranges::move(nts_groupsAbove(group.get()), std::back_inserter(waiting));
    }
    return false;
}

} // namespace

bool isAnyGroupMarker(const platform::Value& value)
{
    return value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty;
}

Ref<ZRSearchElement> nts_searchOfSmartGroup(const ZRGroup& group)
{
    auto* kept = SmartGroupSearches::ofThisThread();
    if (const auto* known = kept ? kept->find(group.nts_UniqueId()) : nullptr)
        return *known;
    Ref<ZRSearchElement> search;
    try {
        search = static_cast<const ZRSmartGroup&>(group).nts_SearchElement();
    } catch (const std::exception& failure) {
        platform::log(failure.what());
    }
    if (kept)
        kept->keep(group.nts_UniqueId(), search);
    return search;
}

bool nts_isMemberOfGroup(const ZRRecord& record, const ZRGroup& group)
{
    if (!group.recordClass().isKindOf(ZRSmartGroup::recordClassDescription))
        return nts_isBelow(record, group.nts_UniqueId());
    const SmartGroupVisit visit(group.nts_UniqueId());
    const auto search = visit.isEntered() ? nts_searchOfSmartGroup(group) : nullptr;
    return search && search->nts_MatchesRecord(record);
}

bool nts_isMemberOfAnyGroup(const ZRRecord& record)
{
    return !nts_groupsAbove(record.zrDatabaseImpl()).empty();
}

SmartGroupVisit::SmartGroupVisit(std::string uniqueId)
    : _uniqueId(std::move(uniqueId))
    , _isEntered(visited().size() < kDeepestSmartGroups && visited().insert(_uniqueId).second)
{
}

SmartGroupVisit::~SmartGroupVisit()
{
    if (_isEntered)
        visited().erase(_uniqueId);
}

SmartGroupSearches::SmartGroupSearches() : _isOutermost(!searchesOfThread)
{
    if (_isOutermost)
        searchesOfThread = this;
}

SmartGroupSearches::~SmartGroupSearches()
{
    if (_isOutermost)
        searchesOfThread = nullptr;
}

SmartGroupSearches* SmartGroupSearches::ofThisThread() { return searchesOfThread; }

const Ref<ZRSearchElement>* SmartGroupSearches::find(const std::string& groupId) const
{
    const auto at = _searches.find(groupId);
    return at == _searches.end() ? nullptr : &at->second;
}

void SmartGroupSearches::keep(const std::string& groupId, Ref<ZRSearchElement> search)
{
    _searches.emplace(groupId, std::move(search));
}
