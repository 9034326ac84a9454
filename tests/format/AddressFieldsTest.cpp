// Which fields a view shows for an address, in which order, and how an address is printed for machines.
#include "AddressWorld.h"

#include "format/AddressFieldLayout.h"
#include "format/Postnet.h"
#include "format/ZRComponentLayoutController.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <algorithm>
#include <array>

namespace test {

namespace {

/// The rows in one line: key, whether it has several lines (*) or is hidden (-), title and text.
std::string textOf(const std::vector<std::vector<AddressField>>& rows)
{
    std::string all;
    for (const auto& row : rows) {
        for (const auto& field : row)
            all += field.key + (field.isMultiLine ? "*" : "") + (field.isHidden ? "-" : "") + "="
                + field.title + ":" + field.text + "; ";
        all += "/ ";
    }
    return all;
}

const Role laysOut("lay out fields", [](const Words& words) {
    const OwnAddressTable table(words[0]);
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    return textOf(layoutFieldsForCountryCode(*roster, "us", Value(), FieldMode::edit));
});

} // namespace

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
    EXPECT_EQ(textOf(layoutFieldsForCountryCode(*roster, "US", home, FieldMode::edit)),
        "Street*=Street:1 Main St; / City=City:Austin; State=State:; ZIP=ZIP Code:; / Country=Country:; / ");
    EXPECT_EQ(textOf(layoutFieldsForCountryCode(*roster, "de", home, FieldMode::edit)),
        "Street*=Street:1 Main St; / ZIP=Postal Code:; City=City:Austin; / Country=Country:; / ");
    EXPECT_EQ(textOf(layoutFieldsForCountryCode(*roster, "", Value(), FieldMode::edit)),
        "Street*=Street:; / City=City:; State=State:; ZIP=ZIP Code:; / Country=Country:; / ");
    EXPECT_EQ(textOf(layoutFieldsForCountryCode(*roster, "us", home, FieldMode::show)),
        "PostalAddressValue=:1 Main St\nAustin\u200E \u200E \n; / ");
    EXPECT_EQ(textOf(layoutFieldsForCountryCode(*roster, "us", Value(), FieldMode::show)),
        "PostalAddressValue=:\n\u200E \u200E \n; / ")
        << "separators are text, so the field is not hidden";
}

TEST(AddressFields, StandInTheOrderInWhichTheirTitlesAreSeen)
{
    EXPECT_EQ(play("lay out fields", {"no table"}).answer, "");
    const auto shown = play("lay out fields",
        {ownTable("us",
            "<key>FORMAT</key><string>City State\nZIP Country</string><key>City</key><string>עיר</string>"
            "<key>State</key><string>מדינה</string><key>ZIP</key><string>Code</string>")});
    EXPECT_EQ(shown.answer, "State=מדינה:; City=עיר:; / ZIP=Code:; Country=:; / ") << shown.log;
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
