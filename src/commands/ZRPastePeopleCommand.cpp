// How cards come from the pasteboard, and go again.
#include "commands/ZRPastePeopleCommand.h"

#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "platform/files/Pasteboard.h"
#include "platform/run/Log.h"
#include "store/ZRDBCache.h"

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

ZRPastePeopleCommand::ZRPastePeopleCommand(
    Ref<ZRGroup> selectedGroup, Ref<ZRRoster> roster, std::shared_ptr<platform::Pasteboard> pasteboard)
    : ZRCommand(std::move(roster))
    , _selectedGroup(std::move(selectedGroup))
    , _pasteboard(std::move(pasteboard))
{
}

ZRPastePeopleCommand::~ZRPastePeopleCommand() = default;

bool ZRPastePeopleCommand::hasRealGroup() const
{
    return _selectedGroup && !_selectedGroup->isSpecialGroup();
}

ZRRecordList ZRPastePeopleCommand::pastedPeople() const
{
    ZRRecordList all = _people;
    all.insert(all.end(), _linkedPeople.begin(), _linkedPeople.end());
    return all;
}

// As `personFromDictionary` does, but what another program put there may not fit a card.
Ref<ZRPerson> ZRPastePeopleCommand::copyOf(const Value& dictionary)
{
    ZRRoster& roster = rosterInUse();
    auto copy = ZRPerson::initWithRoster(Ref<ZRRoster>(&roster));
    try {
        copy->populateWithDictionary(dictionary, false, true, true);
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Could not paste a card: {}", failure.what()));
        roster.removeRecord(copy);
        return nullptr;
    }
    return copy;
}

void ZRPastePeopleCommand::paste(std::string_view uniqueId, const Value& dictionary)
{
    ZRRoster& roster = rosterInUse();
    if (auto known = hasRealGroup() ? roster.recordForUniqueId(uniqueId) : nullptr) {
        if (joinGroup(*_selectedGroup, known))
            _linkedPeople.push_back(std::move(known));
        return;
    }
    auto copy = copyOf(dictionary);
    if (!copy)
        return;
    ZRRecord::pastedRecordWithUniqueId(copy->uniqueId(), uniqueId);
    if (hasRealGroup())
        joinGroup(*_selectedGroup, copy);
    _people.push_back(std::move(copy));
}

void ZRPastePeopleCommand::tellOfPasted()
{
    cache().addedMembers(_people);
    if (hasRealGroup())
        cache().addedMembers(pastedPeople(), _selectedGroup);
    restoreSelection(_selectedGroup, pastedPeople());
    cache().nonThreadedSave();
}

bool ZRPastePeopleCommand::doIt()
{
    const auto pasteboard = _pasteboard ? _pasteboard : platform::Pasteboard::general();
    const Value people = pasteboard->valueForType(zr::ZRPeopleDictPboardType);
    if (!people.isDictionary())
        return false;
    for (const auto& [uniqueId, dictionary] : people.asDictionary()->entries())
        if (dictionary.isDictionary())
            paste(uniqueId, dictionary);
    if (pastedPeople().empty())
        return false;
    tellOfPasted();
    return true;
}

void ZRPastePeopleCommand::undoIt()
{
    restoreSelection(_selectedGroup, pastedPeople());
    _kept = removeRecords(_people, rosterInUse());
    cache().deletedMembers(_people);
    for (const auto& person : _linkedPeople)
        leaveGroup(*_selectedGroup, person);
    cache().removedMembers(_linkedPeople, _selectedGroup);
    cache().nonThreadedSave();
}

void ZRPastePeopleCommand::redoIt()
{
    cache().updateGroupSelection(_selectedGroup);
    bringBackRecords(_kept, rosterInUse());
    clearListsOf(_kept, cache());
    for (const auto& person : _linkedPeople)
        joinGroup(*_selectedGroup, person);
    tellOfPasted();
}
