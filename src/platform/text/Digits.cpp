// How digits of all scripts become plain ones.
#include "platform/text/Digits.h"

#include "platform/text/Utf.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace platform {

std::string compatibilityComposed(std::string_view text)
{
    if (isASCII(text))
        return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCInstance(status);
    const std::u16string units = toUTF16(text);
    icu::UnicodeString result;
    if (normalizer)
        normalizer->normalize(
            icu::UnicodeString(false, units.data(), static_cast<int32_t>(units.size())), result, status);
    return U_SUCCESS(status) ? fromUTF16({result.getBuffer(), static_cast<std::size_t>(result.length())})
                             : std::string(text);
}

std::string digitsOnly(std::string_view text)
{
    const std::string composed = compatibilityComposed(text);
    std::string digits;
    for (std::size_t at = 0; at < composed.size();) {
        const char32_t character = nextCharacter(composed, at);
        const int value = u_charDigitValue(static_cast<UChar32>(character));
        if (value >= 0 && value <= 9)
            digits.push_back(static_cast<char>('0' + value));
    }
    return digits;
}

} // namespace platform
