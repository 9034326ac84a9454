// A new smart group.
#pragma once

#include "commands/ZRGroupMakingCommand.h"

class ZRSearchElement;
class ZRSmartGroup;

/// The making of a smart group.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRNewSmartGroupCommand final : public ZRGroupMakingCommand {
public:
    /// `hilight`: whether the group tells when its members change.
    ZRNewSmartGroupCommand(std::string_view name, platform::Ref<ZRSearchElement> searchElement, bool hilight,
        platform::Ref<ZRRoster> roster = nullptr);

    /// False without a search.
    bool doIt() override;
    ZRRecordList madeGroups() const override;

    /// Absent until it was done.
    const platform::Ref<ZRSmartGroup>& newGroup() const { return _newGroup; }

private:
    ~ZRNewSmartGroupCommand() override;

    platform::Ref<ZRSmartGroup> _newGroup;
    const platform::Ref<ZRSearchElement> _searchElement;
    const std::string _name;
    const bool _hilight;
};
