// How the making of a card is undone and redone.
#include "commands/ZRNewPersonCommand.h"

#include "store/ZRDBCache.h"
#include "store/ZRServices.h"

using platform::Ref;

namespace {

void markForGroup(ZRGroup& group, ZRRecord& record)
{
    const auto& mark = ZRServices::registered().markRecordWithGroupSubscription;
    if (mark && dynamic_cast<const ZRSubscribedGroup*>(&group))
        mark(group, record);
}

} // namespace

ZRNewPersonCommand::ZRNewPersonCommand(
    Ref<ZRPerson> newPerson, Ref<ZRGroup> selectedGroup, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _newPerson(std::move(newPerson)), _selectedGroup(std::move(selectedGroup))
{
}

ZRNewPersonCommand::~ZRNewPersonCommand() = default;

bool ZRNewPersonCommand::doIt()
{
    if (!_newPerson || !rosterInUse().addRecord(_newPerson))
        return false;
    saveIfWanted();
    return true;
}

void ZRNewPersonCommand::undoIt()
{
    restoreSelection(_selectedGroup, {_newPerson});
    _kept = removeRecords({_newPerson}, rosterInUse());
    cache().deletedMembers({_newPerson});
    cache().nonThreadedSave();
}

void ZRNewPersonCommand::redoIt()
{
    cache().updateGroupSelection(_selectedGroup);
    bringBackRecords(_kept, rosterInUse());
    clearListsOf(_kept, cache());
    const bool isInGroup = _selectedGroup && !_selectedGroup->isSpecialGroup();
    if (isInGroup) {
        markForGroup(*_selectedGroup, *_newPerson);
        joinGroup(*_selectedGroup, _newPerson);
    }
    cache().addedMembers({_newPerson});
    if (isInGroup)
        cache().addedMembers({_newPerson}, _selectedGroup);
    cache().updateMembersSelection({_newPerson});
    cache().nonThreadedSave();
}
