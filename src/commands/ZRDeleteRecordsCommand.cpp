// How cards and groups go together, and come back.
#include "commands/ZRDeleteRecordsCommand.h"

#include "store/ZRDBCache.h"

using platform::Ref;

ZRDeleteRecordsCommand::ZRDeleteRecordsCommand(
    Ref<ZRGroup> selectedGroup, ZRRecordList records, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _selectedGroup(std::move(selectedGroup)), _records(std::move(records))
{
}

ZRDeleteRecordsCommand::~ZRDeleteRecordsCommand() = default;

void ZRDeleteRecordsCommand::keepRecords()
{
    rosterInUse().prefetchDataForRecords(_records);
    std::vector<KeptRecord> kept;
    for (const auto& record : _records)
        if (isStored(*record))
            kept.emplace_back(record);
    noteKept(std::move(kept));
}

void ZRDeleteRecordsCommand::noteKept(std::vector<KeptRecord> kept)
{
    ZRRecordList records;
    for (const auto& one : kept)
        records.push_back(one.record());
    _kept = std::move(kept);
    _deletedPeople = peopleAmong(records);
    _deletedGroups = groupsAmong(records);
}

void ZRDeleteRecordsCommand::_removeRecords()
{
    noteKept(removeRecords(_records, rosterInUse()));
    cache().deletedMembers(_records);
    cache().deletedGroups(_deletedGroups);
    cache().nonThreadedSave();
}

bool ZRDeleteRecordsCommand::doIt()
{
    _removeRecords();
    return !_kept.empty();
}

void ZRDeleteRecordsCommand::undoIt()
{
    bringBackRecords(_kept, rosterInUse());
    clearListsOf(_kept, cache());
    cache().nonThreadedSave();
    tellAddedPeople(_deletedPeople);
    cache().addedGroups(_deletedGroups);
    restoreSelection(_selectedGroup, _records);
}

void ZRDeleteRecordsCommand::redoIt()
{
    restoreSelection(_selectedGroup, _records);
    _removeRecords();
}
