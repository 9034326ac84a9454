// The action on a postal address that copies what is written on an envelope.
#pragma once

#include "core/ZRExport.h"

#include <string>
#include <string_view>

class ZRPerson;

/// Copies name, company and address of a person to the pasteboard.
///
/// It prints nothing: the label is text, one line below the other.
///
/// Ownership: holds nothing.
/// Threads:   the main thread.
/// Errors:    none; an identifier that the person does not have does nothing.
class ZR_EXPORT ZRActionAddressCopyMailingLabel {
public:
    /// The property on whose values it acts.
    std::string actionProperty() const;
    /// The title of its menu item in the user's language.
    std::string titleForPerson(const ZRPerson& person, std::string_view identifier) const;
    bool shouldEnableActionForPerson(const ZRPerson& person, std::string_view identifier) const;
    /// Puts the label on the pasteboard as plain text. The company is left out of an address at home.
    void performActionForPerson(const ZRPerson& person, std::string_view identifier) const;
};
