// Takes white space off the ends of texts.
#include "format/WhiteSpace.h"

#include "platform/text/Utf.h"

#include <unicode/uchar.h>

namespace {

bool isWhiteSpace(char32_t character)
{
    return character != platform::kIllFormed && u_isUWhiteSpace(static_cast<UChar32>(character));
}

} // namespace

std::string_view trimmedWhiteSpace(std::string_view text)
{
    std::size_t next = 0;
    while (!text.empty() && isWhiteSpace(platform::nextCharacter(text, next = 0)))
        text.remove_prefix(next);
    while (!text.empty()
        && isWhiteSpace(platform::nextCharacter(text, next = platform::startOfLastCharacter(text))))
        text.remove_suffix(text.size() - platform::startOfLastCharacter(text));
    return text;
}
