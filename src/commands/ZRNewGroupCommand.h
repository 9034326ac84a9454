// A new group.
#pragma once

#include "commands/ZRGroupMakingCommand.h"

/// The making of a group, with the records that were selected in it.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRNewGroupCommand final : public ZRGroupMakingCommand {
public:
    /// `parentGroup`: what the user saw; when it came with a subscription, so does the new group.
    ZRNewGroupCommand(ZRRecordList selectedRecords, platform::Ref<ZRGroup> parentGroup,
        platform::Ref<ZRRoster> roster = nullptr);

    bool doIt() override;
    ZRRecordList madeGroups() const override;

    /// Absent until it was done.
    const platform::Ref<ZRGroup>& newGroup() const { return _newGroup; }

private:
    ~ZRNewGroupCommand() override;

    platform::Ref<ZRGroup> madeGroup();

    platform::Ref<ZRGroup> _newGroup;
    const ZRRecordList _selectedRecords;
    const platform::Ref<ZRGroup> _parentGroup;
};
