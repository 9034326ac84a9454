// The preferences that a new user finds, by language, and the country that is taken for theirs.
#include "store/RosterWorld.h"

#include "platform/files/Preferences.h"
#include "platform/files/Resources.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Encoding.h"
#include "platform/value/PropertyList.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using testing::HasSubstr;

const Role tellsDefaults("tell the defaults", [](const Words&) {
    const auto roster = openShared();
    const Value defaults = roster->localizedDefaults();
    std::string answer;
    for (const char* key : {"ZR21vCardEncoding", "ZR21vCardEncoding-localized", "ZRNameDisplay",
             "ZRNameSorting", "ZRPhoneticFieldsVisible", "ZREmailsVisible"})
        answer += textOf(defaults[key]) + " ";
    return answer + roster->defaultCountryCode() + " " + std::to_string(roster->defaultNameOrdering());
});

const Role choosesOwn("choose own defaults", [](const Words&) {
    const auto preferences = ZRUserDefaults::rosterPreferences();
    preferences->setObject("UTF-8", zr::kZR21vCardEncoding);
    preferences->setObject(1, zr::kZRNameDisplay);
    return std::string();
});

const Role choosesCountry("choose countries", [](const Words& codes) {
    const auto roster = openShared();
    std::string answers;
    for (const auto& code : codes) {
        roster->setDefaultCountryCode(code);
        answers += roster->defaultCountryCode() + " ";
    }
    return answers;
});

const Role findsCountry("find the country", [](const Words& words) {
    ZRUserDefaults::rosterPreferences()->setObject(Value(words[0]), "ZRDefaultAddressCountryCode");
    if (!platform::Preferences::shared().set("org.quillon.GlobalPreferences", "Country", Value(words[1])))
        return std::string("cannot set the preference");
    const auto answer = openShared()->defaultCountryCode();
    return answer + " "
        + textOf(ZRUserDefaults::rosterPreferences()->objectForKey("ZRDefaultAddressCountryCode"));
});

} // namespace

TEST(Defaults, FollowTheLanguageOfTheUser)
{
    struct Case {
        const char* locale;
        const char* encoding;
        const char* rest;
    };
    constexpr Case cases[] = {
        {"en_US.UTF-8", "windows-1252", "whole 0 whole 1 false true us 32"},
        {"de_AT.UTF-8", "windows-1252", "whole 0 whole 1 false true at 32"},
        {"is_IS.UTF-8", "windows-1252", "whole 0 whole 0 false true is 32"},
        {"hu_HU.UTF-8", "windows-1250", "whole 1 whole 1 false true hu 16"},
        {"ru_RU.UTF-8", "windows-1251", "whole 0 whole 1 false true ru 32"},
        {"el_GR.UTF-8", "windows-1253", "whole 0 whole 1 false true gr 32"},
        {"tr_TR.UTF-8", "windows-1254", "whole 0 whole 1 false true tr 32"},
        {"he_IL.UTF-8", "windows-1255", "whole 0 whole 1 false true il 32"},
        {"ar_SA.UTF-8", "windows-1256", "whole 0 whole 1 false true sa 32"},
        {"ja_JP.UTF-8", "Shift_JIS", "whole 1 whole 1 true true jp 16"},
        {"zh_CN.UTF-8", "GB18030", "whole 1 whole 1 true true cn 16"},
        {"zh_TW.UTF-8", "Big5", "whole 1 whole 1 true true tw 16"},
        {"ko_KR.UTF-8", "EUC-KR", "whole 1 whole 1 false true kr 16"},
        {"C", "windows-1252", "whole 0 whole 1 false true us 32"},
    };
    for (const auto& [locale, encoding, rest] : cases) {
        const Home home;
        const auto told = play("tell the defaults", {}, home.stage({{"LANG", locale}}));
        const std::string quoted = std::string("\"") + encoding + "\" ";
        EXPECT_EQ(told.answer, quoted + quoted + rest) << locale << told.log;
    }
}

TEST(Defaults, LeaveWhatTheUserChose)
{
    const Home home;
    ASSERT_EQ(home.play("choose own defaults").status, 0);
    EXPECT_EQ(
        home.play("tell the defaults").answer, "\"UTF-8\" \"windows-1252\" whole 1 whole 1 false true us 16");
}

TEST(DefaultCountry, IsKeptWhereTheChoiceIsUnknown)
{
    const Home home;
    const auto chosen = home.play("choose countries", {"DE", "xx", "fr", ""});
    EXPECT_EQ(chosen.answer, "de de fr fr ");
    EXPECT_THAT(
        chosen.log, HasSubstr("-[ZRRoster setDefaultCountryCode:] called with unknown country code 'xx'"));
}

TEST(DefaultCountry, IsTheChoiceThenTheLocalesThenTheSystemsAndIsStored)
{
    const struct {
        const char *choice, *system, *locale;
        const char* answer;
    } cases[] = {
        {"fr", "JP", "de_DE.UTF-8", "fr \"fr\""},
        {"xx", "JP", "de_DE.UTF-8", "de \"de\""},
        // The locale's language stands there alone, or with a country that is none.
        {"xx", "JP", "de.UTF-8", "jp \"jp\""},
        {"xx", "JP", "de_XX.UTF-8", "jp \"jp\""},
        {"FR", "xx", "de.UTF-8", "us \"us\""},
    };
    for (const auto& c : cases) {
        const Home home;
        const auto found = play("find the country", {c.choice, c.system}, home.stage({{"LANG", c.locale}}));
        EXPECT_EQ(found.answer, c.answer) << c.choice << c.system << c.locale << found.log;
    }
}

TEST(Defaults, NameEncodingsThatAreKnown)
{
    int files = 0;
    for (const auto name : platform::embeddedResourceNames()) {
        if (!name.starts_with("defaults/"))
            continue;
        ++files;
        const auto bytes = platform::resource(name.substr(0, name.rfind('.')), "plist");
        const auto defaults = platform::decodePropertyList(*bytes);
        ASSERT_TRUE(defaults) << name;
        const Value& encoding = (*defaults)["ZR21vCardEncoding"];
        EXPECT_TRUE(encoding.isAbsent()
            || platform::encodingForName(encoding.asText()) != platform::invalidTextEncoding)
            << name;
    }
    EXPECT_GT(files, 25);
}

} // namespace test
