// A new card.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"

/// The making of a card in a list of people.
///
/// Whoever ends the making has told the lists of it and put it into its group: see `ZRDBCache::endEditing`.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRNewPersonCommand final : public ZRCommand {
public:
    /// `selectedGroup`: where the card was made; a special group, or none, for no group.
    ZRNewPersonCommand(platform::Ref<ZRPerson> newPerson, platform::Ref<ZRGroup> selectedGroup,
        platform::Ref<ZRRoster> roster = nullptr);

    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRNewPersonCommand() override;

    const platform::Ref<ZRPerson> _newPerson;
    const platform::Ref<ZRGroup> _selectedGroup;
    std::vector<KeptRecord> _kept;
};
