// The environment names locale and languages.
#include "platform/text/Locale.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(Locale, ComesFromTheFirstVariableThatIsSet)
{
    struct {
        const char *all, *collate, *lang;
        std::string_view locale, country;
    } const rows[] = {
        {nullptr, nullptr, nullptr, "en_US", "US"},
        {nullptr, nullptr, "C.UTF-8", "en_US", "US"},
        {nullptr, nullptr, "POSIX", "en_US", "US"},
        {nullptr, nullptr, "de_DE.UTF-8", "de_DE", "DE"},
        {nullptr, "", "de_AT@euro", "de_AT", "AT"},
        {nullptr, "sv_SE", "de_DE", "sv_SE", "SE"},
        {"fr_CA.ISO-8859-1", "sv_SE", "de_DE", "fr_CA", "CA"},
        {"C", "sv_SE", "de_DE", "en_US", "US"},
        {"sr_RS.UTF-8@latin", nullptr, nullptr, "sr_Latn_RS", "RS"},
        {"zh-hant-tw", nullptr, nullptr, "zh_Hant_TW", "TW"},
        {"eo", nullptr, nullptr, "eo", ""},
        {"es_419", nullptr, nullptr, "es_419", "419"},
        {"../../etc/passwd", nullptr, nullptr, "en_US", "US"},
        {"de_../x", nullptr, nullptr, "de", ""},
    };
    for (const auto& [all, collate, lang, locale, country] : rows) {
        const test::ScopedVariable first("LC_ALL", all), second("LC_COLLATE", collate), third("LANG", lang);
        EXPECT_EQ(currentLocale(), locale);
        EXPECT_EQ(countryOfLocale(currentLocale()), country) << locale;
    }
}

TEST(Locale, NamesCountriesInTheLanguageAskedFor)
{
    const struct {
        const char *code, *language, *name;
    } rows[] = {
        {"de", "de", "Deutschland"},
        {"DE", "fr", "Allemagne"},
        {"jp", "en", "Japan"},
        {"cz", "cs", "Česko"},
        {"us", "zh_TW", "美國"},
        {"us", "zh", "美国"},
        {"xx", "en", ""},
        {"", "en", ""},
        {"deutschland", "en", ""},
    };
    for (const auto& [code, language, name] : rows)
        EXPECT_EQ(nameOfCountry(code, language), name) << code << " in " << language;
}

} // namespace
} // namespace platform
