// Who joins or leaves a group: what both commands share.
#pragma once

#include "commands/ZRCommand.h"

/// Records that join or leave a group.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRGroupCommand : public ZRCommand {
public:
    ZRGroupCommand(
        platform::Ref<ZRGroup> group, ZRRecordList records, platform::Ref<ZRRoster> roster = nullptr);

    /// Who joins or leaves; once done, those who did.
    const ZRRecordList& records() const { return _records; }

protected:
    ~ZRGroupCommand() override;

    /// All answer those of the records whose membership changed.
    ZRRecordList addRecordsToGroup();
    /// The same for those who were in it before.
    ZRRecordList addRecordsToGroupAgain();
    ZRRecordList removeRecordsFromGroup();

    ZRRecordList _records;
    const platform::Ref<ZRGroup> _group;
};
