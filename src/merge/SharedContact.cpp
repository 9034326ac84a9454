// How an address or a number is reduced to what it reaches.
#include "merge/SharedContact.h"

#include "core/ZRConstants.h"
#include "core/ZRStringAdditions.h"
#include "format/WhiteSpace.h"
#include "platform/text/Digits.h"
#include "platform/text/Fold.h"

namespace merge {

namespace {

/// Shorter numbers are extensions, short codes and emergency calls.
constexpr std::size_t kFewestDigits = 6;

std::string addressKey(std::string_view value)
{
    const std::string_view address = trimmedWhiteSpace(value);
    const auto at = address.rfind('@');
    if (at == address.npos || at == 0 || at + 1 == address.size())
        return {};
    return platform::foldCase(address);
}

std::string numberKey(std::string_view value)
{
    const std::string digits = platform::digitsOnly(value);
    const bool isOneDigit = digits.find_first_not_of(digits.substr(0, 1)) == digits.npos;
    if (digits.size() < kFewestDigits || isOneDigit)
        return {};
    return platform::foldCase(zrStandardizedPhoneNumber(value));
}

} // namespace

std::string sharedContactKey(std::string_view property, std::string_view value)
{
    if (property == zr::kZREmailProperty)
        return addressKey(value);
    return property == zr::kZRPhoneProperty ? numberKey(value) : std::string();
}

} // namespace merge
