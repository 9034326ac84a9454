// What a smart group looks for, edited.
#pragma once

#include "commands/ZRCommand.h"

class ZRSearchElement;
class ZRSmartGroup;

/// An edit of a smart group: its name, its search, and whether it tells of changes.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZREditSmartGroupCommand final : public ZRCommand {
public:
    ZREditSmartGroupCommand(platform::Ref<ZRSmartGroup> group, std::string_view name,
        platform::Ref<ZRSearchElement> element, bool hilights, platform::Ref<ZRRoster> roster = nullptr);

    /// False without a group.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZREditSmartGroupCommand() override;

    void _swap();

    const platform::Ref<ZRSmartGroup> _group;
    platform::Ref<ZRSearchElement> _element;
    std::string _name;
    bool _hilights;
};
