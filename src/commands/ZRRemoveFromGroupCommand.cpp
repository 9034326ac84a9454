// How records leave a group, and join it again.
#include "commands/ZRRemoveFromGroupCommand.h"

#include "store/ZRDBCache.h"

ZRRemoveFromGroupCommand::~ZRRemoveFromGroupCommand() = default;

bool ZRRemoveFromGroupCommand::doIt()
{
    if (!_group)
        return false;
    // Only who was in it comes back into it.
    _records = removeRecordsFromGroup();
    if (_records.empty())
        return false;
    cache().removedMembers(_records, _group);
    cache().nonThreadedSave();
    return true;
}

void ZRRemoveFromGroupCommand::undoIt()
{
    restoreSelection(_group, {});
    cache().addedMembers(addRecordsToGroupAgain(), _group);
    restoreSelection(_group, _records);
    cache().nonThreadedSave();
}

void ZRRemoveFromGroupCommand::redoIt()
{
    restoreSelection(_group, _records);
    cache().removedMembers(removeRecordsFromGroup(), _group);
    cache().nonThreadedSave();
}
