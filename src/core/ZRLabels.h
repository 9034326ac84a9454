// Which labels a property offers, and how labels and properties read in the user's language.
#pragma once

#include "core/ZRExport.h"

#include <string>
#include <string_view>
#include <vector>

/// The labels that `property` offers, in the order of a menu: those of the user's preference, or else ours.
/// None for a property without labels.
ZR_EXPORT std::vector<std::string> builtInLabelsForProperty(std::string_view property);

/// The labels under which a new card shows empty fields of `property`, likewise.
ZR_EXPORT std::vector<std::string> initialFieldsForProperty(std::string_view property);

/// A property's or label's name in the user's language; a custom one as it was typed.
ZR_EXPORT std::string ZRLocalizedPropertyOrLabel(std::string_view key);

/// The same in English, whatever the user's language.
ZR_EXPORT std::string ZREnglishLocalizedPropertyOrLabel(std::string_view key);
