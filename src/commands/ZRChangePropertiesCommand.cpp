// How the properties of a card go back to what they were before an edit, and forth.
#include "commands/ZRChangePropertiesCommand.h"

#include "commands/RecordKeeping.h"
#include "store/ZRDBCache.h"

#include <string>
#include <utility>
#include <vector>

using platform::Ref;
using platform::Value;

ZRChangePropertiesCommand::ZRChangePropertiesCommand(
    Ref<ZRPerson> person, const Value& properties, Ref<ZRGroup> selectedGroup, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _properties(properties)
    , _parents(person->parentGroups())
    , _person(std::move(person))
    , _selectedGroup(std::move(selectedGroup))
    , _choices(distributionChoices(*_person))
{
}

ZRChangePropertiesCommand::~ZRChangePropertiesCommand() = default;

bool ZRChangePropertiesCommand::doIt()
{
    cache().changedMember(_person);
    saveIfWanted();
    return true;
}

void ZRChangePropertiesCommand::undoIt() { _undoRedoChangeProperties(); }
void ZRChangePropertiesCommand::redoIt() { _undoRedoChangeProperties(); }

void ZRChangePropertiesCommand::_undoRedoChangeProperties()
{
    restoreSelection(_selectedGroup, {_person});
    if (!isStored(*_person)) {
        rosterInUse().addRecord(_person);
        for (const auto& parent : _parents)
            joinGroup(static_cast<ZRGroup&>(*parent), _person);
        cache().addedMembers({_person});
    }
    const Value choices = std::exchange(_choices, distributionChoices(*_person));
    std::vector<std::pair<std::string, Value>> former;
    if (const auto* properties = _properties.asDictionary())
        for (const auto& [property, value] : properties->entries()) {
            Value present = _person->valueForProperty(property);
            former.emplace_back(
                property, present.isAbsent() ? Value(platform::NullMarker()) : std::move(present));
            _person->setValue(value, property);
        }
    _properties = Value::dictionary(std::move(former));
    restoreDistributionChoices(*_person, choices);
    cache().changedMember(_person);
    cache().nonThreadedSave();
}
