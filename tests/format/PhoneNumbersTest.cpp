// Numbers that everybody in a country knows come out as people there write them, at home and from abroad.
#include "format/PhoneFormats.h"
#include "format/ZRPhoneFormatter.h"
#include "format/ZRPhoneNumberDisplay.h"
#include "platform/files/ZRUserDefaults.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using platform::Value;

/// What somebody types who does not care: digits, and the plus sign.
std::string bare(std::string text)
{
    std::erase_if(
        text, [](char character) { return character != '+' && (character < '0' || character > '9'); });
    return text;
}

// Town halls, parliaments, museums and railways.
struct Country {
    const char* code;
    std::vector<const char*> numbers;
};

const Country countries[] = {
    {"ar", {"011 4323-9400", "+54 11 4323-9400"}},
    {"at", {"01 525240", "0662 80720", "0316 872700", "+43 662 80720"}},
    {"au", {"(02) 9265 9333", "13 15 00", "1300 651 301", "+61 2 9265 9333"}},
    {"be", {"02 279 22 11", "070 23 20 00", "+32 2 279 22 11"}},
    {"br", {"(11) 3149-5959", "(21) 2332-6000", "+55 11 3149-5959"}},
    {"ca", {"(416) 392-2489", "+1 (416) 392-2489"}},
    {"ch", {"031 321 61 11", "044 412 11 11", "+41 31 321 61 11"}},
    {"cn", {"010 8500 7938", "021 6372 3500", "+86 10 8500 7938"}},
    {"cz", {"221 111 122", "236 001 111", "+420 236 001 111"}},
    {"de",
        {"030 25002333", "069 86799799", "089 20204000", "0221 346430", "+49 30 25002333", "+49 221 346430"}},
    {"dk", {"70 13 14 15", "33 66 33 66", "+45 33 66 33 66"}},
    {"es", {"912 32 03 20", "913 30 28 00", "900 878 333", "+34 913 30 28 00"}},
    {"fi", {"09 47664000", "+358 9 47664000"}},
    {"fr",
        {"01 40 20 50 50", "01 42 92 81 00", "0 800 10 12 34", "+33 1 40 20 50 50", "+33 (0)1 40 20 50 50"}},
    {"gb",
        {"020 7219 3000", "0161 234 5000", "01223 457000", "0345 748 4950", "+44 20 7219 3000",
            "+44 (0)20 7219 3000"}},
    {"gr", {"210 900 0900", "2821 341600", "+30 210 900 0900"}},
    {"hk", {"2881 8888", "+852 2881 8888"}},
    {"hu", {"(06 1) 325 5255", "+36 1 325 5255"}},
    {"ie", {"(01) 222 2222", "+353 1 222 2222"}},
    {"il", {"02-629-7777", "+972 2-629-7777"}},
    {"in", {"011 2303 4567", "022 2262 0251", "+91 22 2262 0251"}},
    {"it", {"06 6988 3145", "055 294883", "+39 06 6988 3145"}},
    {"jp",
        {"03-5321-1111", "06-6208-8181", "011-211-2111", "075-222-3111", "050-2016-1603", "+81 3-5321-1111"}},
    {"kr", {"1544-7788", "02-2077-9000", "+82 2-2077-9000"}},
    {"mx", {"55 1000 5622", "+52 55 1000 5622"}},
    {"nl", {"020 674 7000", "030 751 5155", "+31 20 674 7000"}},
    {"no", {"61 05 10 00", "21 80 21 80", "+47 21 80 21 80"}},
    {"nz", {"09 301 0101", "04 381 7000", "+64 9 301 0101"}},
    {"pl", {"22 391 97 57", "12 616 55 55", "+48 22 391 97 57"}},
    {"pt", {"21 362 0034", "808 109 110", "+351 21 362 0034"}},
    {"ro", {"021 305 5500", "+40 21 305 5500"}},
    {"ru", {"(495) 777-77-77", "8 (800) 775-00-00", "+7 495 777-77-77"}},
    {"se", {"0771-75 75 75", "08-508 005 08", "+46 8 508 005 08"}},
    {"sg", {"1800 336 8900", "6332 8845", "+65 6332 8845"}},
    {"tr", {"444 8 233", "(0212) 455 13 00", "+90 212 455 13 00"}},
    {"us", {"(202) 456-1414", "1 (800) 872-7245", "456-1414", "+1 (202) 456-1414"}},
    {"za", {"021 400 1111", "0860 103 089", "+27 21 400 1111"}},
};

platform::Ref<ZRPhoneFormatter> formatterOf(std::string_view country)
{
    auto formatter = platform::makeRef<ZRPhoneFormatter>();
    const auto lists = phoneFormatsOfCountry(country);
    for (const auto& format : lists.at(0))
        formatter->addFormat(format);
    return formatter;
}

TEST(PhoneNumbers, ComeOutAsNationalsWriteThem)
{
    for (const auto& [code, numbers] : countries) {
        const auto formatter = formatterOf(code);
        for (const char* number : numbers) {
            EXPECT_EQ(formatter->stringForObjectValue(bare(number)), number) << code;
            EXPECT_EQ(formatter->stringForObjectValue(number + std::string(" ext. 12")),
                number + std::string(" ext. 12"));
        }
    }
}

TEST(PhoneNumbers, OfOtherCountriesAreNotTornUp)
{
    const auto countryCode = [](std::string_view number) { return number.substr(0, number.find(' ')); };
    for (const auto& [code, numbers] : countries) {
        const auto formatter = formatterOf(code);
        for (const auto& other : countries) {
            const char* number = other.numbers.back();
            if (countryCode(number) != countryCode(numbers.back())) {
                EXPECT_EQ(formatter->stringForObjectValue(number), number) << code;
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
