// Takes numbers apart and fills templates.
#include "format/PhoneTemplates.h"

#include "format/PhoneCharacters.h"
#include "format/WhiteSpace.h"
#include "platform/text/Digits.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kFrontLength = 16;

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
    std::string digits(head.size(), '\0');
    char* end = digits.data();
    for (const char character : head)
        if (isPhoneDigit(character))
            *end++ = character;
    digits.resize(static_cast<std::size_t>(end - digits.data()));
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

void PhoneTemplates::Front::set(std::size_t place, char character)
{
    reinterpret_cast<char*>(words.data())[place] = character;
}

bool PhoneTemplates::Front::isEqual(const Front& other, const Front& mask) const
{
    return (((words[0] & mask.words[0]) ^ other.words[0]) | ((words[1] & mask.words[1]) ^ other.words[1]))
        == 0;
}

bool PhoneTemplates::Trial::fits(std::string_view digits, const Front& front) const
{
    return front.isEqual(literals, mask) && std::all_of(later.begin(), later.end(), [&](const auto& literal) {
        return digits[literal.first] == literal.second;
    });
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
        add(source);
    std::stable_sort(
        _trials.begin(), _trials.end(), [](const Trial& a, const Trial& b) { return a.count < b.count; });
}

void PhoneTemplates::add(std::string_view source)
{
    Template made{std::string(source), {}};
    Trial trial;
    trial.index = _templates.size();
    for (std::size_t offset = 0; offset < source.size(); ++offset) {
        if (!isPhonePosition(source[offset]))
            continue;
        const std::size_t place = trial.count++;
        if (source[offset] == '#') {
            made.blanks.push_back({offset, place});
        } else if (place < kFrontLength) {
            trial.literals.set(place, source[offset]);
            trial.mask.set(place, '\xFF');
        } else {
            trial.later.emplace_back(place, source[offset]);
        }
    }
    _templates.push_back(std::move(made));
    _trials.push_back(std::move(trial));
}

std::optional<std::string> PhoneTemplates::format(std::string_view digits) const
{
    Front front;
    std::memcpy(front.words.data(), digits.data(), std::min(digits.size(), kFrontLength));
    auto at = std::lower_bound(_trials.begin(), _trials.end(), digits.size(),
        [](const Trial& trial, std::size_t count) { return trial.count < count; });
    for (; at != _trials.end() && at->count == digits.size(); ++at)
        if (at->fits(digits, front))
            return _templates[at->index].filled(digits);
    return {};
}

std::string PhoneTemplates::write(const PhoneNumberText& number) const
{
    if (!number.digits().empty())
        if (auto formatted = format(number.digits()))
            return number.withNumber(std::move(*formatted));
    return number.text();
}
