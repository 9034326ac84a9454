// How records join and leave a group, and which of them did.
#include "commands/ZRGroupCommand.h"

#include "commands/RecordKeeping.h"

#include <algorithm>
#include <iterator>

using platform::Ref;

ZRGroupCommand::ZRGroupCommand(Ref<ZRGroup> group, ZRRecordList records, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _records(std::move(records)), _group(std::move(group))
{
}

ZRGroupCommand::~ZRGroupCommand() = default;

ZRRecordList ZRGroupCommand::addRecordsToGroup()
{
    ZRRecordList joined;
    std::ranges::copy_if(
        _records, std::back_inserter(joined), [&](const auto& record) { return joinGroup(*_group, record); });
    return joined;
}

ZRRecordList ZRGroupCommand::addRecordsToGroupAgain()
{
    ZRRecordList joined;
    std::ranges::copy_if(_records, std::back_inserter(joined),
        [&](const auto& record) { return rejoinGroup(*_group, record); });
    return joined;
}

ZRRecordList ZRGroupCommand::removeRecordsFromGroup()
{
    ZRRecordList gone;
    std::ranges::copy_if(
        _records, std::back_inserter(gone), [&](const auto& record) { return leaveGroup(*_group, record); });
    return gone;
}
