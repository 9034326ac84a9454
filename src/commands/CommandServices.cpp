// What the lists of a roster get from commands: an undo manager each, and new cards that can be undone.
#include "commands/ZRNewPersonCommand.h"
#include "commands/ZRUndoManager.h"
#include "core/ZRAllGroup.h"
#include "core/ZRPerson.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

using platform::Ref;

namespace {

void performNewPerson(const Ref<ZRPerson>& person, const Ref<ZRGroup>& group, std::string_view actionName)
{
    const Ref<ZRRoster> roster = person->roster();
    Ref<ZRGroup> selected = group ? group : Ref<ZRGroup>(ZRAllGroup::specialGroupForRoster(roster));
    platform::makeRef<ZRNewPersonCommand>(person, std::move(selected), roster)
        ->performWithActionName(actionName);
}

const bool isRegistered = [] {
    ZRServices::registered().newUndoManager = [] { return std::make_shared<ZRUndoManager>(); };
    ZRServices::registered().performNewPerson = performNewPerson;
    return true;
}();

} // namespace
