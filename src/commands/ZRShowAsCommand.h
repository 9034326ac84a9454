// Cards that are shown as people, or as companies.
#pragma once

#include "commands/ZRCommand.h"

/// Cards that are shown as people from now on, or as companies.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRShowAsCommand final : public ZRCommand {
public:
    /// `personType`: 0 for people, 1 for companies.
    ZRShowAsCommand(ZRRecordList selectedMembers, platform::Ref<ZRGroup> selectedGroup,
        std::int64_t personType, platform::Ref<ZRRoster> roster = nullptr);

    /// False when all cards among the members are shown so already.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRShowAsCommand() override;

    void _showAs();

    ZRRecordList _selectedMembers;
    const platform::Ref<ZRGroup> _selectedGroup;
    std::int64_t _personType;
};
