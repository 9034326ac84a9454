// What the table of formats says of each country, whose table it may be, and in which language.
#include "AddressWorld.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace test {

namespace {

using testing::HasSubstr;
using testing::Not;

const Role formatsByOwnTable("format by a table of the user's own", [](const Words& words) {
    const OwnAddressTable table(words[0]);
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    const Value full =
        address({{"Street", "1 Way"}, {"City", "Town"}, {"CountryCode", "QQ"}, {"Name", "Ana"}});
    Value order;
    const auto label = roster->_formattedAddressFromDictionary(full, true, true, &order);
    return roster->defaultCountryCode() + "|" + visible(label->string()) + "|" + textOfOrder(order);
});

const Role showsTitles("tell titles", [](const Words&) {
    std::string titles;
    for (const auto& [code, key] : {std::pair{"us", "ZIP"}, {"de", "ZIP"}, {"in", "ZIP"}, {"jp", "State"},
             {"gb", "City"}, {"fr", "Country"}})
        titles += std::string(ZRRoster::addressFormats()[code][key].asText()) + "|";
    return titles;
});

const Role shows("show an address without a country", [](const Words&) {
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    return roster->formattedAddressFromDictionary(address({{"ZIP", "10115"}, {"City", "Berlin"}}))->string();
});

} // namespace

TEST(AddressTable, MayBeTheUsersOwnOrUseless)
{
    const auto formatted = [](const std::string& table) {
        return play("format by a table of the user's own", {table}, {{{"LANG", "de_DE.UTF-8"}}});
    };
    // Without a label format, name and company go on top; the last resort is not known here, so nothing is
    // stored.
    const auto own = formatted(ownTable("qq",
        "<key>FORMAT</key><string>\n\n  City\tStreet \n</string><key>City</key><string>Stead</string>"));
    EXPECT_EQ(own.answer, "us|Ana\nTown 1 Way|City=Stead ") << own.log;
    EXPECT_THAT(own.log, HasSubstr("called with unknown country code 'us'"));
    // An empty company in the first line: the second line takes its place.
    EXPECT_EQ(
        formatted(ownTable("qq", "<key>LABEL_FORMAT</key><string>Organization City\nStreet</string>")).answer,
        "us| Town1 Way|");
    const auto useless = formatted("no property list");
    EXPECT_EQ(useless.answer, "us|Ana\n|") << useless.log;
    EXPECT_THAT(useless.log, HasSubstr("no country is known"));
}

TEST(AddressTable, HasForEveryCountryATemplateThatNamesTheCountryAndTitlesForItsFields)
{
    const auto& countries = ZRRoster::addressFormats().asDictionary()->entries();
    EXPECT_GE(countries.size(), 252U);
    for (const auto& [code, format] : countries) {
        const auto lines = std::string(format["FORMAT"].asText());
        const auto label = std::string(format["LABEL_FORMAT"].asText());
        EXPECT_TRUE(lines.ends_with("\nCountry") || lines.starts_with("Country\n")) << code;
        EXPECT_THAT(label, testing::AllOf(HasSubstr("Name"), HasSubstr("Organization"))) << code;
        for (const char* key : {"Street", "City", "State", "ZIP", "Country"}) {
            EXPECT_EQ(format[key].isString(), lines.find(key) != std::string::npos) << code << " " << key;
            EXPECT_THAT(std::string(format[key].asText()), Not(testing::StartsWith("ADDRESS_"))) << code;
        }
    }
}

TEST(AddressTable, SpeaksTheUsersLanguage)
{
    EXPECT_EQ(play("tell titles", {}, {{{"LANG", "en_GB.UTF-8"}}}).answer,
        "ZIP Code|Postal Code|PIN Code|Prefecture|Post Town|Country|");
    EXPECT_EQ(play("tell titles", {}, {{{"LANG", "de_AT.UTF-8"}}}).answer,
        "ZIP-Code|Postleitzahl|PIN-Code|Präfektur|Postort|Land|");
}

TEST(AddressTable, IsAskedForTheUsersCountryWhereAnAddressNamesNone)
{
    const auto shown = [](const char* locale) {
        const Home home;
        const auto outcome = play("show an address without a country", {}, home.stage({{"LANG", locale}}));
        return visible(outcome.answer);
    };
    EXPECT_EQ(shown("de_DE.UTF-8"), "\n10115 Berlin\n");
    EXPECT_EQ(shown("en_GB.UTF-8"), "\nBerlin\n10115\n");
}

} // namespace test
