// How an import goes back, and comes again.
#include "commands/ZRImportCommand.h"

#include "commands/RecordKeeping.h"
#include "commands/ZRDeleteRecordsCommand.h"
#include "commands/ZRGroupCommand.h"
#include "core/ZRLastImportGroup.h"
#include "store/ZRDBCache.h"

#include <algorithm>

using platform::Ref;

ZRImportCommand::ZRImportCommand(Work work, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _selectedGroup(std::move(work.selectedGroup))
    , _addedToGroup(_selectedGroup ? std::move(work.addedToGroup) : ZRRecordList())
    , _updatedPeople(std::move(work.updatedPeople))
    , _updatedPeopleProperties(std::move(work.updatedPeopleProperties))
    , _addedPeople(std::move(work.addedPeople))
    , _deletePeopleCommand(std::move(work.deletePeopleCommand))
    , _mergedIntoGroupsCommands(std::move(work.mergedIntoGroupsCommands))
    , _nestedCommandsAreDone(work.nestedCommandsAreDone)
{
    _updatedPeopleProperties.resize(_updatedPeople.size());
}

ZRImportCommand::~ZRImportCommand() = default;

bool ZRImportCommand::doIt()
{
    if (_addedToGroup.empty() && _updatedPeople.empty() && _addedPeople.empty() && !_deletePeopleCommand
        && _mergedIntoGroupsCommands.empty())
        return false;
    // What somebody else did there, the lists have not been told.
    if (_nestedCommandsAreDone)
        cache().clearAll();
    else
        doNestedCommands();
    rememberLastImport();
    tellAddedPeople(_addedPeople);
    cache().changedMembers(_updatedPeople);
    cache().addedMembers(_addedToGroup, _selectedGroup);
    cache().nonThreadedSave();
    return true;
}

void ZRImportCommand::doNestedCommands()
{
    if (_deletePeopleCommand)
        _deletePeopleCommand->doIt();
    for (const auto& command : _mergedIntoGroupsCommands)
        command->doIt();
}

void ZRImportCommand::rememberLastImport()
{
    const auto lastImport = rosterInUse().isSharedInstance() ? ZRLastImportGroup::lastImportGroup() : nullptr;
    if (!lastImport || _addedPeople.empty())
        return;
    lastImport->addMembers(_addedPeople);
    cache().addedMembers(_addedPeople, lastImport);
}

void ZRImportCommand::swapUpdatedPeople()
{
    for (std::size_t i = 0; i < _updatedPeople.size(); ++i)
        if (isStored(*_updatedPeople[i]) && _updatedPeopleProperties[i].isDictionary())
            _updatedPeopleProperties[i] =
                exchangeAllProperties(*_updatedPeople[i], _updatedPeopleProperties[i]);
}

void ZRImportCommand::undoIt()
{
    for (const auto& person : _addedToGroup)
        leaveGroup(*_selectedGroup, person);
    swapUpdatedPeople();
    _keptPeople = removeRecords(_addedPeople, rosterInUse());
    for (auto command = _mergedIntoGroupsCommands.rbegin(); command != _mergedIntoGroupsCommands.rend();
         ++command)
        (*command)->undoIt();
    if (_deletePeopleCommand)
        _deletePeopleCommand->undoIt();
    showAll();
}

void ZRImportCommand::redoIt()
{
    if (_deletePeopleCommand)
        _deletePeopleCommand->redoIt();
    for (const auto& command : _mergedIntoGroupsCommands)
        command->redoIt();
    bringBackRecords(_keptPeople, rosterInUse());
    swapUpdatedPeople();
    for (const auto& person : _addedToGroup)
        joinGroup(*_selectedGroup, person);
    showAll();
}

void ZRImportCommand::showAll()
{
    cache().clearAll();
    restoreSelection(_selectedGroup, {});
    cache().nonThreadedSave();
}
