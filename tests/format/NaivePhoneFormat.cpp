// Walks templates as one reads them, without preparing anything.
#include "format/NaivePhoneFormat.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::string_view digitSet = "+0123456789", countSet = "+0123456789#",
                           allowed = " .\"'/-,[]<>()+0123456789";

std::optional<std::string> filled(std::string format, std::string_view digits)
{
    std::size_t used = 0;
    for (std::size_t at = format.find_first_of(countSet); at != std::string::npos;
         at = format.find_first_of(countSet, at + 1)) {
        if (format[at] == '#')
            format[at] = digits[used];
        else if (format[at] != digits[used])
            return {};
        ++used;
    }
    return format;
}

std::string trimmed(std::string text)
{
    text.erase(0, std::min(text.find_first_not_of(" \t\n"), text.size()));
    text.erase(text.find_last_not_of(" \t\n") + 1);
    return text;
}

} // namespace

std::size_t test::countParts(std::string_view format)
{
    return static_cast<std::size_t>(std::count_if(format.begin(), format.end(),
        [](char character) { return countSet.find(character) != std::string_view::npos; }));
}

std::string test::naivelyFormatted(const std::string& text, const std::vector<std::string>& formats)
{
    std::size_t split = text.find_first_not_of(allowed);
    if (split == 0 || split == std::string::npos)
        split = text.size();
    else if (text[split] != '#' && split != 1)
        --split;
    std::string digits;
    for (const char character : text.substr(0, split))
        if (digitSet.find(character) != std::string_view::npos)
            digits += character;
    if (digits.empty())
        return text;
    for (const auto& format : formats) {
        const auto result = countParts(format) == digits.size() ? filled(format, digits) : std::nullopt;
        if (result)
            return split < text.size() ? *result + " " + trimmed(text.substr(split)) : *result;
    }
    return text;
}
