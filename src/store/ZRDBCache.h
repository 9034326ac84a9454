// A roster's sorted lists: all people of a location, the members of a group, all groups.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRRecord.h"
#include "core/ZRTypes.h"
#include "platform/value/Object.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class ZRGroup;
class ZRPerson;

namespace objectstore {
class UndoManager;
} // namespace objectstore

namespace platform {
struct Notification;
} // namespace platform

/// One sorted list of a ZRDBCache.
///
/// It is live: edits told to the cache show in it, for as long as the cache keeps it; one that the cache has
/// dropped stays as it was.
///
/// Ownership: owns a share of its records.
/// Threads:   read it under the global lock, or on the thread that tells the edits.
/// Errors:    none.
class ZR_EXPORT ZRMemberList final : public platform::Object {
public:
    explicit ZRMemberList(ZRRecordList records) : _records(std::move(records)) { }
    const ZRRecordList& records() const { return _records; }

private:
    friend class ZRDBCache;
    ZRRecordList _records;
};

/// The sorted lists of one roster, the card that is being made in them, and saves in the background.
///
/// A list is sorted once and then edited in place, as commands tell what they changed: the cache does not
/// look for changes of this process by itself. It owns no data. The order is that of ZRComparePeopleName.
///
/// Ownership: shares ownership of its roster and of the records in its lists. The shared roster's cache lives
///            as long as the process; that of another roster as long as somebody holds it, so that neither
///            keeps the other alive for ever.
/// Threads:   every operation takes the global lock; notices are taken in on the thread that posts them,
/// which
///            is that of the main queue. `_saveFailed` runs outside the lock.
/// Errors:    none; a null group has no members, and what is not in a list is passed over.
class ZR_EXPORT ZRDBCache : public platform::Object {
public:
    // ---- caches of rosters

    /// The cache of the shared roster, made at the first call; absent where there is no shared roster.
    static platform::Ref<ZRDBCache> sharedDBCache();
    static platform::Ref<ZRDBCache> nts_SharedDBCache() ZR_NTS;
    /// A cache of its own on that roster. `Cache`: a subclass that shows the lists.
    template <class Cache = ZRDBCache>
    static platform::Ref<Cache> initWithRoster(platform::Ref<ZRRoster> roster)
    {
        auto cache = platform::makeRef<Cache>(std::move(roster));
        cache->observe();
        return cache;
    }

    // ---- lists                                                        (ZRDBCache+Lists.cpp)

    /// The people of the roster itself. Once built, it is at hand; the first call fetches and sorts.
    platform::Ref<const ZRMemberList> allPeople();
    /// The people of a subscription; "local" for the roster itself.
    platform::Ref<const ZRMemberList> allPeopleForRemoteLocation(std::string_view location);
    /// Members and subgroups, groups first. A smart group's are found anew each time.
    platform::Ref<const ZRMemberList> membersOfGroup(const platform::Ref<ZRGroup>& group);
    /// All groups by ZRCompareGroupName: the roster's own, smart ones, then those of subscriptions.
    ZRRecordList allGroups();
    /// Those of them whose members are stored.
    ZRRecordList allSimpleGroups();
    /// The groups that came with the subscription that `allGroup` stands for.
    ZRRecordList enclosedSubscriptionGroupsForAllGroup(const ZRGroup& allGroup);
    /// Where a group would go among all groups, behind its equals; their number when it comes last.
    std::size_t _insertionIndexForGroup(const ZRGroup& group);

    // ---- places in a sorted list                                      (ZRDBCache+Sorting.cpp)
    // `order` is a value of kZRNameSorting; kZRNotFound reads the preference.

    /// The place of `member`, told from others of its name by `isEqual`; kZRNotFound when it is not where its
    /// name belongs.
    ZRIndex indexOfMember(const ZRRecord* member, const ZRRecordList& sorted) const;
    ZRIndex indexOfMember(const ZRRecord* member, const ZRRecordList& sorted, std::int64_t order) const;
    /// Where `member` would go: before its equals. kZRNotFound past the end: append it.
    ZRIndex insertionIndexForMember(const ZRRecord& member, const ZRRecordList& sorted) const;
    ZRIndex insertionIndexForMember(
        const ZRRecord& member, const ZRRecordList& sorted, std::int64_t order) const;
    /// Sorts by the user's preference, stably.
    void sortMembers(ZRRecordList& members) const;
    /// The same, by several threads from 800 records on.
    void nts_threaded_sortMembers(ZRRecordList& members) const ZR_NTS;

    // ---- edits told by those who made them                            (ZRDBCache+Edits.cpp)
    // They change the lists that are there; those that are not are built from the store when asked for.

    void addedMembers(const ZRRecordList& members);
    void addedMembers(const ZRRecordList& members, const platform::Ref<ZRGroup>& group);
    void removedMembers(const ZRRecordList& members, const platform::Ref<ZRGroup>& group);
    void deletedMembers(const ZRRecordList& members);
    /// One record may have another name: it goes where that belongs.
    void changedMember(const platform::Ref<ZRRecord>& member);
    /// When they are a third of a location's list or more, that list is dropped, since sorting anew is
    /// faster.
    void changedMembers(const ZRRecordList& members);
    void addedGroups(const ZRRecordList& groups);
    void deletedGroups(const ZRRecordList& groups);
    void changedGroups(const ZRRecordList& groups);

    void clearAll();
    void clearAllForRemoteLocation(std::string_view location);
    void clearCacheForGroup(const ZRGroup& group);

    // ---- what others changed                                          (ZRDBCache.cpp)

    /// Another process saved: drops the lists.
    void databaseChanged(const platform::Notification& notice);
    /// The roster was restored or started over: drops the lists and what is selected in them.
    void databaseWasReset(const platform::Notification& notice);
    /// Which kinds of records a change notice is about; without lists of ids, both.
    static void databaseChangedForUserInfo(
        const platform::Value& userInfo, bool& groupsChanged, bool& peopleChanged);
    /// Drops all lists, whatever the flags say: those are for the subclass that shows them.
    virtual void resetCachesForPeople(bool people, bool groups, bool maintainSelection);

    // ---- the card that is being made                                  (ZRDBCache+NewPerson.cpp)

    /// Shows `person`, which need not be in the roster yet, in the lists. Ends the edit of another one.
    void startEditingNewPerson(const platform::Ref<ZRPerson>& person, const platform::Ref<ZRGroup>& group);
    /// Ends the edit of that card, if it is the one: an empty card is discarded, any other added to the
    /// roster and its group, and sorted under its final name.
    void endEditing(const platform::Ref<ZRPerson>& person);
    bool isNewPerson(const ZRRecord* record) const;

    // ---- saving                                                       (ZRDBCache+Saving.cpp)

    /// Saves the roster. False when it is read-only or the save fails; then the user is told why.
    bool nonThreadedSave();
    /// Saves on a thread of its own. True: nothing was left to save, or the save is under way.
    bool threadedSave();
    void _threadedSave();
    /// Finds out why a save failed and has the host tell the user (ZRServices::runAlert). Nothing when the
    /// file or its volume cannot be examined.
    void _saveFailed();

    /// The order of the lists: the value of kZRNameSorting that was read last.
    std::int64_t nameSorting() const;
    /// What records the steps of the list's user, made at the first call; null where no service makes one.
    objectstore::UndoManager* undoManager();
    platform::Ref<ZRRoster> roster() const;

    // ---- for a subclass that shows the lists; empty here

    virtual void reloadGroups() { }
    virtual void reloadMembers() { }
    virtual void updateMembersSelection(const ZRRecordList&) { }
    virtual void updateGroupsSelection(const ZRRecordList&) { }
    /// The same for one group; for an absent one nothing.
    void updateGroupSelection(const platform::Ref<ZRGroup>& group);
    virtual void registerModel(const platform::Ref<platform::Object>&) { }
    virtual void unregisterModel(const platform::Ref<platform::Object>&) { }

protected:
    explicit ZRDBCache(platform::Ref<ZRRoster> roster);
    ~ZRDBCache() override;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    struct State;

    void observe();
    platform::Ref<ZRMemberList> nts_peopleAt(const std::string& location) ZR_NTS;
    void nts_buildGroups() ZR_NTS;
    /// Null for none, and for one that nobody asked for yet.
    ZRRecordList* nts_listOfGroup(const ZRGroup* group) ZR_NTS;
    ZRIndex _doInsertMember(const platform::Ref<ZRRecord>& member, ZRRecordList& sorted);
    void _insertRecord(const platform::Ref<ZRRecord>& record, ZRRecordList& sorted);
    void reinsertRecord(const platform::Ref<ZRRecord>& record, ZRRecordList& sorted);
    void nts_addRecords(const ZRRecordList& records, ZRRecordList& sorted) ZR_NTS;
    void nts_insertRecords(ZRRecordList records, ZRRecordList& sorted) ZR_NTS;
    void nts_reinsertRecords(const ZRRecordList& records, ZRRecordList& sorted) ZR_NTS;
    void discardNewPerson(const platform::Ref<ZRPerson>& person, const platform::Ref<ZRGroup>& group);
    void addNewPerson(const platform::Ref<ZRPerson>& person, const platform::Ref<ZRGroup>& group);

    const std::unique_ptr<State> _state;
};
