// How changes that others saved reach a roster: notices, the refresh of what is held, and what observers
// hear.
#include "core/ZRConstants.h"
#include "core/ZRLog.h"
#include "objectstore/StoreCoordinator.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/processes/NoticeLog.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unistd.h>
#include <unordered_set>

using objectstore::ObjectList;
using objectstore::StoreObject;
using platform::Ref;
using platform::Value;

namespace {

/// A change notice, read.
struct Notice {
    explicit Notice(const Value& info)
        : process(info[zr::kZRSenderProcessID].asInteger())
        , user(info[kZRUserUIDKey].asInteger())
        , directory(info[kZRDatabaseDirectoryKey].asText())
        , restored(info[zr::kZRRestoreFromBackup].asBoolean() || info[zr::kZRRestoreFromMetadata].asBoolean())
        , hasRecords(info[kZRReloadRecords].asBoolean()
              || std::ranges::any_of(
                  kZRNoticeLists, [&](std::string_view key) { return !info[key].asArray().empty(); }))
    {
    }

    bool isOfOtherProcess() const { return user == geteuid() && process != getpid(); }
    bool isOfDirectory(const ZRRoster& roster) const
    {
        const std::string own = roster.databaseDirectory();
        return directory.empty() ? own == ZRRoster::defaultRosterDirectory() : directory == own;
    }
    /// The stores of sources lie below a roster: what changes there concerns it too.
    bool isOfSource() const { return directory.find("Sources") != std::string_view::npos; }

    std::int64_t process;
    std::int64_t user;
    std::string_view directory;
    bool restored;
    bool hasRecords;
};

/// Runs `body` with the roster kept alive, unless its last owner has gone.
template <class Body>
void whileOwned(ZRRoster& roster, Body body)
{
    if (!roster.retainIfOwned())
        return;
    const auto keeper = Ref<ZRRoster>::adopt(&roster);
    body();
}

/// Whether another process announced a reset that has not come yet.
bool isWaitingForReset(ZRRoster& roster)
{
    return locked(
        roster, ZRAccess::read, [&]() ZR_NTS { return ZRRosterAccess::state(roster).flags.waitingForReset; });
}

/// What a notice without ids may be about: of these few, all are looked at.
bool isAlwaysRefreshed(const StoreObject& object)
{
    return object.entity().name() == "ZROSInfo" || object.entity().name() == "ZROSRosterSource";
}

bool isNamedByNotices(const StoreObject& object)
{
    const std::string_view entity = object.entity().name();
    return entity == "ZROSContact" || entity == "ZROSGroup" || entity == "ZROSSmartGroup";
}

} // namespace

// ---- who is listened to

void ZRRoster::observeOwnProcess()
{
    for (const char* name : {kZRDatabaseChangedNotification, kZRDatabaseChangedNotificationPriv})
        _state->observers.push_back(platform::NotificationCenter::shared().subscribe(
            name, nullptr, [this](const platform::Notification& notice) {
                whileOwned(*this, [&] { databaseChangedExternally(notice.name, notice.userInfo); });
            }));
}

void ZRRoster::observeOtherProcesses()
{
    const auto center = platform::DistributedNotificationCenter::shared();
    const auto listen = [&](const char* name, void (ZRRoster::*take)(const std::string&, const Value&)) {
        _state->observers.push_back(center->subscribe(
            name, std::nullopt, [this, take](const platform::DistributedNotification& notice) {
                whileOwned(*this, [&] { (this->*take)(notice.name, notice.userInfo); });
            }));
    };
    listen(kZRDatabaseChangedNotification, &ZRRoster::databaseChangedExternally);
    listen(kZRDatabaseChangedNotificationPriv, &ZRRoster::databaseChangedExternally);
    listen(kZRWillRestoreFromMetadataPriv, &ZRRoster::willRestoreFromMetadata);
    listen(platform::kNoticesMissed, &ZRRoster::noticesMissed);
}

// ---- what comes in

void ZRRoster::databaseChangedExternally(const std::string& name, const Value& userInfo)
{
    if (!userInfo.isDictionary())
        return;
    const Notice notice(userInfo);
    if ((!notice.isOfDirectory(*this) && !notice.isOfSource()) || !notice.isOfOtherProcess()
        || (!notice.hasRecords && !notice.restored))
        return;
    const bool isWaiting = isWaitingForReset(*this);
    if (notice.restored && (isWaiting || !notice.hasRecords)) {
        platform::log(fmt::format("Resetting database due to: {}", userInfo.description()));
        resetDatabase();
    } else if (!isWaiting) {
        resetRecordsWithUserInfo(userInfo);
    }
    // On the main queue a reset is over by now, and whoever waited for it hears why.
    if (!isWaitingForReset(*this))
        tellOfExternalChange(name, userInfo);
}

void ZRRoster::tellOfExternalChange(const std::string& name, const Value& userInfo)
{
    const char* const outgoing = name == kZRDatabaseChangedNotificationPriv
        ? kZRDatabaseChangedExternallyNotificationPriv
        : kZRDatabaseChangedExternallyNotification;
    if (__ZRLogNotifications)
        platform::log(
            fmt::format("databaseChangedExternally: posting {}: {}", outgoing, userInfo.description()));
    platform::NotificationCenter::shared().postOnMain(
        {outgoing, Ref<const platform::Object>(this), userInfo});
}

void ZRRoster::willRestoreFromMetadata(const std::string&, const Value& userInfo)
{
    const Notice notice(userInfo);
    if (notice.isOfOtherProcess() && notice.isOfDirectory(*this))
        locked(*this, ZRAccess::write, [&]() ZR_NTS { _state->flags.waitingForReset = true; });
}

// Nobody knows what the lost notices said: everything that is held is looked at, and observers hear that.
void ZRRoster::noticesMissed(const std::string&, const Value&)
{
    if (isWaitingForReset(*this))
        return;
    const Value all = Value::dictionary({{kZRReloadRecords, Value(true)}});
    resetRecordsWithUserInfo(all);
    for (const char* name : {kZRDatabaseChangedNotification, kZRDatabaseChangedNotificationPriv})
        tellOfExternalChange(name, all);
}

// ---- what is refreshed

void ZRRoster::resetRecordsWithUserInfo(const Value& userInfo)
{
    locked(*this, ZRAccess::write, [&]() ZR_NTS {
        const auto context = managedObjectContext();
        if (!context)
            return;
        context->flushPendingChanges();
        auto* const undo = context->undoManager();
        if (undo)
            undo->disableUndoRegistration();
        // The versions in the store are the truth: this finds all that changed, named or not.
        if (const auto caught = context->catchUp(); !caught)
            platform::log(fmt::format("Error refreshing records: {}", caught.error().text));
        for (const std::string_view key : kZRNoticeLists)
            resetRecordsWithUniqueIds(userInfo[key]);
        std::vector<std::string> deleted;
        for (const Value& id : userInfo[zr::kZRDeletedRecords].asArray())
            deleted.emplace_back(id.asText());
        nts_ClearCachedRecordsForUniqueIds(deleted);
        context->flushPendingChanges();
        if (undo)
            undo->enableUndoRegistration();
    });
}

void ZRRoster::resetRecordsWithUniqueIds(const Value& uniqueIds)
{
    if (!uniqueIds.isArray())
        return;
    std::unordered_set<std::string_view> wanted;
    for (const Value& id : uniqueIds.asArray())
        wanted.insert(id.asText());
    const auto context = managedObjectContext();
    std::map<const objectstore::Entity*, ObjectList> byEntity;
    const ObjectList found = context->registeredObjects([&](StoreObject& object) {
        // What was never read, or was dropped, will be read fresh.
        return isAlwaysRefreshed(object)
            || (!object.isFault() && isNamedByNotices(object)
                && wanted.contains(object.text(object.slot("uniqueId"))));
    });
    for (const auto& object : found)
        byEntity[&object->entity()].push_back(object);
    for (const auto& [entity, objects] : byEntity)
        context->refreshRecords(objects);
}

// ---- what the engine finds

bool ZRRoster::setContainsEntity(const ObjectList& objects, std::string_view entity)
{
    return std::ranges::any_of(
        objects, [&](const auto& object) { return object->entity().name() == entity; });
}

/// Definitions that were made are read anew, and handles of what was deleted leave the cache.
void ZRRoster::takeInChanges(const objectstore::StoreChanges& changes)
{
    for (const auto* list : {&changes.inserted, &changes.updated, &changes.deleted})
        if (setContainsEntity(*list, "ZROSCustomProperty")) {
            clearCustomPropertyCaches();
            break;
        }
    std::vector<std::string> gone;
    for (const auto& object : changes.deleted)
        if (const auto* record = dynamic_cast<ZROSRecord*>(object.get()); record && record->publicRecord())
            gone.push_back(record->publicRecord()->nts_UniqueId());
    nts_ClearCachedRecordsForUniqueIds(gone);
}

void ZRRoster::zrManagedObjectContextDidSave(const platform::Notification& notice)
{
    const auto* saver = dynamic_cast<const ZRManagedObjectContext*>(notice.object.get());
    const auto* changes = notice.userInfo.as<objectstore::StoreChanges>();
    if (!saver || !changes)
        return;
    whileOwned(*this, [&] {
        const auto mine = managedObjectContext();
        if (!mine || mine->coordinator() != saver->coordinator())
            return;
        // On the saving thread, inside its save.
        zrGlobalLockIsHeld();
        takeInChanges(*changes);
    });
}

/// The file of the database was removed or replaced under us. Whoever found it may hold the lock and objects,
/// so that the reset waits for its turn on the main queue.
void ZRRoster::startOverLater()
{
    if (_state->isGoingToReset.exchange(true))
        return;
    platform::log(fmt::format(
        "The database in {} was removed or replaced: what was read of it, and edits not saved, are dropped",
        _state->directory));
    platform::MainQueue::shared().async([roster = Ref<ZRRoster>(this)] {
        roster->_state->isGoingToReset = false;
        roster->resetDatabase();
    });
}

void ZRRoster::observeContext()
{
    auto& center = platform::NotificationCenter::shared();
    _state->didSave = center.subscribe(objectstore::kStoreContextDidSave, nullptr,
        [this](const platform::Notification& notice) { zrManagedObjectContextDidSave(notice); });
    _state->didCatchUp = center.subscribe(objectstore::kStoreContextDidCatchUp, _state->context.get(),
        [this](const platform::Notification& notice) {
            const auto* changes = notice.userInfo.as<objectstore::StoreChanges>();
            whileOwned(*this, [&] {
                if (changes)
                    locked(*this, ZRAccess::write, [&]() ZR_NTS { takeInChanges(*changes); });
            });
        });
    _state->didLoseStore = center.subscribe(objectstore::kStoreContextDidLoseStore, _state->context.get(),
        [this](const platform::Notification&) { whileOwned(*this, [&] { startOverLater(); }); });
}
