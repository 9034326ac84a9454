// How smart groups that depend on today's date stay current when nothing changes but the date.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/run/Clock.h"
#include "platform/run/MainQueue.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/text/Dates.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRosterState.h"

#include <algorithm>

using platform::Date;
using platform::Lock;
using platform::Ref;
using platform::Value;
using Factory = ZRRecordObjectStoreFactoryImpl;

std::atomic<bool> __checkedSmartGroups = false;

namespace {

/// Posted by the clock of the desktop when the user sets time or zone.
constexpr char clockChange[] = "org.quillon.MenuBarClock.ClockNotification";

/// The timer of the process, whichever roster set it up.
struct Midnight {
    platform::Mutex mutex;
    /// The roster that the timer is for. It is not kept alive: its destructor takes it out.
    ZRRoster* roster ZR_GUARDED_BY(mutex) = nullptr;
    platform::MainQueue::Token timer ZR_GUARDED_BY(mutex);
    Value fireDate ZR_GUARDED_BY(mutex);
    platform::Subscription clockChanges ZR_GUARDED_BY(mutex);
};

Midnight& midnight()
{
    static const platform::NeverDestroyed<Midnight> the;
    return *the;
}

/// The roster that the timer is for, unless it has gone.
Ref<ZRRoster> rosterOfTimer()
{
    Lock lock(midnight().mutex);
    ZRRoster* roster = midnight().roster;
    return roster && roster->retainIfOwned() ? Ref<ZRRoster>::adopt(roster) : nullptr;
}

/// Five seconds past the next midnight of the local zone; absent at the end of the calendar. Midnight is
/// where tomorrow begins, however long today is, and also where clocks pass it twice or not at all.
std::optional<Date> nextFireDate(Date now)
{
    constexpr double grace = 5, oneDay = 86400;
    const auto zone = platform::TimeZone::local();
    const auto today = platform::calendarDayOf(now, zone);
    const auto noon = today ? platform::noonOf(*today, zone) : std::nullopt;
    const auto tomorrow = noon ? platform::calendarDayOf({noon->seconds + oneDay}, zone) : std::nullopt;
    const auto begin = tomorrow ? platform::dateOf({.day = *tomorrow}, zone) : std::nullopt;
    return begin ? std::optional(Date{begin->seconds + grace}) : std::nullopt;
}

/// Whether some card matches, by the store where it can be asked. Where it cannot, looking is expensive, and
/// done only for groups whose user wants to be told.
bool nts_hasMatch(const ZRSmartGroup& group, const ZRSearchElement& search, ZRRoster& roster) ZR_NTS
{
    const auto& people = ZRPerson::recordClassDescription;
    const auto& entity = *Factory::implClassForPublicRecordClass(people);
    if (const auto predicate = search._predicateForImplClass(entity, roster))
        return roster.countOfRecordsForClass(people, predicate, false) != 0;
    if (!group.nts_TracksModification())
        return false;
    const auto all = roster.recordsForClass(
        people, nullptr, search.prefetchingRelationshipKeyPathsForImplClass(entity, roster), false);
    return std::ranges::any_of(
        all, [&](const auto& person) ZR_NTS { return search.nts_MatchesRecord(*person); });
}

/// Some card is in the window now, and the group was not changed since the far edge of the window passed.
bool nts_isOutdated(const ZRSmartGroup& group, ZRRoster& roster) ZR_NTS
{
    const SmartGroupSearches kept;
    const auto search = nts_searchOfSmartGroup(group);
    const Value edge = search ? search->_withinDate() : Value();
    const Value modified = group.nts_ValueForProperty(zr::kZRModificationDateProperty);
    return edge.isDate() && modified.isDate() && modified.asDate() < edge.asDate()
        && nts_hasMatch(group, *search, roster);
}

} // namespace

void forgetMidnightTimer(const ZRRoster& roster)
{
    // Declared first, so that it ends outside the mutex: its end waits for a notice under way, which takes
    // the mutex.
    platform::Subscription last;
    const Lock lock(midnight().mutex);
    if (midnight().roster != &roster)
        return;
    midnight().roster = nullptr;
    midnight().timer.cancel();
    midnight().fireDate = Value();
    last = std::move(midnight().clockChanges);
}

bool ZRRoster::nts_shouldUpdateDateRelatedSmartGroups() const { return !__checkedSmartGroups; }

void ZRRoster::updateDateRelatedSmartGroups()
{
    locked(*this, ZRAccess::write, [&]() ZR_NTS { nts_UpdateDateRelatedSmartGroups(); });
}

void ZRRoster::nts_UpdateDateRelatedSmartGroups()
{
    __checkedSmartGroups = true;
    if (!_midnightFireDate().isDate())
        _setupMidnightTimer();
    for (const auto& record : nts_AllRecordsForClass(ZRSmartGroup::recordClassDescription)) {
        auto& group = static_cast<ZRSmartGroup&>(*record);
        if (nts_isOutdated(group, *this))
            group.nts_SetIsModified(true);
    }
}

Value ZRRoster::_midnightFireDate()
{
    Lock lock(midnight().mutex);
    return midnight().fireDate;
}

void ZRRoster::_setupMidnightTimer()
{
    const double now = platform::Clock::current().now();
    const auto fireDate = nextFireDate({now});
    if (!fireDate)
        return;
    Lock lock(midnight().mutex);
    midnight().roster = this;
    midnight().fireDate = Value(*fireDate);
    midnight().timer = platform::MainQueue::shared().after(fireDate->seconds - now, [] {
        if (const auto roster = rosterOfTimer())
            roster->_midnightPassed();
    });
    const auto center = platform::DistributedNotificationCenter::shared();
    if (!midnight().clockChanges)
        midnight().clockChanges = center->subscribe(clockChange, std::nullopt, [](const auto&) {
            if (const auto roster = rosterOfTimer())
                roster->_systemTimeChanged();
        });
}

// The timer fires once: who goes on past the next midnight hears of it by a clock change, or asks.
void ZRRoster::_midnightPassed() { updateDateRelatedSmartGroups(); }

void ZRRoster::_systemTimeChanged()
{
    platform::TimeZone::forgetLocal();
    _setupMidnightTimer();
}
