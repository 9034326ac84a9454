// What the model does to strings and containers besides comparing them.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRUniqueId.h"
#include "platform/value/Value.h"

#include <string>
#include <string_view>

/// A telephone number as it is compared: its decimal digits of any script, "+", "#", "*", "," and the letters
/// a to z in either case. Everything else falls away.
ZR_EXPORT std::string zrStandardizedPhoneNumber(std::string_view text);

/// The text without the characters that Unicode calls punctuation. Blanks and symbols stay.
ZR_EXPORT std::string zrStringByRemovingPunctuation(std::string_view text);

/// Folded in case and diacritics, as the keys of a search for the same name are.
ZR_EXPORT std::string zrCaseNormalizedCopy(std::string_view text);

/// Whether records of these two remote locations may stand in one group: both came with one subscription.
ZR_EXPORT bool zrIsCompatibleWithSubscription(std::string_view location, std::string_view subscription);

/// Equal except for the case of strings, also of those inside arrays and dictionaries.
ZR_EXPORT bool zrCaseInsensitiveIsEqual(const platform::Value& a, const platform::Value& b);
/// The same for two texts.
ZR_EXPORT bool zrEqualIgnoringCase(std::string_view a, std::string_view b);

/// The entry of a dictionary; absent when it holds the null marker or is missing.
ZR_EXPORT platform::Value nonNullValueForKey(std::string_view key, const platform::Value& dictionary);

/// The dictionary without the entries that hold the null marker: itself when it has none.
ZR_EXPORT platform::Value zrDictionaryByRemovingNulls(const platform::Value& dictionary);
