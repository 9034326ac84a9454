// Which language and country the user lives in, as the environment says.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The user's locale as language, script and country, such as "de_DE" or "sr_Latn_RS".
///
/// From the first of LC_ALL, LC_COLLATE and LANG that is set and not empty, read anew each time: the
/// library asks the environment itself, since its host need not have called setlocale. "en_US" where none
/// is set, or where it is "C" or "POSIX".
std::string currentLocale();

/// What `currentLocale` reads, as it stands in the environment; empty when nothing is set. For caches that
/// must notice a change: borrow it no longer than the environment stays as it is.
std::string_view localeVariable();

/// The country part of a locale in upper case, "DE" of "de_DE"; empty when it has none.
std::string countryOfLocale(std::string_view locale);

/// What the country of that code, in either case, is called in a language such as "de" or "zh_TW"; empty when
/// there is no such country.
std::string nameOfCountry(std::string_view code, std::string_view language);

/// The locale in the form of `currentLocale`, from the form of the environment ("sr_RS.UTF-8@latin").
std::string localeFromEnvironmentForm(std::string_view name);

} // namespace platform
