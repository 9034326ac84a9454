// What properties become that ask their surroundings, hold pictures, or fail.
#include "CardText.h"
#include "platform/run/Log.h"

#include <gtest/gtest.h>

#include <vector>

using namespace cardtext;

namespace {

TEST(Handlers, OfNameOrdersAndAddressesAskTheContext)
{
    struct LastNameFirst : VCardReaderContext {
        std::int64_t defaultNameOrdering() const override { return 16; }
        std::string defaultCountryCode() const override { return "jp"; }
    };
    const LastNameFirst context;
    EXPECT_EQ(read(card("X-ZROrder:LAST\n"), context), "ZRPersonFlags=0");
    EXPECT_EQ(read(card("X-ZROrder:FIRST\n"), context), "ZRPersonFlags=32");
    EXPECT_EQ(read(card("ADR:;;a\n"), context), "Address=[Work={CountryCode=jp, Street=a}]");
}

TEST(Handlers, OfPicturesAndTemporaryValues)
{
    struct WithPictures : VCardReaderContext {
        platform::Value builtInPicture(std::string_view name) const override
        {
            return name == "Parrot" ? platform::Value::data("TIFF") : platform::Value();
        }
    };
    const std::pair<std::string, std::string> cases[] = {
        {"PHOTO;BASE64:QUJD\n REVG\n", "ABCDEF"},
        {"PHOTO;ENCODING=b;TYPE=JPEG:QUJD\n", "ABC"},
        {"PHOTO;VALUE=uri:http://example.com/a.jpg\n", ""},
        {"PHOTO;BASE64:QUJD\nPHOTO:x\n", ""},
        {"X-ZRPhoto:Parrot\n", "TIFF"},
        {"X-ZRPhoto:Whale\n", ""},
    };
    for (const auto& [lines, image] : cases) {
        Setter setter;
        const WithPictures context;
        EXPECT_TRUE(readInto(setter, card(lines), context)) << lines;
        EXPECT_EQ(setter.image.asBytes(), image) << lines;
        EXPECT_EQ(setter.text(), "") << lines;
    }
    Setter setter;
    readInto(setter, card("X-ZRUID:1234:ZRPerson\n"));
    EXPECT_EQ(setter.temporary, "ZRTempVCardUIDKey=1234:ZRPerson");
}

// Without a person's name an organization makes a company of the card.
TEST(Handlers, OfAnOrganizationMakeACompanyOfANamelessCard)
{
    for (const auto& [name, expected] :
        {std::pair<std::optional<std::string>, const char*>{"Ana", "Organization=Acme\nZRPersonFlags=16"},
            {"", "Organization=Acme\nZRPersonFlags=17"},
            {std::nullopt, "Organization=Acme\nZRPersonFlags=17"}}) {
        Setter setter;
        setter.name = name;
        readInto(setter, card("ORG:Acme\nX-ZROrder:LAST\n"));
        EXPECT_EQ(setter.text(), expected);
    }
}

TEST(Handlers, ThatFailLogAndLoseTheirLine)
{
    platform::LogCapture log;
    EXPECT_EQ(
        read(card("NICKNAME:\nNOTE;CHARSET=X-NONE:abc\nN;CHARSET=X-NONE:a;b\nTITLE:x\n")), "JobTitle=x");
    EXPECT_EQ(read("BEGIN:VCARD\nVERSION;CHARSET=x:\xE9\nVERSION:\xE9\nTITLE:x\nEND:VCARD\n"), "JobTitle=x");
    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{"Malformed NICKNAME", "X-NONE is an invalid encoding",
            "X-NONE is an invalid encoding", "x is an invalid encoding", "Malformed VERSION",
            "Malformed VERSION"}));
}

TEST(Handlers, GiveEachEntryAnIdentifierAndTheFirstThePrimaryPlace)
{
    ZRVCardDictionaryValueSetter setter;
    readInto(setter, card("TEL:1\nTEL;TYPE=PREF:2\n"));
    const auto phones = setter.valueForProperty("Phone")["Phone"];
    const auto* entries = phones.as<ZRMultiValue>();
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries->primaryIdentifier(), entries->identifierAtIndex(0));
    EXPECT_NE(entries->identifierAtIndex(0), entries->identifierAtIndex(1));
}

} // namespace
