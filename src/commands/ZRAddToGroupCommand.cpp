// How records join a group, copied first where they do not fit it.
#include "commands/ZRAddToGroupCommand.h"

#include "commands/RecordKeeping.h"
#include "commands/ZRDeleteRecordsCommand.h"
#include "store/ZRDBCache.h"

#include <map>
#include <string>

using platform::Ref;

struct ZRAddToGroupCommand::AssimilatedMap {
    std::map<std::string, Ref<ZRRecord>> copies;
};

ZRAddToGroupCommand::ZRAddToGroupCommand(Ref<ZRGroup> group, ZRRecordList records, Ref<ZRRoster> roster)
    : ZRAddToGroupCommand(
        std::move(group), std::move(records), std::move(roster), std::make_shared<AssimilatedMap>())
{
}

ZRAddToGroupCommand::ZRAddToGroupCommand(
    Ref<ZRGroup> group, ZRRecordList records, Ref<ZRRoster> roster, std::shared_ptr<AssimilatedMap> map)
    : ZRGroupCommand(std::move(group), std::move(records), std::move(roster)), _assimilatedMap(std::move(map))
{
}

ZRAddToGroupCommand::~ZRAddToGroupCommand() = default;

void ZRAddToGroupCommand::assimilateRecords()
{
    for (auto& record : _records)
        if (!_group->zrIsCompatibleWithRecord(*record))
            record = assimilated(record);
}

// The copy is known before its members are: groups in a circle end where it closes.
Ref<ZRRecord> ZRAddToGroupCommand::assimilated(const Ref<ZRRecord>& record)
{
    Ref<ZRRecord>& copy = _assimilatedMap->copies[record->uniqueId()];
    if (copy)
        return copy;
    copy = _group->zrAssimilatedRecordFor(*record);
    const Ref<ZRRecord> made = copy;
    rosterInUse().addRecord(made);
    _copies.push_back(made);
    if (const auto group = platform::refCast<ZRGroup>(made)) {
        auto nested = platform::makeRef<ZRAddToGroupCommand>(
            group, static_cast<const ZRGroup&>(*record).membersAndSubgroups(), roster(), _assimilatedMap);
        nested->doIt();
        _assimilatedSubgroupCommands.push_back(std::move(nested));
    }
    return made;
}

bool ZRAddToGroupCommand::doIt()
{
    if (!_group || _records.empty())
        return false;
    assimilateRecords();
    // Only who was not in it leaves it again.
    _records = addRecordsToGroup();
    if (_records.empty() && _copies.empty())
        return false;
    cache().addedMembers(_records, _group);
    tellAddedPeople(peopleAmong(_copies));
    cache().addedGroups(groupsAmong(_copies));
    if (!_copies.empty())
        _deleteAssimilatedRecordsCommand =
            platform::makeRef<ZRDeleteRecordsCommand>(_group, _copies, roster());
    cache().nonThreadedSave();
    cache().reloadMembers();
    return true;
}

void ZRAddToGroupCommand::undoIt()
{
    restoreSelection(_group, _records);
    removeRecordsFromGroup();
    for (auto nested = _assimilatedSubgroupCommands.rbegin(); nested != _assimilatedSubgroupCommands.rend();
         ++nested)
        (*nested)->undoIt();
    if (_deleteAssimilatedRecordsCommand)
        _deleteAssimilatedRecordsCommand->doIt();
    cache().removedMembers(_records, _group);
    cache().nonThreadedSave();
    cache().reloadMembers();
}

void ZRAddToGroupCommand::redoIt()
{
    if (_deleteAssimilatedRecordsCommand)
        _deleteAssimilatedRecordsCommand->undoIt();
    for (const auto& nested : _assimilatedSubgroupCommands)
        nested->redoIt();
    cache().addedMembers(addRecordsToGroupAgain(), _group);
    restoreSelection(_group, _records);
    cache().nonThreadedSave();
    cache().reloadMembers();
}
