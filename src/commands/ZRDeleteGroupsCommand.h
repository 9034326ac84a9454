// Groups that are deleted from the list of groups.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"

/// The removal of groups; who is in them stays.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRDeleteGroupsCommand final : public ZRCommand {
public:
    ZRDeleteGroupsCommand(ZRRecordList groups, platform::Ref<ZRRoster> roster = nullptr);

    /// Special groups stay. False when no other is in the roster.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRDeleteGroupsCommand() override;

    void _doRemove();

    const ZRRecordList _groups;
    std::vector<KeptRecord> _kept;
};
