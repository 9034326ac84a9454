// The one object through which a process reaches a contact database.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRPropertyType.h"
#include "core/ZRRecord.h"
#include "core/ZRSourcePlace.h"
#include "platform/value/Error.h"

#include <cstdint>
#include <functional>
#include <map>

class PictureWriting;
class ZRDBCache;
class ZRInfo;
class ZRManagedObjectContext;
class ZRPerson;
class ZRRecordConstraint;
class ZRSearchElement;
struct ZRFileLock;

/// How a list of people is sorted; `preferred` is the user's choice.
enum class ZRNameOrder { preferred, firstName, lastName };

/// What a host adds to the labels in use: its own for that property. Empty: none.
struct ZRLabelsDelegate {
    std::function<std::vector<std::string>(std::string_view property)> additionalActiveLabelsForProperty = {};
};

/// How one class of records is searched, for people who ask why a search is slow or finds nothing.
struct ZRSearchRoute {
    std::string recordClass;
    /// What the store is asked; empty when it cannot be asked, and every record is looked at in memory.
    std::string predicate;
    /// The statement, and what the database says of the way it goes; empty likewise.
    std::string sql;
    std::vector<std::string> plan;
};

namespace objectstore {
class StoreChanges;
class StoreCoordinator;
class StoreObject;
class StorePredicate;
} // namespace objectstore

namespace platform {
class AttributedString;
struct Notification;
} // namespace platform

/// A contact database: the shared one of this process, another directory's, or one in memory.
///
/// There is one shared roster a process. Others are made by the class-level operations only: `init` raises.
///
/// Ownership: the shared roster lives as long as the process. Records share ownership of their roster; the
///            roster holds its records weakly.
/// Threads:   any thread may call. Public operations take the global lock, then the lock of the roster's
///            context; `nts_` forms expect both.
/// Errors:    a store that cannot be opened gives no roster, or a roster in memory (see `openingReport`);
///            bad arguments raise ZRInvalidArgument; a failed save answers false, with every edit still
///            there.
class ZR_EXPORT ZRRoster : public platform::Object {
public:
    // ---- the rosters of a process                                     (ZRRoster+Lifecycle.cpp)

    /// The shared roster, opened at the first call; absent when it cannot be opened, and then for good.
    static platform::Ref<ZRRoster> sharedRoster();
    static platform::Ref<ZRRoster> nts_SharedRoster() ZR_NTS;
    static void nts_CreateSharedRoster() ZR_NTS;
    /// Makes the shared roster if there is none, and answers whether there is one.
    static bool nts_hasSharedInstance();
    /// The roster for work on the calling thread: the shared one.
    static platform::Ref<ZRRoster> roster() { return sharedRoster(); }
    static platform::Ref<ZRRoster> nts_Roster() ZR_NTS { return nts_SharedRoster(); }
    [[noreturn]] static void init();
    /// Another roster on `directory`; absent when there is no shared roster or the store cannot be opened.
    static platform::Ref<ZRRoster> rosterWithDatabaseDirectory(
        const std::string& directory, bool doInitialImports = true);
    static platform::Ref<ZRRoster> nts_RosterWithDatabaseDirectory(
        const std::string& directory, bool doInitialImports = true) ZR_NTS;
    /// A roster on no directory, with an empty store in memory and its pictures in the temporary directory.
    static platform::Ref<ZRRoster> emptyMemoryBackedRoster();
    /// A second roster on the same store with a context of its own, for a worker.
    platform::Ref<ZRRoster> parallelUniverseRoster();
    /// Tells the user's helper program to look after its work; a second at most goes by on a thread of its
    /// own. Nothing in the process "RosterManager". Where no helper runs that is logged: whoever needs one
    /// starts it.
    static void _launchOrWaitForDaemon();
    /// Passes on within the process that the user's picture has changed.
    void rebroadcastUserPictureDidChange();
    /// What went wrong at opening, for the person at the command line; empty when nothing did.
    static std::string openingReport();

    // ---- directories and files                                        (ZRRoster+Directories.cpp)

    /// The shared roster's directory, fixed once a process: the preference "ZRAlternateDataStoreDirectory",
    /// else "ZRDatabaseDirectory", else `Roster` in the user's data directory.
    static std::string rosterDirectory();
    /// The default directory before any preference.
    static std::string defaultRosterDirectory();
    static std::string rosterTempImagesDirectory();
    static std::string classRosterImagesDirectory();
    static std::string classRosterDataFile();
    static std::string classRosterSaveFile();
    /// The metadata directory of the shared roster; `rosterMetaDataDirectory` is that of this one.
    static std::string rosterMetadataDirectory();
    std::string databaseDirectory() const;
    std::string rosterObjectStoreDatabaseFile() const;
    std::string rosterDatabaseFile() const { return rosterObjectStoreDatabaseFile(); }
    std::string mailRecentsObjectStoreDatabaseFile() const;
    std::string rosterDataFile() const;
    std::string rosterLockFile() const;
    std::string rosterSaveFile() const;
    std::string rosterMetaDataDirectory() const;
    std::string rosterImagesDirectory() const;
    void setRosterImagesDirectory(const std::string& directory);

    static bool shouldCreateEmptyDatabase();
    static void setShouldCreateEmptyDatabase(bool empty);
    static bool isInert();
    static void setIsInert(bool inert);

    // ---- the store beneath                                            (ZRRoster+Opening.cpp)

    /// The context of the main store, opened at the first call; absent when it cannot be.
    platform::Ref<ZRManagedObjectContext> managedObjectContext();
    platform::Ref<ZRManagedObjectContext> nts_mailRecentsManagedObjectContext() ZR_NTS;
    objectstore::StoreCoordinator* storeCoordinator();
    /// Notes for `nts_RestoreFromMetaDataIfNeeded` that the store does not hold what it should.
    void nts_SetNeedsToRestoreRosterFromMetaData(bool needs);
    /// Writes into the store that its legacy file has been converted: no Me card or samples come in any more.
    void markZRStoreImportCompleted();
    /// Logs, for who counts them, that a store could not be opened.
    static void logPersistentStoreTracerFailureWithMessage(
        std::string_view message, const platform::Error& error);
    void setManagedObjectContext(platform::Ref<ZRManagedObjectContext> context);
    void setManagedObjectContext(platform::Ref<ZRManagedObjectContext> context, bool takingOwnership);
    void resetManagedObjectContext();
    void resetDatabase();
    /// The files of this roster were put back from a backup: forgets everything read from the former ones,
    /// and opens those that are there now. The notice is about this roster; whoever posts it holds the lock.
    void zrDidRevertFromBackupCompleteResetContextAndUnlock(const platform::Notification& notice);
    void _vacuum();
    void nts_ZRReconnect() ZR_NTS { }
    bool isSharedInstance() const;
    bool isSharedInstanceOrClone();
    bool isMemoryBacked();
    bool isAggregate();
    bool _isReadOnly();
    bool _isReadOnlyIgnoresInert(bool ignoresInert);
    std::int64_t version();

    // ---- records                                                      (ZRRoster+Records.cpp)

    ZRRecordList people();
    ZRRecordList nts_People() ZR_NTS;
    ZRRecordList groups();
    ZRRecordList nts_Groups() ZR_NTS;
    platform::Ref<ZRRecord> recordForUniqueId(std::string_view uniqueId);
    platform::Ref<ZRRecord> nts_RecordForUniqueId(std::string_view uniqueId) ZR_NTS;
    /// All of several ids at once, one fetch a class; ids without a record are left out.
    ZRRecordList recordsForUniqueIds(const std::vector<std::string>& uniqueIds);
    ZRRecordList nts_AllRecordsForClass(const ZRRecordClass& recordClass) ZR_NTS;
    ZRRecordList recordsForClass(const ZRRecordClass& recordClass,
        platform::Ref<const objectstore::StorePredicate> predicate,
        const std::vector<std::string>& prefetching, bool takeLock);
    std::int64_t countOfRecordsForClass(const ZRRecordClass& recordClass);
    std::int64_t countOfRecordsForClass(const ZRRecordClass& recordClass,
        platform::Ref<const objectstore::StorePredicate> predicate, bool takeLock);
    /// Puts a record of any roster into this one. True also when it is already here; false when refused.
    bool addRecord(const platform::Ref<ZRRecord>& record);
    bool addRecord(const platform::Ref<ZRRecord>& record, platform::Error* error);
    bool nts_AddRecord(ZRRecord& record) ZR_NTS;
    /// Deletes a record at the next save. False when it is not in this roster.
    bool removeRecord(const platform::Ref<ZRRecord>& record);
    bool removeRecord(const platform::Ref<ZRRecord>& record, platform::Error* error);
    bool nts_RemoveRecord(ZRRecord& record) ZR_NTS;
    /// The people in the order of their names, at most `limit` (0: all). One fetch of narrow rows: no values
    /// of multi-values are read.
    ZRRecordList sortedPeople(ZRNameOrder order, std::size_t limit);
    /// The people whose card contains `text` in any case and with any accents, or whose id begins with it.
    ZRRecordList peopleMatchingText(std::string_view text);
    /// Reads the values of many records in a few fetches, before work that walks them.
    void prefetchDataForRecords(const ZRRecordList& records);
    /// The same for work that looks at these properties only. Others are read when somebody asks for them.
    void prefetchDataForRecords(const ZRRecordList& records, const std::vector<std::string_view>& properties);

    /// The record type that an id names: what follows position 37.
    static std::string recordClassFromUniqueId(std::string_view uniqueId);
    const ZRRecordClass* publicRecordClassFromUniqueId(std::string_view uniqueId) ZR_NTS;

    /// Told by a handle that ends: leaves the caches, unless another handle has taken its place there.
    void nts_RecordIsGone(ZRRecord& record) ZR_NTS;

    platform::Ref<ZRPerson> me();
    platform::Ref<ZRPerson> nts_Me() ZR_NTS;
    void setMe(const platform::Ref<ZRRecord>& person);
    void nts_SetMe(ZRPerson* person) ZR_NTS;
    bool nts_IsMe(const ZRPerson& person) ZR_NTS;
    platform::Ref<ZRInfo> nts_Info() ZR_NTS;

    platform::Ref<ZRRecord> nts_CachedRecordForUniqueId(std::string_view uniqueId) ZR_NTS;
    void nts_SetCachedRecord(ZRRecord* record, std::string_view uniqueId) ZR_NTS;
    void nts_ClearCachedRecordsByUniqueId() ZR_NTS;
    void nts_ClearCachedRecordsForUniqueIds(const std::vector<std::string>& uniqueIds) ZR_NTS;
    void clearTemporaryCaches() ZR_NTS;
    ZRRecord* nonRetainedCachedRecordForKey(std::string_view key);
    void setNonRetainedCachedRecord(ZRRecord* record, std::string_view key);

    // ---- searching                                                    (search/ZRRoster+Search.cpp)

    /// The records that match, class by class: by one fetch a class where the store can be asked for the
    /// element, else as `recordsMatchingSearchElementNoHinting`. An absent element raises.
    ZRRecordList recordsMatchingSearchElement(const platform::Ref<ZRSearchElement>& search);
    /// Without taking the lock the caller holds it.
    ZRRecordList recordsMatchingSearchElement(const platform::Ref<ZRSearchElement>& search, bool takeLock);
    /// The same by looking at every record in memory, people before groups. Nothing without a shared roster.
    ZRRecordList recordsMatchingSearchElementNoHinting(const platform::Ref<ZRSearchElement>& search);
    ZRRecordList recordsMatchingSearchElementNoHinting(
        const platform::Ref<ZRSearchElement>& search, bool takeLock);
    /// How `recordsMatchingSearchElement` goes about it, class by class.
    std::vector<ZRSearchRoute> explainSearch(const platform::Ref<ZRSearchElement>& search);
    /// Whether the store can be asked at all: it is open.
    bool isPredicateSearchingEnabled();

    // ---- smart groups that depend on the date                         (search/ZRRoster+SmartGroups.cpp)

    /// Marks each smart group as modified that looks for a time around today, has a card in it now, and was
    /// not changed since that time began. A group whose search cannot be read is logged and passed over. The
    /// first call of a process sets the midnight timer.
    void updateDateRelatedSmartGroups();
    void nts_UpdateDateRelatedSmartGroups() ZR_NTS;
    /// Until the first update of the process, by whichever roster.
    bool nts_shouldUpdateDateRelatedSmartGroups() const;
    /// Has `_midnightPassed` called once on the main queue, five seconds past the next midnight of the local
    /// zone, in place of whatever was set before: there is one timer a process. It does not keep the roster
    /// alive, and goes with it.
    void _setupMidnightTimer();
    /// When the timer fires or has fired; absent while no timer was set.
    static platform::Value _midnightFireDate();
    void _midnightPassed();
    /// The user has set the clock or the zone: forgets the zone, and sets the timer anew.
    void _systemTimeChanged();

    // ---- pictures of people that are not saved yet                    (ZRRoster+Pictures.cpp)

    /// From now on pictures of new people are kept in memory and written at the save, just before the commit,
    /// so that no card is ever saved whose picture is missing. For imports.
    void nts_SetKeepsPictures(bool keeps) ZR_NTS;
    bool nts_KeepsPictures() const ZR_NTS;
    void nts_KeepPicture(
        const std::string& uniqueId, std::string_view kind, const platform::Value& data) ZR_NTS;
    /// Absent when none waits.
    platform::Value nts_PendingPicture(const std::string& uniqueId, std::string_view kind) const ZR_NTS;

    // ---- sorted lists                                                 (ZRDBCache.cpp)

    /// The sorted lists of this roster: the shared one's for good, those of another as long as somebody holds
    /// them.
    platform::Ref<ZRDBCache> dbCache();
    platform::Ref<ZRDBCache> nts_dbCache() ZR_NTS;

    // ---- properties and constraints                                   (ZRRoster+Properties.cpp)

    ZRPropertyType typeOfProperty(std::string_view property, std::string_view recordType);
    ZRPropertyType nts_TypeOfProperty(std::string_view property, std::string_view recordType) ZR_NTS;
    ZRPropertyTypes nts_PropertyTypesForRecordOfClass(const ZRRecordClass& recordClass) ZR_NTS;
    bool doesPropertyExist(std::string_view property, const ZRRecordClass& recordClass);
    bool nts_DoesPropertyExist(std::string_view property, const ZRRecordClass& recordClass) ZR_NTS;
    void clearCustomPropertyCaches();

    std::vector<platform::Ref<ZRRecordConstraint>> constraints();
    void setConstraints(std::vector<platform::Ref<ZRRecordConstraint>> constraints);
    void addConstraint(platform::Ref<ZRRecordConstraint> constraint);
    void removeConstraint(const ZRRecordConstraint& constraint);
    std::vector<std::string> validProperties();
    std::vector<std::string> initialProperties();
    std::vector<std::string> validLabelsForProperty(std::string_view property);
    std::vector<std::string> initialLabelsForProperty(std::string_view property);
    std::vector<std::string> availablePropertiesForPerson(
        ZRPerson& person, const ZRLabelsDelegate& delegate = {});
    std::vector<std::string> availablePropertiesForContact(
        ZROSRecord& contact, const ZRLabelsDelegate& delegate);
    std::vector<std::string> availableLabelsForProperty(
        std::string_view property, ZRPerson& person, const ZRLabelsDelegate& delegate = {});
    std::vector<std::string> availableLabelsForProperty(
        std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate);
    std::vector<std::string> activeLabelsForProperty(
        std::string_view property, ZRPerson& person, const ZRLabelsDelegate& delegate = {});
    std::vector<std::string> activeLabelsForProperty(
        std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate);

    // ---- countries                                                    (ZRRoster+Countries.cpp)

    /// How addresses are written, by country code in lower case: dictionaries with "FORMAT", "LABEL_FORMAT"
    /// and the title of each field in the user's language. Read once; absent where the resource is missing,
    /// and then no country is known.
    static const platform::Value& addressFormats();
    /// Whether `addressFormats` has an entry; upper case is unknown.
    static bool isKnownCountry(std::string_view code);
    /// The country of addresses that name none: the user's choice, or else that of the locale, which is then
    /// stored as the choice; "us" where neither is known.
    std::string defaultCountryCode();
    /// Stores the choice for all rosters of the user. An unknown code is logged, and changes nothing.
    void setDefaultCountryCode(std::string_view code);

    // ---- addresses as text                                            (format/ZRRoster+Addresses.cpp)

    /// The address as its country writes it, with LF between lines and none at the end. Fields of one line
    /// are parted by a left-to-right mark and a blank, which keeps their order in right-to-left text. Each
    /// value carries one attribute: the key, with the field's title.
    platform::Ref<platform::AttributedString> formattedAddressFromDictionary(const platform::Value& address);
    /// The same, with the name and the company above it or, by the country's label format, where they stand
    /// on a mailing label. `order`, if given, becomes an array of the fields in their order: dictionaries
    /// with "zrProperty" and "zrLocalizedProperty".
    platform::Ref<platform::AttributedString> _formattedAddressFromDictionary(const platform::Value& address,
        bool includeName, bool includeCompany, platform::Value* order = nullptr);

    // ---- preferences of the roster                                    (ZRRoster+Defaults.cpp)

    platform::Value localizedDefaults();
    /// 16 when names are shown last name first, 32 when first name first; read once a process.
    std::int64_t defaultNameOrdering();

    // ---- saving                                                       (ZRRoster+Save.cpp)

    /// Writes all changes in one transaction. True: they are on the disk. False: nothing was written, and the
    /// changes are still here.
    bool save();
    bool saveAndReturnError(platform::Error* error);
    bool saveAndTriggerSync(bool triggerSync, const platform::Value& modificationDate);
    /// The same under an old misspelled name, kept for callers.
    bool saveAndTriggerSync_udpateModificationDate(bool triggerSync, const platform::Value& modificationDate);
    bool nts_Save() ZR_NTS;
    bool nts_SaveAndTriggerSync(bool triggerSync, const platform::Value& modificationDate) ZR_NTS;
    bool nts_SaveWithFileLock(bool withFileLock) ZR_NTS;
    bool nts_SaveWithFileLock(
        bool withFileLock, bool triggerSync, const platform::Value& modificationDate) ZR_NTS;
    bool hasUnsavedChanges();
    bool nts_hasUnsavedChanges() ZR_NTS;
    /// Why the last save of this roster answered false.
    platform::Error lastSaveError() const;

    // ---- telling others of a save                                     (ZRRoster+Notices.cpp)

    /// What a change notice carries, by key; plain values only, so that it can cross processes.
    using UserInfo = std::map<std::string, platform::Value, std::less<>>;
    /// What a save may concern beside the records.
    struct SaveEffects {
        bool couldAffectSyncing = false;
        bool couldAffectSharing = false;
        bool privateTablesChanged = false;
    };
    /// Who sends, and of which roster, when that is not the default one.
    UserInfo allocCommonNotificationUserInfoDictionary() const;
    /// Sorts the unsaved changes into the ids that are inserted, updated and deleted; marks the changed
    /// records as modified at `modificationDate` (absent: now), unless they keep their date; and logs the
    /// deletion of contacts. False stops the save.
    bool preparePublicChangeNotification(UserInfo& publicInfo, UserInfo& privateInfo, SaveEffects& effects,
        platform::Value modificationDate) ZR_NTS;
    /// Puts the ids of `records` under `key`, less those under `ignoredKey`; empty ignores none.
    void updatePublicUserInfo(UserInfo& publicInfo, UserInfo& privateInfo,
        const std::vector<platform::Ref<objectstore::StoreObject>>& records, std::string_view key,
        SaveEffects& effects, const platform::Value& modificationDate, std::string_view ignoredKey);
    /// Posts both notices, here and to the other processes, and waits for nobody.
    void nts_SendRosterDidSaveNotificationsWithPublicUserInfo(
        const UserInfo& publicInfo, const UserInfo& privateInfo, bool privateTablesChanged) ZR_NTS;
    /// The directory and a number of this roster: what its notices are about.
    std::string notificationID() const;

    // ---- what others saved                                            (ZRRoster+External.cpp)

    /// A change notice: of another process of this user, and about this roster, it refreshes what is held and
    /// is posted here as kZRDatabaseChangedExternallyNotification, or the private form. Any other is nothing.
    void databaseChangedExternally(const std::string& name, const platform::Value& userInfo);
    /// Another process rebuilds the roster: until the reset that follows, change notices are dropped.
    void willRestoreFromMetadata(const std::string& name, const platform::Value& userInfo);
    /// Refreshes the records of a notice that are held; unsaved changes stay.
    void resetRecordsWithUserInfo(const platform::Value& userInfo);
    /// The same for an array of unique ids; absent does nothing.
    void resetRecordsWithUniqueIds(const platform::Value& uniqueIds);
    /// A context of this process saved: forgets what it deleted or redefined.
    void zrManagedObjectContextDidSave(const platform::Notification& notice);
    static bool setContainsEntity(
        const std::vector<platform::Ref<objectstore::StoreObject>>& objects, std::string_view entity);

    // ---- synchronisation                                              (ZRRoster+Sync.cpp)

    /// Whether saves start no sync: `__shouldDisableSync`, or else the preference "ZRDisableSync".
    static bool shouldDisableSync();
    /// How far the last sync came: the text that it left, under "org.quillon.contacts.Contact". Absent when
    /// the roster was never synchronised.
    platform::Value syncAnchors();
    /// Keeps such a text from the next save on; an absent one as the empty text.
    bool setSyncAnchorsFromString(const platform::Value& anchor);

    // ---- upkeep                                                       (ZRRoster+Upkeep.cpp)

    /// What is in the store: a name and a count each, in the order to show them.
    std::vector<std::pair<std::string, std::int64_t>> statistics();
    struct CheckReport {
        std::vector<std::string> problems;
        std::vector<std::string> remarks;
    };
    /// Looks whether the file is sound, rows fit together, and pictures belong to cards. Changes nothing.
    CheckReport check();

    // ---- the locks                                                    (ZRRoster+Lock.cpp)

    /// The lock of the shared roster's directory between processes.
    static ZRFileLock& zrFileLock();
    /// That of this roster's directory; null for a roster in memory, which nobody else opens.
    ZRFileLock* nts_FileLock() ZR_NTS;
    void zrGlobalAPILock(bool togglingSuddenTermination = true,
        ZRSourcePlace where = ZRSourcePlace::current()) ZR_ACQUIRE(zrGlobalLock);
    void zrGlobalAPIUnlock(bool togglingSuddenTermination = true,
        ZRSourcePlace where = ZRSourcePlace::current()) ZR_RELEASE(zrGlobalLock);
    bool zrGlobalAPITryLock(bool togglingSuddenTermination = true,
        ZRSourcePlace where = ZRSourcePlace::current()) ZR_TRY_ACQUIRE(true, zrGlobalLock);
    void zrGlobalMailRecentAPILock(ZRSourcePlace where = ZRSourcePlace::current());
    void zrGlobalMailRecentAPIUnlock(ZRSourcePlace where = ZRSourcePlace::current());

    ~ZRRoster() override;

private:
    friend class platform::Ref<ZRRoster>;
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    friend struct ZRRosterAccess;
    struct State;

    ZRRoster();
    void observeContext();
    void startOverLater();
    void observeOwnProcess();
    void observeOtherProcesses();
    void noticesMissed(const std::string& name, const platform::Value& userInfo);
    void tellOfExternalChange(const std::string& name, const platform::Value& userInfo);
    void takeInChanges(const objectstore::StoreChanges& changes) ZR_NTS;
    bool nts_writeChanges(ZRManagedObjectContext& context) ZR_NTS;
    void nts_saveLastImport() ZR_NTS;
    PictureWriting nts_writePictures() const ZR_NTS;
    void nts_removeWrittenPictures() ZR_NTS;
    std::string picturePath(const std::string& uniqueId, std::string_view kind) const;
    std::unique_ptr<State> _state;
};

/// Runs `body` under the lock of `roster`: the shape of every public operation. The lock is free again when
/// body returns or raises. Readers leave the sudden-termination counter alone.
enum class ZRAccess { read, write };
template <class Body>
auto locked(ZRRoster& roster, ZRAccess access, Body&& body, ZRSourcePlace where = ZRSourcePlace::current())
{
    struct ZR_SCOPED_CAPABILITY Guard {
        Guard(ZRRoster& held, bool writing, ZRSourcePlace place) ZR_ACQUIRE(zrGlobalLock)
            : roster(held), writes(writing), where(place)
        {
            roster.zrGlobalAPILock(writes, where);
        }
        ~Guard() ZR_RELEASE() { roster.zrGlobalAPIUnlock(writes, where); }
        ZRRoster& roster;
        const bool writes;
        const ZRSourcePlace where;
    };
    const Guard guard(roster, access == ZRAccess::write, where);
    return std::forward<Body>(body)();
}
