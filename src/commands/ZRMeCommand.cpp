// How the Me card passes from one person to another, and back.
#include "commands/ZRMeCommand.h"

#include "store/ZRDBCache.h"

using platform::Ref;
using platform::Value;

namespace {

Value imageOf(const Ref<ZRPerson>& person) { return person ? person->imageData() : Value(); }

void setImage(const Ref<ZRPerson>& person, const Value& image)
{
    if (person && imageOf(person) != image)
        person->setImageData(image);
}

} // namespace

ZRMeCommand::ZRMeCommand(Ref<ZRGroup> selectedGroup, Ref<ZRRecord> newMe, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _selectedGroup(std::move(selectedGroup))
    , _currentMe(rosterInUse().me())
    , _newMe(platform::refCast<ZRPerson>(newMe))
    , _currentMeImageData(imageOf(_currentMe))
    , _newMeImageData(imageOf(_newMe))
{
}

ZRMeCommand::~ZRMeCommand() = default;

bool ZRMeCommand::doIt()
{
    if (!_newMe || _newMe == _currentMe)
        return false;
    rosterInUse().setMe(_newMe);
    cache().changedMember(_newMe);
    setImage(_currentMe, _currentMeImageData);
    if (!_newMeImageData.isNothing())
        setImage(_newMe, _newMeImageData);
    cache().nonThreadedSave();
    return true;
}

void ZRMeCommand::undoIt()
{
    restoreSelection(_selectedGroup, {_newMe});
    rosterInUse().setMe(_currentMe);
    setImage(_currentMe, _currentMeImageData);
    setImage(_newMe, _newMeImageData);
    cache().changedMember(_newMe);
    cache().nonThreadedSave();
}

void ZRMeCommand::redoIt()
{
    restoreSelection(_selectedGroup, {_newMe});
    rosterInUse().setMe(_newMe);
    setImage(_newMe, _newMeImageData);
    cache().changedMember(_newMe);
    cache().nonThreadedSave();
}
