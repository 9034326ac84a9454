// How a stored telephone number is shown to a person, wherever in the world it is.
#pragma once

#include "core/ZRExport.h"
#include "format/PhoneTemplates.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

/// Shows numbers of the user's country as nationals write them, and foreign ones as their countries do.
///
/// A number with "+" in front is written by the user's own templates that begin with "+", else by those of
/// the country whose code it begins with. Any other number is written by the user's templates. These are the
/// list in the preferences, as `ZRPhoneFormatter` keeps it, or else the first list of the given country. A
/// number that no template fits is shown as it is stored, and so is every number when the user has switched
/// formatting off.
///
/// It is no formatter of a field: it changes no preferences, follows none that change, and never gives a text
/// to store.
///
/// Ownership: owns the templates that it uses.
/// Threads:   one at a time; make one for each.
/// Errors:    none.
class ZR_EXPORT ZRPhoneNumberDisplay {
public:
    /// `countryCode` in lower case: the roster's default country.
    explicit ZRPhoneNumberDisplay(std::string_view countryCode);

    /// The text to show for a stored number, extension included.
    std::string stringForNumber(std::string_view number) const;

private:
    std::optional<std::string> formattedAbroad(std::string_view digits) const;
    const PhoneTemplates& templatesOf(std::string_view code) const;

    bool _enabled;
    PhoneTemplates _own, _ownAbroad;
    /// By code, "+49", those asked for so far; none for a code that nobody has.
    mutable std::map<std::string, PhoneTemplates, std::less<>> _foreign;
};
