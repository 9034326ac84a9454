// How groups go, and come back with who was in them.
#include "commands/ZRDeleteGroupsCommand.h"

#include "store/ZRDBCache.h"

using platform::Ref;

ZRDeleteGroupsCommand::ZRDeleteGroupsCommand(ZRRecordList groups, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _groups(std::move(groups))
{
}

ZRDeleteGroupsCommand::~ZRDeleteGroupsCommand() = default;

void ZRDeleteGroupsCommand::_doRemove()
{
    cache().updateGroupsSelection(_groups);
    _kept = removeRecords(groupsAmong(_groups), rosterInUse());
    cache().nonThreadedSave();
    // As subgroups they stand in the lists of members too.
    cache().deletedMembers(_groups);
    cache().deletedGroups(_groups);
}

bool ZRDeleteGroupsCommand::doIt()
{
    _doRemove();
    return !_kept.empty();
}

void ZRDeleteGroupsCommand::undoIt()
{
    const ZRRecordList back = bringBackRecords(_kept, rosterInUse());
    clearListsOf(_kept, cache());
    cache().nonThreadedSave();
    cache().addedGroups(back);
    cache().updateGroupsSelection(_groups);
}

void ZRDeleteGroupsCommand::redoIt() { _doRemove(); }
