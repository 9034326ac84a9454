// Another Me card.
#pragma once

#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

/// The choice of the card that is the user's own.
///
/// A platform may keep the picture of its user: becoming Me must not change that of a card.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRMeCommand final : public ZRCommand {
public:
    ZRMeCommand(platform::Ref<ZRGroup> selectedGroup, platform::Ref<ZRRecord> newMe,
        platform::Ref<ZRRoster> roster = nullptr);

    /// False for no card, the present Me, and what is no person.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRMeCommand() override;

    const platform::Ref<ZRGroup> _selectedGroup;
    const platform::Ref<ZRPerson> _currentMe;
    const platform::Ref<ZRPerson> _newMe;
    const platform::Value _currentMeImageData;
    const platform::Value _newMeImageData;
};
