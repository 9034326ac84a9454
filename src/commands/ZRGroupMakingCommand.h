// Groups that are made: how all such commands are undone and redone.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"

#include <vector>

/// The making of groups. A subclass makes them in `doIt`, and says which.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRGroupMakingCommand : public ZRCommand {
public:
    using ZRCommand::ZRCommand;

    /// Empty until it was done.
    virtual ZRRecordList madeGroups() const = 0;
    void undoIt() final;
    void redoIt() final;

protected:
    ~ZRGroupMakingCommand() override;

private:
    std::vector<KeptRecord> _kept;
};
