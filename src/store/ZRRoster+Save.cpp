// How the changes of a roster are written: in one transaction, with the log of what was deleted.
#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRInfo.h"
#include "core/ZRLastImportGroup.h"
#include "core/ZRLog.h"
#include "objectstore/StoreContext.h"
#include "objectstore/Transaction.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "store/PictureWriting.h"
#include "store/ZRFileLock.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"
#include "store/ZRSyncManager.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <unordered_set>

using objectstore::ObjectList;
using platform::Ref;
using platform::Value;

namespace {

/// Files that versions long gone left in a roster's directory.
bool isLeftover(const std::string& name)
{
    if (name.starts_with("ZRMailRecent.") || name.ends_with(".index2"))
        return true;
    constexpr std::string_view numbered = "Roster.data.";
    const std::string number = name.starts_with(numbered) ? name.substr(numbered.size()) : std::string();
    return !number.empty() && number.find_first_not_of("0123456789") == std::string::npos && number != "0"
        && number != "1";
}

void cleanUp(const std::string& directory)
{
    std::error_code ignored;
    for (const auto& file : std::filesystem::directory_iterator(directory, ignored))
        if (isLeftover(file.path().filename().string()))
            static_cast<void>(platform::removeFile(file.path().string()));
}

/// Once a process, the first roster that is written to the disk notes which version of the system wrote it
/// last.
void noteVersion(ZRRoster& roster) ZR_NTS
{
    static bool wasNoted = false;
    if (wasNoted || roster.isMemoryBacked())
        return;
    if (const auto info = roster.nts_Info())
        wasNoted = info->nts_SetValue(Value(ZRFrameworkBundle().version()), "LastSavedVersion");
}

/// Takes the rows of the log of deletions back that a save made and could not write: the next one makes them
/// anew.
void dropLogOfDeletions(ZRManagedObjectContext& context)
{
    std::unordered_set<std::string> deleted;
    for (const auto& object : context.deletedObjects())
        if (auto* const record = dynamic_cast<ZROSRecord*>(object.get()))
            deleted.emplace(record->text(record->slot("uniqueId")));
    for (const auto& object : context.insertedObjects())
        if (object->entity().name() == "ZROSDeletedRecordLog"
            && deleted.contains(std::string(object->text(object->slot("deletedRecordUniqueId")))))
            context.deleteObject(*object);
}

/// Runs a step of a save that reads what it needs; false, with the reason, when the store cannot be read.
template <class Step>
bool unlessUnreadable(platform::Error& reason, Step step) ZR_NTS
{
    const auto done = objectstore::answering("save", [&] {
        zrGlobalLockIsHeld();
        return step();
    });
    if (done)
        return *done;
    reason = done.error();
    platform::log(fmt::format("Roster failed to save: {} ({})", reason.text, reason.code));
    return false;
}

/// Other processes hear only of the store that the shared roster is on.
bool isOnSharedStore(ZRRoster& roster) ZR_NTS
{
    if (roster.isMemoryBacked())
        return false;
    const auto shared = ZRRoster::nts_SharedRoster();
    return shared && shared->storeCoordinator() == roster.storeCoordinator();
}

} // namespace

bool ZRRoster::save() { return saveAndTriggerSync(true, Value()); }

bool ZRRoster::saveAndReturnError(platform::Error*) { return save(); }

bool ZRRoster::saveAndTriggerSync(bool triggerSync, const Value& modificationDate)
{
    const bool saved = locked(*this, ZRAccess::write,
        [&]() ZR_NTS { return nts_SaveWithFileLock(false, triggerSync, modificationDate); });
    if (!saved)
        platform::log(fmt::format("-[ZRRoster save] failed. ({})", _state->directory));
    return saved;
}

bool ZRRoster::saveAndTriggerSync_udpateModificationDate(bool triggerSync, const Value& modificationDate)
{
    return saveAndTriggerSync(triggerSync, modificationDate);
}

bool ZRRoster::nts_Save() { return nts_SaveAndTriggerSync(true, Value()); }

bool ZRRoster::nts_SaveAndTriggerSync(bool triggerSync, const Value& modificationDate)
{
    return nts_SaveWithFileLock(true, triggerSync, modificationDate);
}

bool ZRRoster::nts_SaveWithFileLock(bool withFileLock)
{
    return nts_SaveWithFileLock(withFileLock, true, Value());
}

bool ZRRoster::nts_SaveWithFileLock(bool withFileLock, bool triggerSync, const Value& modificationDate)
{
    if (!nts_hasUnsavedChanges()) {
        nts_saveLastImport();
        return true;
    }
    const auto context = managedObjectContext();
    if (const auto checked = context->checkFiles(); !checked) {
        _state->lastSaveError = checked.error();
        return false;
    }
    context->zrPruneEmptyRelationships();
    if (_isReadOnlyIgnoresInert(true)) {
        _state->lastSaveError = {
            "ZRRosterErrorDomain", 513, _state->directory + ": the roster may not be written"};
        return false;
    }
    if ((isInert() && !isSharedInstance()) || (!isMemoryBacked() && !nts_hasSharedInstance()))
        return false;

    const double start = platform::Clock::current().monotonic();
    ZRFileLock* const fileLock = nts_FileLock();
    const ZRFileLockScope fileLockScope(withFileLock ? fileLock : nullptr);
    if (!fileLockScope.isHeld()) {
        _state->lastSaveError = platform::fileError(fileLock->pathN, "cannot be locked", errno);
        return false;
    }
    if (!_state->flags.cleanedUp && !_state->directory.empty())
        cleanUp(_state->directory);
    _state->flags.cleanedUp = true;
    if (fileLock)
        ZRUpdateFileLockTime(*fileLock);

    UserInfo publicInfo, privateInfo;
    SaveEffects effects;
    const auto prepare = [&]() ZR_NTS {
        noteVersion(*this);
        ZRRecordObjectStoreFactoryImpl::doRemoveRecordsAndCreateLogsWithRoster(*this);
        return preparePublicChangeNotification(publicInfo, privateInfo, effects, modificationDate);
    };
    if (!unlessUnreadable(_state->lastSaveError, prepare) || !nts_writeChanges(*context)) {
        dropLogOfDeletions(*context);
        return false;
    }
    if (isOnSharedStore(*this)) {
        nts_SendRosterDidSaveNotificationsWithPublicUserInfo(
            publicInfo, privateInfo, effects.privateTablesChanged);
        if (fileLock)
            ZRUpdateFileLockTime(*fileLock);
    }
    if (ZRPerfFlagIsSet(ZRPerfFlag::save))
        ZRPerfLog("[LogSaveTimes] Time to save = {:3.3f}", platform::Clock::current().monotonic() - start);
    // Whether a roster in memory is a clone is not asked: that would open the shared one.
    if (triggerSync && effects.couldAffectSyncing && !isMemoryBacked() && isSharedInstanceOrClone())
        ZRSyncManager::sharedSyncManager().scheduleTrickleSyncSoon();
    if (effects.couldAffectSharing)
        _launchOrWaitForDaemon();
    nts_saveLastImport();
    return true;
}

// After the commit, so that no id stands in the file of a card that is not in the store. The file is a
// convenience: what cannot be written of it is logged and fails no save.
void ZRRoster::nts_saveLastImport()
{
    if (isSharedInstance())
        ZRLastImportGroup::saveContentOfLastImportGroup();
}

// The pictures are on the disk before the commit: a crash in between leaves a file that no card has, never a
// card whose picture is missing.
bool ZRRoster::nts_writeChanges(ZRManagedObjectContext& context)
{
    auto pictures = nts_writePictures();
    const auto refuse = [&](const platform::Error& error) ZR_NTS {
        _state->lastSaveError = error;
        static_cast<void>(pictures.finish());
        nts_removeWrittenPictures();
        return false;
    };
    try {
        auto saved = context.save([&] { return pictures.finish(); });
        if (saved)
            saved = pictures.finish();
        if (!saved) {
            const auto& error = saved.error();
            platform::log(fmt::format("Roster failed to save: {} ({})", error.text, error.code));
            return refuse(error);
        }
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Caught ObjectStore exception when saving MOC: {}", failure.what()));
        return refuse({"ZRRosterErrorDomain", 1, failure.what()});
    }
    _state->pictures.clear();
    _state->replacedPictures.clear();
    const auto& saveRecents = ZRServices::registered().saveMailRecents;
    return !saveRecents || saveRecents();
}

bool ZRRoster::hasUnsavedChanges()
{
    const bool has = locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_hasUnsavedChanges(); });
    const auto& recents = ZRServices::registered().hasUnsavedMailRecents;
    return has || (recents && recents());
}

bool ZRRoster::nts_hasUnsavedChanges()
{
    const auto context = managedObjectContext();
    return context && context->hasChanges();
}

platform::Error ZRRoster::lastSaveError() const { return _state->lastSaveError; }

std::int64_t ZRRoster::version()
{
    constexpr std::int64_t current = 3;
    const Value stored = locked(*this, ZRAccess::read, [&]() ZR_NTS {
        const auto info = nts_Info();
        return info ? info->nts_ValueForProperty("Version") : Value();
    });
    return stored.isNumber() ? stored.asInteger() : current;
}
