// Numbers that everybody in a country knows come out as people there write them, at home and from abroad.
#include "format/PhoneFormats.h"
#include "format/ZRPhoneFormatter.h"
#include "format/ZRPhoneNumberDisplay.h"
#include "platform/files/ZRUserDefaults.h"
#include "support/TextCases.h"

#include <gmock/gmock.h>

namespace {

using platform::Value;

/// What somebody types who does not care: digits, and the plus sign.
std::string bare(std::string text)
{
    std::erase_if(
        text, [](char character) { return character != '+' && (character < '0' || character > '9'); });
    return text;
}

struct Country {
    std::string code;
    std::vector<std::string> numbers;
};

/// "gb: 020 7219 3000, +44 20 7219 3000" in each line.
std::vector<Country> countriesIn(const char* file)
{
    std::vector<Country> countries;
    std::istringstream lines(test::contentsOf(file));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#'))
            continue;
        auto& [code, numbers] = countries.emplace_back();
        std::istringstream parts(line);
        std::getline(parts, code, ':');
        for (std::string number; std::getline(parts >> std::ws, number, ',');)
            numbers.push_back(number);
    }
    return countries;
}

platform::Ref<ZRPhoneFormatter> formatterOf(std::string_view country)
{
    auto formatter = platform::makeRef<ZRPhoneFormatter>();
    const auto lists = phoneFormatsOfCountry(country);
    for (const auto& format : lists.at(0))
        formatter->addFormat(format);
    return formatter;
}

TEST(PhoneNumbers, ComeOutAsNationalsWriteThemAndForeignOnesAreNotTornUp)
{
    const auto countries = countriesIn(PHONE_NUMBERS);
    EXPECT_GE(countries.size(), 37U);
    const auto countryCode = [](std::string_view number) { return number.substr(0, number.find(' ')); };
    for (const auto& [code, numbers] : countries) {
        SCOPED_TRACE(code);
        const auto formatter = formatterOf(code);
        for (const auto& number : numbers) {
            EXPECT_EQ(formatter->stringForObjectValue(bare(number)), number);
            EXPECT_EQ(formatter->stringForObjectValue(number + " ext. 12"), number + " ext. 12");
        }
        for (const auto& other : countries) {
            const auto& number = other.numbers.back();
            if (countryCode(number) != countryCode(numbers.back())) {
                EXPECT_EQ(formatter->stringForObjectValue(number), number);
            }
        }
    }
}

class PhoneNumberDisplay : public testing::Test {
protected:
    PhoneNumberDisplay() { forget(); }
    ~PhoneNumberDisplay() override { forget(); }

    static void forget()
    {
        set("-PhoneFormatter", {});
        set("-Enabled", {});
    }
    static void set(const std::string& key, const Value& value)
    {
        ZRUserDefaults::rosterPreferences()->setObject(value, ZRPhoneFormat + key);
    }
};

TEST_F(PhoneNumberDisplay, ShowsHomeAsAtHomeAndOthersAsOthersDo)
{
    const struct {
        const char* country;
        const char* stored;
        const char* shown;
    } cases[] = {{"us", "2024561414", "(202) 456-1414"}, {"us", "+12024561414", "+1 (202) 456-1414"},
        {"us", "+33140205050", "+33 1 40 20 50 50"}, {"us", "+33140205050 ext 7", "+33 1 40 20 50 50 ext 7"},
        {"us", "+358947664000", "+358 9 47664000"}, {"us", "+44 (0)2072193000", "+44 (0)20 7219 3000"},
        {"fr", "+12024561414", "+1 (202) 456-1414"}, {"fr", "0140205050", "01 40 20 50 50"},
        {"us", "0140205050", "0140205050"}, {"us", "+9990000000", "+9990000000"}, {"us", "+", "+"},
        {"us", "+3", "+3"}, {"us", "+33 1", "+33 1"}, {"us", "\xEF\xBC\x95 none", "\xEF\xBC\x95 none"},
        {"us", "ask Bo", "ask Bo"}, {"us", "", ""}, {"zz", "0140205050", "0140205050"},
        {"zz", "+33140205050", "+33 1 40 20 50 50"}};
    for (const auto& [country, stored, shown] : cases)
        EXPECT_EQ(ZRPhoneNumberDisplay(country).stringForNumber(stored), shown) << country << " " << stored;
    EXPECT_TRUE(ZRUserDefaults::rosterPreferences()->objectForKey("ZRPhoneFormat-PhoneFormatter").isAbsent())
        << "showing chooses nothing for the user";
}

TEST_F(PhoneNumberDisplay, PutsTheUsersOwnListFirst)
{
    set("-PhoneFormatter", Value::array({"###.###.####", "+33.#########"}));
    const ZRPhoneNumberDisplay own("us");
    EXPECT_EQ(own.stringForNumber("(202) 456-1414"), "202.456.1414");
    EXPECT_EQ(own.stringForNumber("+33 1 40 20 50 50"), "+33.140205050");
    EXPECT_EQ(own.stringForNumber("+12024561414"), "+1 (202) 456-1414") << "not the user's, so the country's";
    EXPECT_EQ(own.stringForNumber("+45333666"), "+45333666") << "a plus sign is never a user's digit";
    set("-Enabled", false);
    EXPECT_EQ(ZRPhoneNumberDisplay("us").stringForNumber("+33140205050"), "+33140205050");
}

} // namespace
