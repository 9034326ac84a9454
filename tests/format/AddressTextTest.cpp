// What stands in the text of an address, which stretch is which field, and how marks keep them in order.
#include "AddressWorld.h"

#include "format/ZRAddressFunctions.h"
#include "platform/text/Bidi.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The runs in one line: text, attribute, its value.
std::string textOfRuns(const platform::AttributedString& text)
{
    std::string runs;
    for (const auto& run : text.runs())
        runs += "[" + text.string().substr(run.start, run.length) + "|" + run.name + "|" + run.value + "]";
    return runs;
}

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
        {address({{"City", "الرياض"}, {"ZIP", "12643"}, {"CountryCode", "sa"}}), "\nالرياض\u200E 12643\n"},
        {Value(), "\n\u200E \u200E \n"},
        {Value(5), "\n\u200E \u200E \n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ZRCreateFormattedAddressFromDictionary(*roster, c.address), Value(c.text))
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

TEST_F(AddressTest, KeepsFieldsOfRightToLeftTextInTheOrderOfTheirCountry)
{
    const Value jerusalem = address({{"Street", "יפו 16"}, {"City", "ירושלים"}, {"ZIP", "9414219"},
        {"Country", "ישראל"}, {"CountryCode", "il"}});
    const std::string line = "ירושלים\u200E 9414219";
    EXPECT_EQ(roster->formattedAddressFromDictionary(jerusalem)->string(), "יפו 16\n" + line + "\nישראל");
    // On the screen the city stays left of its code, which it would not without the mark.
    const auto zip = line.find("9414219");
    EXPECT_THAT(platform::visualOrder("x" + line, std::vector<platform::TextRange>{{1, 14}, {zip + 1, 7}}),
        ElementsAre(0U, 1U));
}

} // namespace test
