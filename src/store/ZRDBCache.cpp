// How a member cache comes to be, and what makes it drop its lists.
#include "store/ZRDBCacheState.h"

#include "core/ZRConstants.h"
#include "core/ZRNameOrder.h"
#include "platform/run/NeverDestroyed.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRRosterState.h"
#include "store/ZRSafeNotificationCenter.h"
#include "store/ZRServices.h"

#include <algorithm>

using platform::Notification;
using platform::Ref;
using platform::Value;

ZRDBCache::ZRDBCache(Ref<ZRRoster> roster) : _state(std::make_unique<State>())
{
    _state->roster = std::move(roster);
    // What is read for the first time may be seeded from the defaults of the user's language.
    _state->roster->localizedDefaults();
    _state->nameSorting = zrNameSorting();
}

void ZRDBCache::observe()
{
    const auto center = ZRSafeNotificationCenter::defaultCenter();
    const auto* const roster = _state->roster.get();
    auto& observers = _state->observers;
    observers.push_back(center->addSafeObserver(
        *this, &ZRDBCache::databaseChanged, kZRDatabaseChangedExternallyNotification, nullptr));
    // Told after a restore, and after a database that was replaced: the records of the lists are gone.
    for (const char* name : {kZRRosterWasResetPrivateNotification, kZRRosterDidResetPriv})
        observers.push_back(center->addSafeObserver(*this, &ZRDBCache::databaseWasReset, name, roster));
}

ZRDBCache::~ZRDBCache()
{
    ZRSafeNotificationCenter::defaultCenter()->removeObserversInCollection(_state->observers);
    auto& state = ZRRosterAccess::state(*_state->roster);
    const platform::Lock guard(state.monitor);
    if (state.dbCache == this)
        state.dbCache = nullptr;
}

// ---- the cache of a roster

Ref<ZRDBCache> ZRDBCache::nts_SharedDBCache()
{
    static platform::NeverDestroyed<Ref<ZRDBCache>> shared;
    if (!*shared)
        if (const auto roster = ZRRoster::nts_SharedRoster())
            *shared = initWithRoster(roster);
    return *shared;
}

Ref<ZRDBCache> ZRDBCache::sharedDBCache()
{
    const auto roster = ZRRoster::sharedRoster();
    return roster ? locked(*roster, ZRAccess::read, []() ZR_NTS { return nts_SharedDBCache(); }) : nullptr;
}

Ref<ZRDBCache> ZRRoster::dbCache()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_dbCache(); });
}

// Known weakly, as records are: lists own records, and records their roster.
Ref<ZRDBCache> ZRRoster::nts_dbCache()
{
    if (isSharedInstance())
        return ZRDBCache::nts_SharedDBCache();
    {
        const platform::Lock guard(_state->monitor);
        if (_state->dbCache && _state->dbCache->retainIfOwned())
            return Ref<ZRDBCache>::adopt(_state->dbCache);
    }
    auto cache = ZRDBCache::initWithRoster(Ref<ZRRoster>(this));
    const platform::Lock guard(_state->monitor);
    _state->dbCache = cache.get();
    return cache;
}

Ref<ZRRoster> ZRDBCache::roster() const { return _state->roster; }

std::int64_t ZRDBCache::nameSorting() const
{
    return locked(*_state->roster, ZRAccess::read, [&] { return _state->nameSorting; });
}

objectstore::UndoManager* ZRDBCache::undoManager()
{
    return locked(*_state->roster, ZRAccess::read, [&] {
        const auto& make = ZRServices::registered().newUndoManager;
        if (!_state->undoManager && make)
            _state->undoManager = make();
        return _state->undoManager.get();
    });
}

void ZRDBCache::updateGroupSelection(const Ref<ZRGroup>& group)
{
    if (group)
        updateGroupsSelection({group});
}

// ---- what others changed

void ZRDBCache::databaseChanged(const Notification& notice)
{
    bool groups = false, people = false;
    databaseChangedForUserInfo(notice.userInfo, groups, people);
    resetCachesForPeople(people, groups, true);
}

void ZRDBCache::databaseWasReset(const Notification&) { resetCachesForPeople(true, true, false); }

void ZRDBCache::databaseChangedForUserInfo(const Value& userInfo, bool& groupsChanged, bool& peopleChanged)
{
    const auto isThere = [&](std::string_view key) { return userInfo[key].isArray(); };
    groupsChanged = peopleChanged = std::ranges::none_of(kZRNoticeLists, isThere);
    for (const std::string_view key : kZRNoticeLists)
        for (const Value& id : userInfo[key].asArray()) {
            if (groupsChanged && peopleChanged)
                return;
            const std::string recordClass = ZRRoster::recordClassFromUniqueId(id.asText());
            peopleChanged |= recordClass == "ZRPerson" || recordClass == "ZRSubscribedPerson";
            groupsChanged |= recordClass == "ZRGroup" || recordClass == "ZRSubscribedGroup";
        }
}

// The groups' list too: nobody else tells the cache of groups that another process made.
void ZRDBCache::resetCachesForPeople(bool, bool, bool)
{
    locked(*_state->roster, ZRAccess::read, [&] {
        _state->groupsPeople.clear();
        _state->allPeopleMap.clear();
        _state->allGroups.reset();
    });
}
