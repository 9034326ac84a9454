// How a group gets another name, and its former one back.
#include "commands/ZRRenameGroupCommand.h"

#include "core/ZRConstants.h"
#include "store/ZRDBCache.h"

#include <utility>

using platform::Ref;
using platform::Value;

ZRRenameGroupCommand::ZRRenameGroupCommand(Ref<ZRGroup> group, Value name, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _group(std::move(group)), _name(std::move(name))
{
}

ZRRenameGroupCommand::~ZRRenameGroupCommand() = default;

bool ZRRenameGroupCommand::doIt()
{
    if (!_group || _group->isSpecialGroup())
        return false;
    _swapName();
    return true;
}

void ZRRenameGroupCommand::undoIt() { _swapName(); }
void ZRRenameGroupCommand::redoIt() { _swapName(); }

void ZRRenameGroupCommand::_swapName()
{
    restoreSelection(_group, {});
    const Value name = std::exchange(_name, _group->valueForProperty(zr::kZRGroupNameProperty));
    _group->setValue(name, zr::kZRGroupNameProperty);
    cache().changedGroups({_group});
    // As a subgroup it stands in a list of members under its name.
    cache().changedMember(_group);
    cache().nonThreadedSave();
}
