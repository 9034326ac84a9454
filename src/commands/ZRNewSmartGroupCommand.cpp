// How a smart group is made, and unmade.
#include "commands/ZRNewSmartGroupCommand.h"

#include "core/ZRConstants.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRDBCache.h"

using platform::Ref;
using platform::Value;

ZRNewSmartGroupCommand::ZRNewSmartGroupCommand(
    std::string_view name, Ref<ZRSearchElement> searchElement, bool hilight, Ref<ZRRoster> roster)
    : ZRGroupMakingCommand(std::move(roster))
    , _searchElement(std::move(searchElement))
    , _name(name)
    , _hilight(hilight)
{
}

ZRNewSmartGroupCommand::~ZRNewSmartGroupCommand() = default;

bool ZRNewSmartGroupCommand::doIt()
{
    if (!_searchElement)
        return false;
    _newGroup = ZRSmartGroup::initWithRoster(Ref<ZRRoster>(&rosterInUse()));
    _newGroup->setValue(Value(_name), zr::kZRGroupNameProperty);
    _newGroup->setSearchElement(_searchElement);
    _newGroup->setTracksModification(_hilight);
    rosterInUse().addRecord(_newGroup);
    cache().addedGroups({_newGroup});
    saveIfWanted();
    return true;
}

ZRRecordList ZRNewSmartGroupCommand::madeGroups() const
{
    return _newGroup ? ZRRecordList{_newGroup} : ZRRecordList();
}
