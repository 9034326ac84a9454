// How the environment names the user's locale and languages.
#include "platform/text/Locale.h"

#include "platform/text/Utf.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <vector>

#include <unicode/uloc.h>

namespace platform {

namespace {

constexpr std::string_view kFallback = "en_US";

struct Script {
    std::string_view modifier, code;
};
constexpr Script kScripts[] = {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}};

std::string_view firstSet(std::initializer_list<const char*> names)
{
    for (const char* name : names)
        if (const char* value = std::getenv(name); value && *value)
            return value;
    return {};
}

bool isNeutral(std::string_view name)
{
    const std::string_view base = name.substr(0, name.find_first_of(".@"));
    return base.empty() || base == "C" || base == "POSIX";
}

bool isWord(std::string_view part, std::size_t shortest, std::size_t longest)
{
    return part.size() >= shortest && part.size() <= longest
        && std::all_of(part.begin(), part.end(), [](unsigned char byte) { return std::isalnum(byte); });
}

std::string mapped(std::string_view text, int (*map)(int))
{
    std::string result(text);
    for (char& byte : result)
        byte = static_cast<char>(map(static_cast<unsigned char>(byte)));
    return result;
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators)
{
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find_first_of(separators, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string_view::npos)
            return parts;
        start = end + 1;
    }
}

std::string_view scriptOf(std::string_view modifier)
{
    for (const Script& script : kScripts)
        if (script.modifier == modifier)
            return script.code;
    return {};
}

} // namespace

std::string_view localeVariable() { return firstSet({"LC_ALL", "LC_COLLATE", "LANG"}); }

std::string localeFromEnvironmentForm(std::string_view name)
{
    if (isNeutral(name))
        return std::string(kFallback);
    const std::size_t at = name.find('@');
    const std::string_view modifier = at == std::string_view::npos ? "" : name.substr(at + 1);
    const auto parts = split(name.substr(0, name.find_first_of(".@")), "_-");
    if (!isWord(parts[0], 2, 3))
        return std::string(kFallback);
    std::string locale = mapped(parts[0], std::tolower);
    if (const auto script = scriptOf(modifier); !script.empty())
        locale.append("_").append(script);
    for (std::size_t index = 1; index < parts.size(); ++index) {
        if (isWord(parts[index], 4, 4) && index == 1)
            locale += "_" + mapped(parts[index].substr(0, 1), std::toupper)
                + mapped(parts[index].substr(1), std::tolower);
        else if (isWord(parts[index], 2, 3))
            locale += "_" + mapped(parts[index], std::toupper);
    }
    return locale;
}

std::string currentLocale() { return localeFromEnvironmentForm(localeVariable()); }

std::string countryOfLocale(std::string_view locale)
{
    const auto parts = split(locale.substr(0, locale.find_first_of(".@")), "_-");
    for (std::size_t index = 1; index < parts.size(); ++index)
        if (isWord(parts[index], 2, 3))
            return mapped(parts[index], std::toupper);
    return {};
}

std::string nameOfCountry(std::string_view code, std::string_view language)
{
    const std::string locale = "und_" + std::string(code);
    std::u16string name(256, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const auto length = uloc_getDisplayCountry(locale.c_str(), std::string(language).c_str(), name.data(),
        static_cast<int32_t>(name.size()), &status);
    // ICU answers the code itself where it has no name, and says so.
    if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING)
        return {};
    name.resize(static_cast<std::size_t>(length));
    return fromUTF16(name);
}

} // namespace platform
