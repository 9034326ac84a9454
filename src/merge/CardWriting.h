// How cards of a throw-away roster are written into the context that lasts.
#pragma once

#include "commands/ZRDeleteRecordsCommand.h"
#include "commands/ZRGroupCommand.h"
#include "commands/ZRImportCommand.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRRecord.h"
#include "objectstore/StoreObject.h"
#include "platform/value/Error.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

class ZRManagedObjectContext;
class ZROSContact;

namespace merge {

/// One round of changes of cards: added, updated, removed and put into groups, then saved together.
///
/// Ownership: shares ownership of the context and its roster.
/// Threads:   one, which is not under the global lock.
/// Errors:    a card that somebody else deleted meanwhile is logged and passed over.
class CardWriting {
public:
    /// Into the store of `context` that is at the place of `store`, which may be another coordinator's.
    CardWriting(platform::Ref<ZRManagedObjectContext> context, objectstore::PersistentStore& store);

    /// New cards that show what these people show, under new ids; in step with `people`, null for one that
    /// is no longer there.
    ZRRecordList add(const ZRRecordList& people);
    /// Makes the cards of the same ids show what these people show; answers those, likewise.
    ZRRecordList update(const ZRRecordList& people);
    /// Puts everybody who was added and updated into the group of that id, if it is stored.
    void join(std::string_view groupId);
    /// Puts these people, or the cards that they have become, into the group.
    void join(std::string_view groupId, const ZRRecordList& people);
    void markAsLastImport();
    void remove(const ZRRecordList& people);
    /// Why the save failed; its domain is empty when it did not. Then everything is still there, unsaved.
    platform::Error save();

    /// What was done besides adding and updating, for the command that undoes it.
    ZRImportCommand::Work work() const { return _work; }
    const platform::Ref<ZRRoster>& roster() const { return _roster; }

private:
    platform::Ref<ZRRecord> nts_add(const platform::Ref<ZRRecord>& person) ZR_NTS;
    platform::Ref<ZRRecord> nts_update(const platform::Ref<ZRRecord>& person) ZR_NTS;
    platform::Ref<ZRRecord> nts_take(
        const platform::Ref<ZRRecord>& person, ZROSContact& target, ZROSContact& source) ZR_NTS;
    /// The card of the context that stands for the person; null when it is gone.
    objectstore::ObjectRef nts_contactOf(const ZRRecord& person) ZR_NTS;
    platform::Ref<ZRRecord> nts_recordOf(objectstore::StoreObject& contact) ZR_NTS;
    platform::Ref<ZRGroup> groupWithId(std::string_view uniqueId) const;
    /// Those of the cards who were not in the group.
    ZRRecordList nts_join(const ZRGroup& group, const objectstore::ObjectList& contacts) ZR_NTS;

    platform::Ref<ZRManagedObjectContext> _context;
    platform::Ref<ZRRoster> _roster;
    objectstore::PersistentStore* _store;
    objectstore::ObjectList _written;
    std::unordered_map<const ZRRecord*, objectstore::ObjectRef> _added;
    ZRImportCommand::Work _work;
};

} // namespace merge
