// How one property goes back to what it was before an edit, and forth.
#include "commands/ZRChangePropertyCommand.h"

#include "commands/RecordKeeping.h"
#include "store/ZRDBCache.h"

#include <utility>

using platform::Ref;
using platform::Value;

ZRChangePropertyCommand::ZRChangePropertyCommand(
    Ref<ZRPerson> person, std::string_view propertyPath, Value oldValue, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _propertyPath(propertyPath)
    , _oldValue(std::move(oldValue))
    , _person(std::move(person))
    , _choices(distributionChoices(*_person))
{
}

ZRChangePropertyCommand::~ZRChangePropertyCommand() = default;

bool ZRChangePropertyCommand::doIt()
{
    cache().changedMember(_person);
    saveIfWanted();
    return true;
}

void ZRChangePropertyCommand::undoIt() { write(_oldValue); }
void ZRChangePropertyCommand::redoIt() { write(_newValue); }

void ZRChangePropertyCommand::write(const Value& value)
{
    const Value choices = std::exchange(_choices, distributionChoices(*_person));
    _person->setValue(value, std::string_view(_propertyPath).substr(0, _propertyPath.find('.')));
    restoreDistributionChoices(*_person, choices);
    cache().changedMember(_person);
    cache().nonThreadedSave();
}
