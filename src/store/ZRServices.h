// What upper rooms add to the model: the one registration struct, filled when the library loads.
#pragma once

#include "core/ZRRecord.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class ZRGroup;
class ZRManagedObjectContext;
class ZRPerson;

namespace objectstore {
class UndoManager;
} // namespace objectstore

/// What a user must be told at once, in the user's language.
struct ZRAlert {
    /// The key of the message in the table "ZRStrings".
    std::string messageKey;
    std::string title;
    std::string message;
    std::string button;
};

/// The services that the store calls and does not have itself. An empty function is an absent service: the
/// store then does what is said here.
///
/// Ownership: one instance a process, made before the first roster.
/// Threads:   filled while the library loads, read-only afterwards; the functions are called with the global
///            lock held unless said otherwise.
/// Errors:    a service reports its own; none may raise.
struct ZRServices {
    static ZRServices& registered();

    // ---- opening
    /// Converts the legacy file of a roster's directory. Absent: nothing is converted.
    std::function<void(ZRRoster&)> importFromLegacyFile;
    /// Rebuilds a roster from its metadata files. Absent: nothing is there to rebuild from, which is success.
    std::function<bool(ZRRoster&)> restoreFromMetaData;
    /// Checks the metadata files some seconds after opening. Absent: there are none.
    std::function<void(ZRRoster&)> validateMetaData;
    /// A new person of `roster` from the first card of vCard data. Absent: the sample cards are not imported.
    std::function<platform::Ref<ZRRecord>(std::string_view data, platform::Ref<ZRRoster> roster)> readCard;

    // ---- saving
    /// Told of the stored objects that a save is about to write. Absent: nobody is told.
    std::function<void(ZRRoster&, const std::vector<platform::Ref<ZROSRecord>>&)> processRecords;
    /// What `_launchOrWaitForDaemon` does instead, for tests: called with the lock held perhaps, it waits for
    /// nothing. Absent: the user's helper program is told.
    std::function<void()> launchOrWaitForDaemon;
    /// The second store of mail recents. Absent: it is not in use.
    std::function<bool()> hasUnsavedMailRecents;
    std::function<bool()> saveMailRecents;
    std::function<platform::Ref<ZRManagedObjectContext>()> mailRecentsContext;

    // ---- sharing
    /// The subscription to that location, or absent. Absent: nobody subscribes to anything.
    std::function<platform::Ref<ZRRecord>(ZRRoster&, const std::string& remoteLocation)> findSubscription;

    /// The cards that came with it. Absent: none.
    std::function<std::vector<platform::Ref<ZRRecord>>(ZRRoster&, const std::string& remoteLocation)>
        peopleAtRemoteLocation;
    /// Marks a record as one that came with that subscribed group. Absent: it stays one of this roster.
    std::function<void(ZRGroup&, ZRRecord&)> markRecordWithGroupSubscription;

    // ---- the user of the lists (ZRDBCache); called without the lock
    /// What records the steps of one list. Absent: none is recorded.
    std::function<std::shared_ptr<objectstore::UndoManager>()> newUndoManager;
    /// Notes, as a step that can be undone under that name, that `person` was made in `group` (absent: in
    /// none). Absent: it cannot be undone.
    std::function<void(const platform::Ref<ZRPerson>& person, const platform::Ref<ZRGroup>& group,
        std::string_view actionName)>
        performNewPerson;
    /// Shows an alert and waits for the user. A host sets it before its first save; absent: the log tells.
    std::function<void(const ZRAlert&)> runAlert;

    // ---- mail
    /// The vCard of a card as others get it; empty when none can be made. Absent: nobody is told by mail that
    /// the Me card has changed, since there is nothing to enclose.
    std::function<std::string(ZRRecord&)> cardData;

    // ---- at exit
    /// Cancels background work on records and waits at most `seconds`. Absent: there is none.
    std::function<void(double seconds)> cancelBackgroundWork;

    // ---- the platform's directory of users
    /// The picture of the current user, or absent.
    std::function<platform::Value()> userPicture;
    /// Stores it; false when the directory is not there or refuses.
    std::function<bool(const platform::Value& data)> setUserPicture;
    /// The full name of the current user. Absent: as the password database has it.
    std::function<std::string()> userRealName;
};
