// How groups that a command made go, and come back.
#include "commands/ZRGroupMakingCommand.h"

#include "store/ZRDBCache.h"

ZRGroupMakingCommand::~ZRGroupMakingCommand() = default;

void ZRGroupMakingCommand::undoIt()
{
    const ZRRecordList groups = madeGroups();
    cache().updateGroupsSelection(groups);
    _kept = removeRecords(groups, rosterInUse());
    // As subgroups they may stand in the lists of members too.
    cache().deletedMembers(groups);
    cache().deletedGroups(groups);
    cache().nonThreadedSave();
}

void ZRGroupMakingCommand::redoIt()
{
    const ZRRecordList groups = bringBackRecords(_kept, rosterInUse());
    clearListsOf(_kept, cache());
    cache().nonThreadedSave();
    cache().addedGroups(groups);
    cache().updateGroupsSelection(groups);
}
