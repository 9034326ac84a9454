// How the search of a smart group changes, and changes back.
#include "commands/ZREditSmartGroupCommand.h"

#include "core/ZRConstants.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRDBCache.h"

#include <utility>

using platform::Ref;
using platform::Value;

ZREditSmartGroupCommand::ZREditSmartGroupCommand(Ref<ZRSmartGroup> group, std::string_view name,
    Ref<ZRSearchElement> element, bool hilights, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _group(std::move(group))
    , _element(std::move(element))
    , _name(name)
    , _hilights(hilights)
{
}

ZREditSmartGroupCommand::~ZREditSmartGroupCommand() = default;

bool ZREditSmartGroupCommand::doIt()
{
    if (!_group)
        return false;
    _swap();
    return true;
}

void ZREditSmartGroupCommand::undoIt() { _swap(); }
void ZREditSmartGroupCommand::redoIt() { _swap(); }

void ZREditSmartGroupCommand::_swap()
{
    const std::string name = std::exchange(_name, _group->name());
    const auto element = std::exchange(_element, _group->searchElement());
    const bool hilights = std::exchange(_hilights, _group->tracksModification());
    _group->setValue(Value(name), zr::kZRGroupNameProperty);
    if (element)
        _group->setSearchElement(element);
    else
        _group->removeValueForProperty(zr::kZRSearchElementProperty);
    _group->setTracksModification(hilights);
    cache().changedGroups({_group});
    // As a subgroup it stands in a list of members under its name.
    cache().changedMember(_group);
    cache().nonThreadedSave();
}
