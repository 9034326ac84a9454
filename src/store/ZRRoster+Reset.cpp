// How a roster forgets what it has read: some of it, all of it, or the store itself for one put in its place.
#include "core/ZRConstants.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreCoordinator.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Dispatch.h"
#include "platform/run/Log.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

using objectstore::StoreCoordinator;
using platform::Ref;
using platform::Value;

namespace {

/// Closes the last store and opens again what is at its path now.
void reopenLastStore(StoreCoordinator& coordinator)
{
    const platform::Lock guard(coordinator.mutex());
    const auto stores = coordinator.stores();
    if (stores.empty())
        return;
    const std::string path = stores.back()->path();
    const auto type =
        stores.back()->isInMemory() ? objectstore::StoreType::inMemory : objectstore::StoreType::sqlite;
    if (const auto removed = coordinator.removeStore(stores.back()); !removed)
        platform::log(fmt::format("Error removing persistent store: {}", removed.error().text));
    if (const auto added = coordinator.addStore(type, path); !added)
        platform::log(fmt::format("Error re-adding persistent store: {}", added.error().text));
}

void post(const char* name, ZRRoster& roster)
{
    platform::NotificationCenter::shared().post({name, Ref<const platform::Object>(&roster), Value()});
}

/// Forgets all that was read and opens what is at the path of the store now. The lock is held.
void startOver(ZRRoster& roster) ZR_NTS
{
    ZRRosterAccess::state(roster).flags.waitingForReset = false;
    roster.nts_ClearCachedRecordsByUniqueId();
    roster.clearCustomPropertyCaches();
    if (const auto context = roster.managedObjectContext()) {
        context->reset();
        reopenLastStore(*context->coordinator());
    }
}

} // namespace

void ZRRoster::resetDatabase()
{
    zr_dispatch_main([roster = Ref<ZRRoster>(this)] {
        post(kZRRosterWillResetPriv, *roster);
        locked(*roster, ZRAccess::write, [&]() ZR_NTS { startOver(*roster); });
        post(kZRRosterDidResetPriv, *roster);
    });
}

void ZRRosterAccess::observeReverts(ZRRoster& roster)
{
    // About this roster only, and its poster holds it: it is there when the selector runs.
    state(roster).observers.push_back(platform::NotificationCenter::shared().subscribe(
        "ZRPrivateDidRevertFromBackupAndNowShouldResetAndUnlockContext", &roster,
        [&roster](const platform::Notification& notice) {
            roster.zrDidRevertFromBackupCompleteResetContextAndUnlock(notice);
        }));
}

void ZRRoster::zrDidRevertFromBackupCompleteResetContextAndUnlock(const platform::Notification&)
{
    locked(*this, ZRAccess::write, [&]() ZR_NTS {
        startOver(*this);
        if (const auto& recents = _state->mailRecentsContext) {
            recents->reset();
            reopenLastStore(*recents->coordinator());
        }
    });
}

void ZRRoster::resetManagedObjectContext()
{
    locked(*this, ZRAccess::write, [&]() ZR_NTS {
        clearCustomPropertyCaches();
        if (const auto context = managedObjectContext())
            context->reset();
    });
}

void ZRRoster::_vacuum()
{
    locked(*this, ZRAccess::write, [&]() ZR_NTS {
        nts_ClearCachedRecordsByUniqueId();
        clearTemporaryCaches();
        clearCustomPropertyCaches();
    });
}
