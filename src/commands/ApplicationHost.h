// What the program around the library shows and selects: the window that changes of the roster are made in.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRRecord.h"
#include "platform/value/Error.h"

#include <atomic>
#include <memory>

class ZRCardMergeController;
class ZRDBCache;
class ZRManagedObjectContext;

/// The program that works with the shared roster, as commands, mergers and imports see it.
///
/// A host with windows derives from it; a program without any needs none, since the default works on the
/// shared roster and shows nothing.
///
/// Ownership: an installed one is shared by whoever asks for it.
/// Threads:   called on the main thread, without locks.
/// Errors:    none; what cannot be shown is not shown. Without a shared roster context and roster are absent.
class ZR_EXPORT ApplicationHost {
public:
    virtual ~ApplicationHost();

    /// The context in which cards are changed: by default that of the shared roster.
    virtual platform::Ref<ZRManagedObjectContext> cardContext();
    /// The roster in which all cards are found: by default the shared one.
    virtual platform::Ref<ZRRoster> aggregateRoster();

    /// The sorted lists of a roster that commands tell of their changes: by default the roster's own. A host
    /// that shows lists gives those of a subclass, whose selection commands then restore.
    virtual platform::Ref<ZRDBCache> listsOf(ZRRoster& roster);

    // ---- the last import

    /// Forgets which cards came with it, in the card context and in the group of the last import.
    virtual void clearLastImportGroup();
    /// Whether its group is shown among the others. By default that is remembered, and nothing is shown.
    virtual void setShowsLastImportGroup(bool shows) { _showsLastImportGroup = shows; }
    bool showsLastImportGroup() const { return _showsLastImportGroup; }

    // ---- what is shown; by default nothing

    virtual void selectGroups(const ZRRecordList&) { }
    virtual void selectMembers(const ZRRecordList&) { }
    /// Lets the user decide, card by card, about what an import found to be there already. The controller
    /// goes on when it is told (`go`, `changeAction`, `ok`, `cancel`). False: nobody can be asked.
    virtual bool reviewDuplicates(ZRCardMergeController&) { return false; }
    virtual void presentFailure(const platform::Error&) { }

    /// The one in use: the default one unless another was installed.
    static std::shared_ptr<ApplicationHost> shared();
    /// Replaces it and answers the former; null brings the default one back.
    static std::shared_ptr<ApplicationHost> install(std::shared_ptr<ApplicationHost> host);

private:
    std::atomic<bool> _showsLastImportGroup = false;
};
