// What stands in the text of an address, which stretch is which field, and how marks keep them in order.
#include "AddressWorld.h"

#include "format/AddressFieldLayout.h"
#include "format/Postnet.h"
#include "format/ZRAddressFunctions.h"
#include "format/ZRComponentLayoutController.h"
#include "platform/text/Bidi.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <set>

namespace test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The order array in one line: key and title.
std::string textOfOrder(const Value& order)
{
    std::string text;
    for (const auto& field : order.asArray())
        text += std::string(field["zrProperty"].asText()) + "="
            + std::string(field["zrLocalizedProperty"].asText()) + " ";
    return text;
}

/// The runs in one line: text, attribute, its value.
std::string textOfRuns(const platform::AttributedString& text)
{
    std::string runs;
    for (const auto& run : text.runs())
        runs += "[" + text.string().substr(run.start, run.length) + "|" + run.name + "|" + run.value + "]";
    return runs;
}

const Role formatsByOwnTable("format by a table of the user's own", [](const Words& words) {
    const Home home;
    const auto folder = home.path() / "data/Roster";
    fs::create_directories(folder);
    std::ofstream(folder / "ZRAddressFormats.plist") << words[0];
    setenv("XDG_DATA_HOME", (home.path() / "data").c_str(), 1);
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

const Role shows("show an address abroad", [](const Words&) {
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    return roster->formattedAddressFromDictionary(address({{"City", "Wien"}, {"CountryCode", "at"}}))
        ->string();
});

} // namespace

TEST_F(AddressTest, PartsFieldsByAMarkAndABlankEvenWhereOneIsEmpty)
{
    const struct {
        Value address;
        const char* text;
    } cases[] = {
        {address({{"Street", "1 Main St"}, {"City", "Austin"}, {"State", "TX"}, {"ZIP", "78701"},
             {"Country", "USA"}, {"CountryCode", "us"}}),
            "1 Main St\nAustin\u200E TX\u200E 78701\nUSA"},
        {address({{"Street", "1 Main St"}, {"State", "TX"}, {"ZIP", "78701"}, {"CountryCode", "US"}}),
            "1 Main St\n\u200E TX\u200E 78701\n"},
        // Without a known code it is written as at home.
        {address({{"City", "Austin"}, {"ZIP", "78701"}}), "\nAustin\u200E \u200E 78701\n"},
        {address({{"City", "Austin"}, {"ZIP", "78701"}, {"CountryCode", "xx"}}),
            "\nAustin\u200E \u200E 78701\n"},
        {Value::dictionary({{"City", "Austin"}, {"State", platform::NullMarker()},
             {"CountryCode", platform::NullMarker()}}),
            "\nAustin\u200E \u200E \n"},
        {address({{"ZIP", "1010"}, {"City", "Wien"}, {"Street", "Ring 1\nTop 4"}, {"CountryCode", "at"}}),
            "Ring 1\nTop 4\n1010\u200E Wien\n"},
        {Value(), "\n\u200E \u200E \n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(roster->formattedAddressFromDictionary(c.address)->string(), c.text)
            << c.address.description();
}

TEST_F(AddressTest, EndsWithoutALineFeedOfItsOwnInEveryCountry)
{
    const Value all = address({{"Street", "S"}, {"City", "C"}, {"State", "T"}, {"ZIP", "Z"}, {"Country", "L"},
        {"Name", "N"}, {"Organization", "O"}});
    for (const auto& [code, format] : ZRRoster::addressFormats().asDictionary()->entries()) {
        auto entries = all.asDictionary()->entries();
        entries.emplace_back("CountryCode", Value(code));
        const Value address = Value::dictionary(entries);
        for (const bool isLabel : {false, true}) {
            const auto text = roster->_formattedAddressFromDictionary(address, isLabel, isLabel)->string();
            EXPECT_THAT(text, Not(testing::EndsWith("\n"))) << code;
            EXPECT_THAT(text, Not(HasSubstr("\n\n"))) << code;
        }
    }
}

TEST_F(AddressTest, CarriesItsFieldsAsAttributesAndTheirOrder)
{
    const Value home = address({{"Street", "Ring 1"}, {"City", "Wien"}, {"CountryCode", "at"},
        {"Name", "Ana"}, {"Organization", "Acme"}});
    Value order;
    const auto text = roster->_formattedAddressFromDictionary(home, false, false, &order);
    EXPECT_EQ(textOfRuns(*text), "[Ring 1|Street|Street][Wien|City|City]");
    EXPECT_EQ(textOfOrder(order), "Street=Street ZIP=Postal Code City=City Country=Country ");
    // Name and company have no title in any country: the attribute then holds the key.
    EXPECT_EQ(textOfRuns(*roster->_formattedAddressFromDictionary(home, true, false)),
        "[Acme|Organization|Organization][Ana|Name|Name][Ring 1|Street|Street][Wien|City|City]");
    EXPECT_EQ(textOfRuns(*roster->_formattedAddressFromDictionary(home, false, true)),
        "[Acme\n|Organization|Organization][Ring 1|Street|Street][Wien|City|City]");
}

TEST_F(AddressTest, PutsNameAndCompanyWhereALabelHasThem)
{
    const struct {
        Value address;
        bool name, company;
        const char* text;
    } cases[] = {
        {address({{"City", "Oslo"}, {"CountryCode", "no"}, {"Name", "Ana"}, {"Organization", "Acme"}}), true,
            true, "Ana\nAcme\n\n Oslo\n"},
        // An empty company gives its line to the next; an empty name leaves a line.
        {address({{"Street", "S 1"}, {"City", "Oslo"}, {"CountryCode", "no"}, {"Name", "Ana"}}), true, true,
            "Ana\nS 1\n Oslo\n"},
        {address({{"City", "Oslo"}, {"CountryCode", "no"}, {"Organization", "Acme"}}), true, false,
            "\nAcme\n\n Oslo\n"},
        {address({{"City", "Wien"}, {"CountryCode", "at"}, {"Name", "Ana"}}), true, false, "Ana\n\n Wien\n"},
        {address({{"City", "Wien"}, {"CountryCode", "at"}, {"Organization", "Acme"}}), false, true,
            "Acme\n\n Wien\n"},
        {address({{"City", "Wien"}, {"CountryCode", "at"}}), false, true, "\n Wien\n"},
        {address({{"ZIP", "104-8798"}, {"CountryCode", "jp"}, {"Name", "山田"}, {"Organization", "会社"}}),
            true, true, "\n104-8798\n \n\n会社\n山田"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(
            visible(roster->_formattedAddressFromDictionary(c.address, c.name, c.company)->string()), c.text)
            << c.address.description();
}

TEST(AddressTable, MayBeTheUsersOwnOrUseless)
{
    const auto formatted = [](const std::string& table) {
        return play("format by a table of the user's own", {table}, {{{"LANG", "de_DE.UTF-8"}}});
    };
    const auto list = [](const std::string& entries) {
        return "<plist version=\"1.0\"><dict><key>qq</key><dict>" + entries + "</dict></dict></plist>";
    };
    // Without a label format, name and company go on top; the last resort is not known here, so nothing is
    // stored.
    const auto own = formatted(
        list("<key>FORMAT</key><string>\n\n  City\tStreet \n</string><key>City</key><string>Stead</string>"));
    EXPECT_EQ(own.answer, "us|Ana\nTown 1 Way|City=Stead ") << own.log;
    EXPECT_THAT(own.log, HasSubstr("called with unknown country code 'us'"));
    // An empty company in the first line: the second line takes its place.
    EXPECT_EQ(formatted(list("<key>LABEL_FORMAT</key><string>Organization City\nStreet</string>")).answer,
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
        const auto template_ = std::string(format["FORMAT"].asText());
        const auto label = std::string(format["LABEL_FORMAT"].asText());
        EXPECT_TRUE(template_.ends_with("\nCountry") || template_.starts_with("Country\n")) << code;
        EXPECT_THAT(label, testing::AllOf(HasSubstr("Name"), HasSubstr("Organization"))) << code;
        for (const char* key : {"Street", "City", "State", "ZIP", "Country"}) {
            EXPECT_EQ(format[key].isString(), template_.find(key) != std::string::npos) << code << " " << key;
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

TEST(AddressTable, WritesAsAtHomeByTheUsersCountry)
{
    EXPECT_EQ(visible(play("show an address abroad", {}, {{{"LANG", "de_DE.UTF-8"}}}).answer), "\n Wien\n");
}

TEST_F(AddressTest, KeepsFieldsOfRightToLeftTextInTheOrderOfTheirCountry)
{
    const Value jerusalem = address({{"Street", "יפו 16"}, {"City", "ירושלים"}, {"ZIP", "9414219"},
        {"Country", "ישראל"}, {"CountryCode", "il"}});
    const auto text = roster->formattedAddressFromDictionary(jerusalem)->string();
    EXPECT_EQ(text, "יפו 16\nירושלים\u200E 9414219\nישראל");
    // On the screen the city stays left of its code, which it would not without the mark.
    const std::string line = "ירושלים\u200E 9414219";
    const auto zip = line.find("9414219");
    EXPECT_THAT(platform::visualOrder("x" + line, std::vector<platform::TextRange>{{1, 14}, {zip + 1, 7}}),
        ElementsAre(0U, 1U));
    EXPECT_EQ(visible(roster
                          ->formattedAddressFromDictionary(
                              address({{"City", "الرياض"}, {"ZIP", "12643"}, {"CountryCode", "sa"}}))
                          ->string()),
        "\nالرياض 12643\n");
}

TEST_F(AddressTest, FailuresOfThePlainFunctionsAreAbsent)
{
    EXPECT_EQ(ZRCopyDefaultCountryCode(*roster), Value("us"));
    EXPECT_EQ(ZRCreateFormattedAddressFromDictionary(*roster, Value(5)), Value("\n\u200E \u200E \n"));
}

TEST(ComponentLayout, FollowsWhatIsSeenFromTheLeft)
{
    const struct {
        std::vector<std::string> titles;
        std::vector<std::size_t> order;
    } cases[] = {
        {{}, {}},
        {{"City", "State", "ZIP"}, {0, 1, 2}},
        {{"עיר", "מדינה", "מיקוד"}, {2, 1, 0}},
        {{"عنوان", "City"}, {1, 0}},
        {{"", "", "é"}, {0, 1, 2}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(layoutOrderOfComponentsJoinedByString(c.titles, " "), c.order)
            << testing::PrintToString(c.titles);
}

TEST_F(AddressTest, IsOneFieldToReadAndManyToEdit)
{
    const Value home = address({{"Street", "1 Main St"}, {"City", "Austin"}, {"CountryCode", "us"}});
    const auto text = [](const std::vector<std::vector<AddressField>>& rows) {
        std::string all;
        for (const auto& row : rows) {
            for (const auto& field : row)
                all += field.key + (field.isMultiLine ? "*" : "") + (field.isHidden ? "-" : "") + "="
                    + field.title + ":" + field.text + "; ";
            all += "/ ";
        }
        return all;
    };
    EXPECT_EQ(text(layoutFieldsForCountryCode(*roster, "US", home, FieldMode::edit)),
        "Street*=Street:1 Main St; / City=City:Austin; State=State:; ZIP=ZIP Code:; / Country=Country:; / ");
    EXPECT_EQ(text(layoutFieldsForCountryCode(*roster, "de", home, FieldMode::edit)),
        "Street*=Street:1 Main St; / ZIP=Postal Code:; City=City:Austin; / Country=Country:; / ");
    EXPECT_EQ(text(layoutFieldsForCountryCode(*roster, "", Value(), FieldMode::edit)),
        "Street*=Street:; / City=City:; State=State:; ZIP=ZIP Code:; / Country=Country:; / ");
    EXPECT_EQ(text(layoutFieldsForCountryCode(*roster, "us", home, FieldMode::show)),
        "PostalAddressValue=:1 Main St\nAustin\u200E \u200E \n; / ");
}

TEST(Postnet, HasTwoLongBarsADigitEachInItsOwnPlaces)
{
    std::set<std::string_view> codes;
    for (char digit = '0'; digit <= '9'; ++digit) {
        const auto bits = BitsForDigit(digit);
        ASSERT_TRUE(bits) << digit;
        EXPECT_EQ(std::ranges::count(*bits, '1'), 2) << digit;
        // The bars weigh 7, 4, 2, 1 and nothing; eleven stands for nought.
        int weight = 0;
        for (std::size_t bar = 0; bar < bits->size(); ++bar)
            weight += (*bits)[bar] == '1' ? std::array{7, 4, 2, 1, 0}[bar] : 0;
        EXPECT_EQ(weight % 11, digit - '0') << digit;
    }
    for (const char other : {'/', ':', 'a', ' ', '\0'})
        EXPECT_EQ(BitsForDigit(other), std::nullopt) << other;
}

TEST(Postnet, FramesTwelveDigitsInTheBarcode)
{
    const std::string barcode = ZROSOwnedObject::barcodeXML();
    const auto count = [&](const std::string& bar) {
        int found = 0;
        for (auto at = barcode.find(bar); at != std::string::npos; at = barcode.find(bar, at + 1))
            ++found;
        return found;
    };
    EXPECT_TRUE(barcode.starts_with("<barcode><long/>") && barcode.ends_with("<long/></barcode>"));
    EXPECT_EQ(count("<long/>"), 2 + 12 * 2);
    EXPECT_EQ(count("<short/>"), 12 * 3);
}

TEST_F(AddressTest, IsWrittenAsXmlWithABarcode)
{
    const auto part = roster->managedObjectContext()->insertObjectOfEntity("ZROSPostalAddress");
    part->setValueForKey("city", Value("R & <B>"));
    part->setValueForKey("street", Value("a\nb\x01"));
    EXPECT_EQ(dynamic_cast<ZROSOwnedObject&>(*part).XMLRepresentation(),
        "<ZROSPostalAddress><street>a\nb</street><city>R &amp; &lt;B&gt;</city>"
            + ZROSOwnedObject::barcodeXML() + "</ZROSPostalAddress>");
}

} // namespace test
