// Takes white space off the ends of texts.
#include "format/WhiteSpace.h"

#include "platform/text/Utf.h"

#include <unicode/uchar.h>

namespace {

/// How many bytes of white space begin at `at`: those of one character, or none.
std::size_t whiteSpaceAt(std::string_view text, std::size_t at)
{
    std::size_t end = at;
    const char32_t character = platform::nextCharacter(text, end);
    const bool isWhite =
        character != platform::kIllFormed && u_isUWhiteSpace(static_cast<UChar32>(character));
    return isWhite ? end - at : 0;
}

} // namespace

std::string_view trimmedWhiteSpace(std::string_view text)
{
    for (std::size_t blank = 1; !text.empty() && blank > 0; text.remove_prefix(blank))
        blank = whiteSpaceAt(text, 0);
    for (std::size_t blank = 1; !text.empty() && blank > 0; text.remove_suffix(blank))
        blank = whiteSpaceAt(text, platform::startOfLastCharacter(text));
    return text;
}
