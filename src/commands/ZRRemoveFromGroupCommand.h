// Who leaves a group.
#pragma once

#include "commands/ZRGroupCommand.h"

/// Members and subgroups that leave a group, and stay in the roster.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRRemoveFromGroupCommand final : public ZRGroupCommand {
public:
    using ZRGroupCommand::ZRGroupCommand;

    /// False when none of the records is in the group.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRRemoveFromGroupCommand() override;
};
