// Several properties of a card that a user has edited.
#pragma once

#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

/// An edit of a card, made by whoever shows it.
///
/// Make the command before the edit: groups may use entries that the edit takes away.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRChangePropertiesCommand final : public ZRCommand {
public:
    /// `properties`: a dictionary from property to what it was; the null marker for nothing.
    ZRChangePropertiesCommand(platform::Ref<ZRPerson> person, const platform::Value& properties,
        platform::Ref<ZRGroup> selectedGroup, platform::Ref<ZRRoster> roster = nullptr);

    /// True: it was done.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRChangePropertiesCommand() override;

    void _undoRedoChangeProperties();

    platform::Value _properties;
    const ZRRecordList _parents;
    const platform::Ref<ZRPerson> _person;
    const platform::Ref<ZRGroup> _selectedGroup;
    platform::Value _choices;
};
