// Looks for characters that no template may hold.
#include "format/ZRAntiPhoneFormatter.h"

#include "format/PhoneCharacters.h"
#include "platform/text/Utf.h"

ZRAntiPhoneFormatter::ZRAntiPhoneFormatter()
    : _nonAllowableChars(CharacterSet("#" + std::string(kAllowedInPhoneNumbers)).inverted())
{
}

std::optional<std::string> ZRAntiPhoneFormatter::stringForObjectValue(const platform::Value& value) const
{
    if (!value.isString())
        return {};
    return std::string(value.asText());
}

bool ZRAntiPhoneFormatter::getObjectValue(platform::Value& value, std::string_view typed, std::string*) const
{
    if (firstBadCharacter(typed))
        return false;
    value = typed;
    return true;
}

bool ZRAntiPhoneFormatter::isPartialStringValid(std::string_view partial,
    ZRTextSelection* proposedSelectedRange, std::string_view, ZRTextSelection, std::string*) const
{
    const auto bad = firstBadCharacter(partial);
    if (bad && proposedSelectedRange)
        *proposedSelectedRange = *bad;
    return !bad;
}

std::optional<ZRTextSelection> ZRAntiPhoneFormatter::firstBadCharacter(std::string_view text) const
{
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        if (!_nonAllowableChars.contains(platform::nextCharacter(text, at)))
            continue;
        const auto units = [&](std::size_t from, std::size_t to) {
            return static_cast<ZRIndex>(platform::utf16Length(text.substr(from, to - from)));
        };
        return ZRTextSelection{units(0, start), units(start, at)};
    }
    return {};
}
