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

/// How often it was not let in.
thread_local std::size_t refused = 0;

/// What the question keeps that this thread is at.
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
    auto* kept = SmartGroupSearches::ofThisThread();
    if (const auto known = kept ? kept->answer(record.nts_UniqueId(), group.nts_UniqueId()) : std::nullopt)
        return *known;
    const std::size_t refusals = SmartGroupVisit::refusals();
    const SmartGroupVisit visit(group.nts_UniqueId());
    const auto search = visit.isEntered() ? nts_searchOfSmartGroup(group) : nullptr;
    const bool isMember = search && search->nts_MatchesRecord(record);
    if (kept && SmartGroupVisit::refusals() == refusals)
        kept->keepAnswer(record.nts_UniqueId(), group.nts_UniqueId(), isMember);
    return isMember;
}

bool nts_isMemberOfAnyGroup(const ZRRecord& record)
{
    return !nts_groupsAbove(record.zrDatabaseImpl()).empty();
}

SmartGroupVisit::SmartGroupVisit(std::string uniqueId)
    : _uniqueId(std::move(uniqueId))
    , _isEntered(visited().size() < kDeepestSmartGroups && visited().insert(_uniqueId).second)
{
    if (!_isEntered)
        ++refused;
}

std::size_t SmartGroupVisit::refusals() { return refused; }

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

bool SmartGroupSearches::mayConvert(const std::string& groupId, const objectstore::Entity& entity)
{
    return _converted.emplace(&entity, groupId).second || ++_repeats <= kMostRepeatedConditions;
}

std::optional<bool> SmartGroupSearches::answer(const std::string& recordId, const std::string& groupId) const
{
    const auto at = recordId == _recordId ? _answers.find(groupId) : _answers.end();
    return at == _answers.end() ? std::nullopt : std::optional(at->second);
}

void SmartGroupSearches::keepAnswer(const std::string& recordId, const std::string& groupId, bool isMember)
{
    if (recordId != _recordId) {
        _recordId = recordId;
        _answers.clear();
    }
    _answers.emplace(groupId, isMember);
}

bool SmartGroupSearches::isFirstLook(const std::string& groupId, const std::string& targetId)
{
    return _looked.emplace(groupId, targetId).second;
}
