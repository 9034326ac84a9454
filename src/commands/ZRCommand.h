// A change of a roster that can be done, undone and redone: the base of all of them.
#pragma once

#include "commands/UndoManager.h"
#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "store/ZRRoster.h"

#include <string_view>

class ZRBundle;
class ZRDBCache;
class ZRUndoer;

/// One change that a user makes, with what it takes to go back and forth.
///
/// A command keeps the records that it removes, so that they come back as themselves, with their ids. What is
/// to come back is gathered just before it goes: edits made since the command was done survive. It tells the
/// sorted lists of its roster (ZRDBCache) exactly what has changed, and ends with a save.
///
/// Ownership: shares ownership of its roster and its records.
/// Threads:   one at a time, and not under the global lock: the main thread, or a program's only one.
/// Errors:    a change that there is nothing to do for answers false. A failed save is told as
///            `ZRDBCache::nonThreadedSave` does; the change stands, unsaved.
class ZR_EXPORT ZRCommand : public platform::Object {
public:
    /// On the shared roster when none is given.
    explicit ZRCommand(platform::Ref<ZRRoster> roster = nullptr);

    platform::Ref<ZRRoster> roster() const;
    /// Whether the command saves when it ends, as it does unless it was told otherwise.
    bool save() const { return _save; }
    void setSave(bool saves) { _save = saves; }
    /// That of the roster's context; null where the host has set none.
    UndoManager* _undoManager() const;
    /// The one of the process. It is made at the first call, with the undo manager of this command.
    platform::Ref<ZRUndoer> undoer() const;
    /// Where the texts of commands are.
    static const ZRBundle& bundle();

    /// Makes the change. False: there was nothing to do. The base logs that a subclass must do it.
    virtual bool doIt();
    virtual void undoIt();
    virtual void redoIt();

    /// Makes the change, and registers how it is undone under the text of `key` in the user's language (the
    /// key itself where there is none). Answers what `doIt` did. Where nobody set an undo manager that is
    /// all; what goes wrong while registering is logged, and the change stands.
    bool performWithActionName(std::string_view key);
    /// The second half alone, for a change that somebody has made already.
    void registerUndoWithActionName(std::string_view key);

protected:
    ~ZRCommand() override;

    /// The roster that the command works on. Raises where there is none.
    ZRRoster& rosterInUse() const;
    /// Its sorted lists.
    ZRDBCache& cache();
    /// Tells the lists of people that came, each that of their location.
    void tellAddedPeople(const ZRRecordList& people);
    /// Saves, and has the user told when that fails; nothing while `save` is off.
    void saveIfWanted();
    /// Selects what the user saw when the command was made; an absent group is not selected.
    void restoreSelection(const platform::Ref<ZRGroup>& group, const ZRRecordList& members);

private:
    const platform::Ref<ZRRoster> _roster;
    platform::Ref<ZRDBCache> _cache;
    bool _save = true;
};
