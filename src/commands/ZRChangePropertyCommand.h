// One property that a user has edited.
#pragma once

#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

/// An edit of one property, made by whoever shows the card.
///
/// Make the command before the edit: groups may use entries that the edit takes away.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRChangePropertyCommand final : public ZRCommand {
public:
    /// `propertyPath`: a property, and perhaps "." and a part of its value. The old value is that of the
    /// whole property.
    ZRChangePropertyCommand(platform::Ref<ZRPerson> person, std::string_view propertyPath,
        platform::Value oldValue, platform::Ref<ZRRoster> roster = nullptr);
    /// What the edit made of the property: absent when it removed it.
    void setNewValue(platform::Value value) { _newValue = std::move(value); }

    /// True: it was done.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRChangePropertyCommand() override;

    void write(const platform::Value& value);

    const std::string _propertyPath;
    const platform::Value _oldValue;
    platform::Value _newValue;
    const platform::Ref<ZRPerson> _person;
    platform::Value _choices;
};
