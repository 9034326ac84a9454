// How names of countries are looked up.
#include "platform/text/Regions.h"

#include "platform/run/NeverDestroyed.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <unordered_map>

#include <unicode/uchar.h>
#include <unicode/uloc.h>

namespace platform {

namespace {

/// In the order in which they are asked: a name that means two countries means that of the first of these.
constexpr std::array kLanguages = {"en", "de", "fr", "es", "it", "pt", "nl", "sv", "pl", "ru", "ja", "zh"};

struct UsualForm {
    std::string_view name, code;
};

/// What people write who write English. Sorted.
constexpr auto kUsualForms = std::to_array<UsualForm>({
    {"america", "us"},
    {"bosnia", "ba"},
    {"britain", "gb"},
    {"burma", "mm"},
    {"czech republic", "cz"},
    {"england", "gb"},
    {"great britain", "gb"},
    {"holland", "nl"},
    {"hong kong", "hk"},
    {"ivory coast", "ci"},
    {"korea", "kr"},
    {"macau", "mo"},
    {"macedonia", "mk"},
    {"northern ireland", "gb"},
    {"pr china", "cn"},
    {"prc", "cn"},
    {"republic of ireland", "ie"},
    {"republic of korea", "kr"},
    {"roc", "tw"},
    {"russian federation", "ru"},
    {"scotland", "gb"},
    {"the netherlands", "nl"},
    {"uae", "ae"},
    {"uk", "gb"},
    {"united states", "us"},
    {"united states of america", "us"},
    {"us of a", "us"},
    {"viet nam", "vn"},
    {"wales", "gb"},
});
static_assert(std::ranges::is_sorted(kUsualForms, {}, &UsualForm::name));

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// Without full stops and outer blanks; ASCII in lower case.
std::string plainForm(std::string_view name)
{
    std::string plain;
    for (const char c : name)
        if (c != '.')
            plain += lowered(c);
    const auto first = plain.find_first_not_of(" \t");
    return first == plain.npos ? "" : plain.substr(first, plain.find_last_not_of(" \t") - first + 1);
}

std::string codeOf(const char* country)
{
    std::string code(country);
    std::ranges::transform(code, code.begin(), lowered);
    return code;
}

using Names = std::unordered_map<std::string, std::string>;

Names countryCodes()
{
    Names codes;
    for (const char* const* country = uloc_getISOCountries(); *country; ++country) {
        codes.emplace(codeOf(*country), codeOf(*country));
        const auto locale = std::string("und_") + *country;
        codes.emplace(codeOf(uloc_getISO3Country(locale.c_str())), codeOf(*country));
    }
    return codes;
}

/// Latin letters without their accents and all others in their plain case: what spellings have in common.
std::string folded(std::string_view name)
{
    constexpr char16_t endOfLatin = 0x250, vietnamese = 0x1E00, endOfVietnamese = 0x1F00;
    std::u16string form;
    for (const char16_t letter : toUTF16(name)) {
        if (letter < 0x80)
            form += static_cast<char16_t>(lowered(static_cast<char>(letter)));
        else if (letter < endOfLatin || (letter >= vietnamese && letter < endOfVietnamese))
            form += toUTF16(foldCaseAndDiacritics(fromUTF16({&letter, 1})));
        else
            form += static_cast<char16_t>(u_foldCase(letter, U_FOLD_CASE_DEFAULT));
    }
    return fromUTF16(form);
}

Names countryNames(const char* language)
{
    Names names;
    std::array<char16_t, 200> text{};
    for (const char* const* country = uloc_getISOCountries(); *country; ++country) {
        UErrorCode status = U_ZERO_ERROR;
        const auto locale = std::string("und_") + *country;
        const auto length = uloc_getDisplayCountry(
            locale.c_str(), language, text.data(), static_cast<std::int32_t>(text.size()), &status);
        if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING)
            continue;
        const auto name = fromUTF16({text.data(), static_cast<std::size_t>(length)});
        names.emplace(folded(plainForm(name)), codeOf(*country));
    }
    return names;
}

/// The names of a language are read when those of the languages before it do not have the one that is asked
/// for.
const Names& namesIn(std::size_t language)
{
    static std::array<std::once_flag, kLanguages.size()> read;
    static const NeverDestroyed<std::array<Names, kLanguages.size()>> names;
    std::call_once(read[language], [&] { (*names)[language] = countryNames(kLanguages[language]); });
    return (*names)[language];
}

std::string found(const Names& names, const std::string& name)
{
    const auto at = names.find(name);
    return at == names.end() ? "" : at->second;
}

} // namespace

std::string regionCodeForName(std::string_view name)
{
    constexpr std::size_t longest = 200;
    if (name.size() > longest)
        return {};
    const auto plain = plainForm(name);
    if (plain.size() < 2)
        return {};
    const auto usual = std::ranges::lower_bound(kUsualForms, plain, {}, &UsualForm::name);
    if (usual != kUsualForms.end() && usual->name == plain)
        return std::string(usual->code);
    static const NeverDestroyed<Names> codes(countryCodes());
    if (plain.size() <= 3)
        if (auto code = found(*codes, plain); !code.empty())
            return code;
    const auto form = folded(plain);
    for (std::size_t language = 0; language < kLanguages.size(); ++language)
        if (auto code = found(namesIn(language), form); !code.empty())
            return code;
    return {};
}

} // namespace platform
