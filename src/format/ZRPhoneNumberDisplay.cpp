// Chooses between the user's templates and those of the country that a number calls.
#include "format/ZRPhoneNumberDisplay.h"

#include "format/PhoneFormats.h"
#include "format/ZRPhoneFormatter.h"
#include "platform/files/ZRUserDefaults.h"

#include <algorithm>

namespace {

using Texts = std::vector<std::string>;

std::string keyOf(const char* what) { return std::string(ZRPhoneFormat) + what; }

bool isSwitchedOn()
{
    bool exists = false;
    const bool enabled = ZRUserDefaults::rosterPreferences()->boolForKey(keyOf("-Enabled"), &exists);
    return enabled || !exists;
}

Texts ownTemplates(std::string_view countryCode)
{
    auto stored = stringsOf(ZRUserDefaults::rosterPreferences()->objectForKey(keyOf("-PhoneFormatter")));
    if (!stored.empty())
        return stored;
    auto lists = phoneFormatsOfCountry(countryCode);
    return lists.empty() ? Texts() : std::move(lists.front());
}

/// What a template with "+" in front says up to its first decoration: the country code.
std::string_view countryCodeOf(std::string_view text)
{
    return text.substr(0, text.find_first_not_of("+0123456789"));
}

Texts abroad(const Texts& templates)
{
    Texts chosen;
    std::copy_if(templates.begin(), templates.end(), std::back_inserter(chosen),
        [](const auto& text) { return text.starts_with('+'); });
    return chosen;
}

/// The templates with "+" in front of one country that has this code: all that share it write alike. None for
/// a code that nobody has.
Texts templatesOfCode(std::string_view code)
{
    for (const auto& [country, lists] : phoneFormats().asDictionary()->entries()) {
        auto templates = lists.asArray().empty() ? Texts() : abroad(stringsOf(lists.asArray().front()));
        if (!templates.empty() && countryCodeOf(templates.front()) == code)
            return templates;
    }
    return {};
}

} // namespace

ZRPhoneNumberDisplay::ZRPhoneNumberDisplay(std::string_view countryCode) : _enabled(isSwitchedOn())
{
    const auto templates = ownTemplates(countryCode);
    _own = PhoneTemplates(templates);
    _ownAbroad = PhoneTemplates(abroad(templates));
}

std::string ZRPhoneNumberDisplay::stringForNumber(std::string_view number) const
{
    const PhoneNumberText typed(number);
    if (!_enabled || typed.digits().empty())
        return std::string(number);
    const bool callsAbroad = typed.digits().front() == '+';
    auto formatted = callsAbroad ? formattedAbroad(typed.digits()) : _own.format(typed.digits());
    return formatted ? typed.withNumber(std::move(*formatted)) : std::string(number);
}

const PhoneTemplates& ZRPhoneNumberDisplay::templatesOf(std::string_view code) const
{
    auto found = _foreign.find(code);
    if (found == _foreign.end())
        found = _foreign.emplace(code, templatesOfCode(code)).first;
    return found->second;
}

std::optional<std::string> ZRPhoneNumberDisplay::formattedAbroad(std::string_view digits) const
{
    if (auto formatted = _ownAbroad.format(digits))
        return formatted;
    // "+" and a country code of one to three digits, of which none begins with another.
    for (std::size_t length = 2; length <= std::min<std::size_t>(4, digits.size()); ++length)
        if (const auto& templates = templatesOf(digits.substr(0, length)); !templates.isEmpty())
            return templates.format(digits);
    return {};
}
