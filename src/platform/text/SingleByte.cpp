// Conversion of character sets of one byte, by tables.
#include "platform/text/SingleByte.h"

#include "platform/text/Utf.h"

#include <unicode/ucnv.h>

#include <algorithm>

namespace platform {

namespace {

bool isHighByte(char byte) { return byte & 0x80; }

std::string textOfByte(UConverter* converter, char byte)
{
    UErrorCode status = U_ZERO_ERROR;
    char16_t units[4];
    const int32_t length = ucnv_toUChars(converter, units, 4, &byte, 1, &status);
    return U_SUCCESS(status) ? fromUTF16({units, static_cast<std::size_t>(length)}) : std::string();
}

} // namespace

SingleByteSet::SingleByteSet(const char* converterName)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(converterName, &status);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_SUCCESS(status))
        for (unsigned index = 0; index < _texts.size(); ++index)
            _texts[index] = textOfByte(converter, static_cast<char>(index + 0x80));
    ucnv_close(converter);
    for (unsigned index = 0; index < _texts.size(); ++index)
        if (std::size_t at = 0; !_texts[index].empty())
            _bytes.emplace_back(nextCharacter(_texts[index], at), static_cast<char>(index + 0x80));
    std::sort(_bytes.begin(), _bytes.end());
}

std::optional<std::string> SingleByteSet::decode(std::string_view bytes) const
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (const char byte : bytes) {
        if (!isHighByte(byte)) {
            text.push_back(byte);
            continue;
        }
        const std::string& part = _texts[static_cast<unsigned char>(byte) & 0x7F];
        if (part.empty())
            return std::nullopt;
        text += part;
    }
    return text;
}

std::optional<std::string> SingleByteSet::encode(std::string_view text) const
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        if (!isHighByte(text[at])) {
            bytes.push_back(text[at++]);
            continue;
        }
        const char32_t character = nextCharacter(text, at);
        const auto found = std::lower_bound(_bytes.begin(), _bytes.end(), std::pair{character, '\x80'});
        if (found == _bytes.end() || found->first != character)
            return std::nullopt;
        bytes.push_back(found->second);
    }
    return bytes;
}

} // namespace platform
