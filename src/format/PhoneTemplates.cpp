// Takes numbers apart and fills templates.
#include "format/PhoneTemplates.h"

#include "format/PhoneCharacters.h"
#include "format/WhiteSpace.h"
#include "platform/text/Digits.h"

#include <algorithm>

namespace {

/// Where the extension of a number begins. A character that no number holds starts it, unless it is the very
/// first one; what stands before it, mostly a blank, goes along, except that one character always stays, and
/// that "#" takes nothing along.
std::size_t lengthOfHead(std::string_view text)
{
    const auto foreign = std::find_if_not(text.begin(), text.end(), isAllowedInPhoneNumber);
    const auto at = static_cast<std::size_t>(foreign - text.begin());
    if (at == 0 || at == text.size())
        return text.size();
    return at == 1 || isPhonePosition(text[at]) ? at : at - 1;
}

std::string digitsIn(std::string_view head)
{
    std::string digits;
    std::copy_if(head.begin(), head.end(), std::back_inserter(digits), isPhoneDigit);
    return digits;
}

} // namespace

PhoneNumberText::PhoneNumberText(std::string_view typed)
    : _text(platform::compatibilityComposed(typed))
    , _headLength(lengthOfHead(_text))
    , _digits(digitsIn(std::string_view(_text).substr(0, _headLength)))
{
}

std::string PhoneNumberText::withNumber(std::string formatted) const
{
    if (_headLength < _text.size())
        formatted.append(" ").append(trimmedWhiteSpace(std::string_view(_text).substr(_headLength)));
    return formatted;
}

PhoneTemplates::Template::Template(std::string_view source) : text(source)
{
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        if (!isPhonePosition(text[offset]))
            continue;
        if (text[offset] == '#')
            blanks.push_back({offset, count});
        else
            literals.push_back({count, text[offset]});
        ++count;
    }
}

bool PhoneTemplates::Template::fits(std::string_view digits) const
{
    return std::all_of(literals.begin(), literals.end(),
        [&](const Literal& literal) { return digits[literal.place] == literal.character; });
}

std::string PhoneTemplates::Template::filled(std::string_view digits) const
{
    std::string number = text;
    for (const Blank& blank : blanks)
        number[blank.offset] = digits[blank.place];
    return number;
}

PhoneTemplates::PhoneTemplates(const std::vector<std::string>& templates)
{
    for (const auto& source : templates)
        _templates.emplace_back(source);
    std::stable_sort(_templates.begin(), _templates.end(),
        [](const Template& a, const Template& b) { return a.count < b.count; });
}

std::optional<std::string> PhoneTemplates::format(std::string_view digits) const
{
    auto at = std::lower_bound(_templates.begin(), _templates.end(), digits.size(),
        [](const Template& candidate, std::size_t count) { return candidate.count < count; });
    for (; at != _templates.end() && at->count == digits.size(); ++at)
        if (at->fits(digits))
            return at->filled(digits);
    return {};
}

std::string PhoneTemplates::write(const PhoneNumberText& number) const
{
    if (!number.digits().empty())
        if (auto formatted = format(number.digits()))
            return number.withNumber(std::move(*formatted));
    return number.text();
}
