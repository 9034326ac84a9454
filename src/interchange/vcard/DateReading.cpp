// How the dates of a vCard are read.
#include "interchange/vcard/DateReading.h"

#include "platform/text/Dates.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

using namespace platform;

namespace {

/// Takes whole numbers off a text, with one character between them.
class NumberScanner {
public:
    explicit NumberScanner(std::string_view text) : _rest(text) { }

    /// The next number, with its sign; one that is too large is the largest there is. Absent where none
    /// begins.
    std::optional<int> next()
    {
        const std::size_t blanks = _rest.find_first_not_of(" \t\n");
        _rest.remove_prefix(std::min(blanks, _rest.size()));
        const bool plus = _rest.starts_with('+');
        const std::string_view digits = _rest.substr(plus ? 1 : 0);
        int number = 0;
        const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (failure == std::errc::invalid_argument || (plus && digits.starts_with('-')))
            return std::nullopt;
        if (failure == std::errc::result_out_of_range)
            number =
                digits.starts_with('-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
        _rest.remove_prefix(static_cast<std::size_t>(end - _rest.data()));
        return number;
    }

    /// Passes one character, of whatever script.
    void step()
    {
        std::size_t at = 0;
        if (!_rest.empty())
            nextCharacter(_rest, at);
        _rest.remove_prefix(at);
    }

private:
    std::string_view _rest;
};

std::optional<Date> dateOfEightDigits(std::string_view text)
{
    if (!std::all_of(text.begin(), text.end(), [](char digit) { return digit >= '0' && digit <= '9'; }))
        return std::nullopt;
    const auto number = [&](std::size_t at, std::size_t length) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    return noonOf({number(0, 4), number(4, 2), number(6, 2)}, TimeZone::gmt());
}

} // namespace

std::optional<Date> dateFromISO8601String(std::string_view text)
{
    if (text.size() == 8 && text.find('-') == std::string_view::npos)
        return dateOfEightDigits(text);
    NumberScanner scanner(text);
    int parts[6] = {};
    for (std::size_t part = 0; part < std::size(parts); ++part) {
        const auto number = scanner.next();
        if (!number && part < 3)
            return std::nullopt;
        parts[part] = number.value_or(0);
        scanner.step();
    }
    const bool noTime = parts[3] == 0 && parts[4] == 0 && parts[5] == 0;
    return dateOf({{parts[0], parts[1], parts[2]}, noTime ? 12 : parts[3], parts[4], double(parts[5])});
}

std::optional<Date> dateFromBirthdayString(std::string_view text)
{
    if (text.starts_with('-'))
        text.remove_prefix(1);
    if (text.find(',') != std::string_view::npos) {
        const auto day = readDay(text);
        return day ? noonOf(*day) : std::nullopt;
    }
    return dateFromISO8601String(text);
}
