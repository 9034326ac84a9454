// How dates are told from other text.
#include "interchange/vcard/prepare/Days.h"

#include <algorithm>
#include <chrono>

namespace vcard::prepare {

namespace {

std::optional<int> number(std::string_view digits)
{
    int value = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

/// The value with each digit as "0": what is compared with patterns.
std::string_view patternOf(std::string_view value, char (&pattern)[12])
{
    const auto length = std::min(value.size(), sizeof pattern);
    std::transform(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(length), pattern,
        [](char c) { return c >= '0' && c <= '9' ? '0' : c; });
    return {pattern, length};
}

} // namespace

std::optional<std::size_t> lengthOfDay(std::string_view value)
{
    const bool dashes = value.size() >= 10 && value[4] == '-' && value[7] == '-';
    const std::size_t length = dashes ? 10 : 8;
    if (value.size() < length)
        return std::nullopt;
    const auto year = number(value.substr(0, 4));
    const auto month = number(value.substr(dashes ? 5 : 4, 2));
    const auto day = number(value.substr(dashes ? 8 : 6, 2));
    if (!year || !month || !day || *year == 0)
        return std::nullopt;
    using namespace std::chrono;
    if (!year_month_day{std::chrono::year{*year} / *month / *day}.ok())
        return std::nullopt;
    if (value.size() > length && value[length] != 'T' && value[length] != ' ')
        return std::nullopt;
    return length;
}

void appendDay(std::string& to, std::string_view day)
{
    if (day.size() == 10)
        to += day;
    else
        to.append(day.substr(0, 4)).append("-").append(day.substr(4, 2)).append("-").append(day.substr(6));
}

bool isPartOfDate(std::string_view value)
{
    char pattern[12];
    const auto written = patternOf(value.substr(0, value.find('T')), pattern);
    for (const std::string_view part : {"--0000", "--00-00", "--00", "---00", "0000", "0000-00"})
        if (written == part)
            return true;
    return false;
}

} // namespace vcard::prepare
