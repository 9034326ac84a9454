// Another name for a group.
#pragma once

#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

/// The renaming of a group.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRRenameGroupCommand final : public ZRCommand {
public:
    ZRRenameGroupCommand(
        platform::Ref<ZRGroup> group, platform::Value name, platform::Ref<ZRRoster> roster = nullptr);

    /// False without a group, and for a special one.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRRenameGroupCommand() override;

    void _swapName();

    const platform::Ref<ZRGroup> _group;
    platform::Value _name;
};
