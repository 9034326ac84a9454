// What a roster knows, for the files that implement it.
#pragma once

#include "platform/notify/Subscription.h"
#include "platform/run/Mutex.h"
#include "platform/value/Error.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelTable.h"
#include "store/ZRRoster.h"

#include <atomic>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

/// The bit set of a roster, by position: other programs read it in dumps.
struct ZRRosterFlags {
    bool hasUnsavedChanges = false;
    /// The store file cannot be written by this user.
    bool readOnly = false;
    /// Import the Me card at the first open.
    bool importMe = false;
    /// No store file existed when the roster was made.
    bool needConversion = false;
    bool cleanedUp = false;
    bool importTips = false;
    /// Rebuild from the metadata files of the records.
    bool restoreFromMetaData = false;
    bool prefsNeedSync = false;
    /// Another process announced a restore; a reset is coming.
    bool waitingForReset = false;
};

struct ZRRoster::State {
    enum class Kind { shared, onDirectory, parallel, inMemory };

    Kind kind = Kind::onDirectory;
    ZRRosterFlags flags;

    /// The monitor of the private dictionary: what follows, up to the lists.
    platform::RecursiveMutex monitor;
    std::string directory;
    std::string imagesDirectory;
    platform::Ref<ZRManagedObjectContext> context;
    platform::Ref<ZRManagedObjectContext> mailRecentsContext;
    platform::Ref<objectstore::StoreCoordinator> coordinator;
    bool ownsContext = false;
    /// Opening was tried and failed: it is not tried again.
    bool openingFailed = false;
    /// Counts among the users of the store of its path.
    bool holdsSharedStore = false;
    std::map<std::string, ZRCustomProperties::Definitions, std::less<>> customProperties;
    std::vector<platform::Ref<ZRRecordConstraint>> constraints;
    /// The sorted lists, while somebody holds them.
    ZRDBCache* dbCache = nullptr;

    // Under the global lock.
    /// The contexts that the holders of the lock locked, innermost last: the context may change meanwhile.
    std::vector<platform::Ref<ZRManagedObjectContext>> lockedContexts;
    std::unordered_map<std::string, ZRRecord*> recordsById;
    std::unordered_map<std::string, ZRRecord*> recordsByKey;
    /// The records that the roster itself keeps alive: Me and its facts.
    platform::Ref<ZRRecord> me;
    bool keepsPictures = false;
    std::map<std::pair<std::string, std::string>, platform::Value> pictures;
    /// What the save under way replaces of the pictures of cards that are there, by path.
    std::map<std::string, std::string> replacedPictures;
    platform::Error lastSaveError;
    platform::Subscription didSave;
    platform::Subscription didCatchUp;
    platform::Subscription didLoseStore;
    std::atomic<bool> isGoingToReset = false;
    std::vector<platform::Subscription> observers;
};

/// How the files of the roster, and free functions beside them, reach its state.
struct ZRRosterAccess {
    static ZRRoster::State& state(ZRRoster& roster) { return *roster._state; }
    static const ZRRoster::State& state(const ZRRoster& roster) { return *roster._state; }
    static platform::Ref<ZRRoster> make(ZRRoster::State::Kind kind);
    static void observeOwnProcess(ZRRoster& roster) { roster.observeOwnProcess(); }
    static void observeReverts(ZRRoster& roster);
    static void observeOtherProcesses(ZRRoster& roster) { roster.observeOtherProcesses(); }
};

/// What came of opening a store.
struct ZRStoreOpening {
    platform::Ref<ZRManagedObjectContext> context;
    /// The store is new, was moved aside, or lives in memory: what it held must come from elsewhere.
    bool loadFailure = false;
    /// The store lives in memory, since its file may not be used: nothing that is saved would last.
    bool runsWithoutFile = false;
    /// The store is a copy for this process alone; nobody shares it.
    bool isTemporaryCopy = false;
};
/// The stores of a directory, by the numbers that other programs know them by.
enum class ZRStoreDataType { roster = 1001, mailRecents = 1002 };
/// Opens the store of that model at `databasePath`, or shares the one that is open; `version` says in its
/// metadata what form the contents have. With the preference "ZRUseInMemorySQLiteStore" mail recents are read
/// into memory, and nothing of theirs is written any more. See ZRRoster+Opening.cpp.
ZRStoreOpening nts_managedObjectContextWithModel(platform::Ref<const objectstore::Model> model,
    const std::string& databasePath, ZRStoreDataType dataType, float version);
/// Gives back one use of it; the last one closes it.
void nts_closeStore(const std::string& path);

/// Adds one line to what `openingReport` tells.
void noteOpeningProblem(const std::string& text);
/// Ends the midnight timer where it is that of this roster, which is going. See
/// search/ZRRoster+SmartGroups.cpp.
void forgetMidnightTimer(const ZRRoster& roster);
/// True once a process for each directory.
bool nts_shouldImportInto(const std::string& directory) ZR_NTS;
