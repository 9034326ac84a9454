// By which e-mail addresses and telephone numbers two cards are told to belong together.
#pragma once

#include "core/ZRExport.h"

#include <string>
#include <string_view>

namespace merge {

/// What two values of that property are compared by; equal means shared. Empty for a value that proves
/// nothing, and for any property but e-mail addresses and telephone numbers.
///
/// An address counts folded in case, without blanks around it, and must have an "@" with something on both
/// sides ("n/a" is no address). A number counts by what is dialled; it must have six digits at least, since
/// extensions and emergency numbers are many people's, and not be one digit over and over ("000 000 000").
ZR_EXPORT std::string sharedContactKey(std::string_view property, std::string_view value);

} // namespace merge
