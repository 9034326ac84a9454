// The group for the card that is being made.
#include "commands/ZRUndoManager.h"

#include <utility>

const std::shared_ptr<ZRUndoManager>& ZRUndoManager::sharedInstance()
{
    static const auto* const one = new auto(std::make_shared<ZRUndoManager>());
    return *one;
}

void ZRUndoManager::beginCreationUndoGrouping()
{
    if (!std::exchange(_inCreationUndoGrouping, true))
        beginUndoGrouping();
}

void ZRUndoManager::endCreationUndoGrouping()
{
    if (std::exchange(_inCreationUndoGrouping, false))
        endUndoGrouping();
}

void ZRUndoManager::setNonCreationActionName(std::string_view name)
{
    if (!_inCreationUndoGrouping)
        setActionName(name);
}
