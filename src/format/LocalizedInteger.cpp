// Writes whole numbers as the user's country does.
#include "format/ZRPhoneFormatter.h"
#include "platform/text/Locale.h"
#include "platform/text/Utf.h"

#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

/// The locale of numbers, from the first of its variables that is set.
std::string localeOfNumbers()
{
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"})
        if (const char* name = std::getenv(variable); name && *name)
            return platform::localeFromEnvironmentForm(name);
    return "en_US";
}

} // namespace

std::string ZRLocalizedInteger(ZRIndex number)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberFormat> style(
        icu::NumberFormat::createInstance(icu::Locale(localeOfNumbers().c_str()), UNUM_DECIMAL, status));
    if (U_FAILURE(status))
        return std::to_string(number);
    icu::UnicodeString text;
    style->format(number, text);
    return platform::fromUTF16({text.getBuffer(), static_cast<std::size_t>(text.length())});
}
