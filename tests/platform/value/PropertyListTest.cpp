// What a property list is read as and written as.
#include "platform/value/PropertyList.h"

#include "RandomValues.h"

#include <gmock/gmock.h>

#include <limits>

namespace platform {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using namespace std::string_literals;

constexpr PropertyListFormat kBothFormats[] = {PropertyListFormat::binary, PropertyListFormat::xml};

std::string inXML(std::string_view content)
{
    return fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">{}</plist>", content);
}

std::string answerTo(std::string_view bytes)
{
    const auto value = decodePropertyList(bytes);
    return value ? spelled(*value) : "refused: " + value.error().text;
}

TEST(PropertyListXML, IsReadAsItsElementsSay)
{
    const struct {
        const char* content;
        Value expected;
    } cases[] = {
        {"<integer>42</integer>", 42},
        {"<integer>\n -9223372036854775808 </integer>", INT64_MIN},
        {"<integer>18446744073709551615</integer>", UINT64_MAX},
        {"<integer>0x1F</integer>", 31},
        {"<integer>-0x10</integer>", -16},
        {"<integer>+7</integer>", 7},
        {"<real>1</real>", 1.0},
        {"<real>+1.5e3</real>", 1500.0},
        {"<real>-inf</real>", -std::numeric_limits<double>::infinity()},
        {"<true/>", true},
        {"<false> </false>", false},
        {"<string/>", ""},
        {"<string> a&amp;b &#x1F600;&#13;</string>", " a&b \U0001F600\r"},
        {"<string><![CDATA[<b>&amp;]]>c<!-- no -->d</string>", "<b>&amp;cd"},
        {"<data>\n\tAQ\n\tID\n</data>", Value::data("\1\2\3")},
        {"<data>AQI=</data>", Value::data("\1\2")},
        {"<data>AQI</data>", Value::data("\1\2")},
        {"<data></data>", Value::data("")},
        {"<date>2001-01-01T00:00:00Z</date>", Date{978307200}},
        {"<date>1920-02-29T12:00:00Z</date>", Date{-1572782400}},
        {"<date>1604-02-29T23:59:59Z</date>", Date{-11544681601}},
        {"<date>2150-12-31T12:00:00Z</date>", Date{5711774400}},
        {"<array/>", Value::array({})},
        {"<array> <true/><!-- x --><array><true/></array></array>",
            Value::array({true, Value::array({true})})},
        {"<dict><key>b</key><true/><key>a</key><dict/><key>b</key><false/></dict>",
            Value::dictionary({{"a", Value::dictionary({})}, {"b", false}})},
    };
    for (const auto& [content, expected] : cases)
        EXPECT_EQ(answerTo(inXML(content)), spelled(expected)) << content;
}

TEST(PropertyListXML, IsReadInAnyEncodingThatItNames)
{
    const std::string latin =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>\xE9</string></plist>";
    const std::string plain = "<plist><string>\xC3\xA9</string></plist>";
    std::string wide = "\xFE\xFF";
    for (const char letter : "<plist><string>\xE9</string></plist>"s)
        wide += {'\0', letter};
    const std::string typed = "<!DOCTYPE plist SYSTEM \"PropertyList-1.0.dtd\">" + plain;
    for (const auto& bytes : {latin, plain, "\xEF\xBB\xBF" + plain, wide, typed})
        EXPECT_EQ(answerTo(bytes), spelled("é")) << bytes;
}

TEST(PropertyListXML, IsRefusedWithItsLine)
{
    const struct {
        const char* content;
        const char* reason;
    } cases[] = {
        {"", "empty"},
        {"<integer></integer>", "<integer> holds no such value"},
        {"<integer>1.5</integer>", "<integer> holds no such value: \"1.5\""},
        {"<integer>18446744073709551616</integer>", "<integer> holds"},
        {"<integer>-9223372036854775809</integer>", "<integer> holds"},
        {"<integer>--1</integer>", "<integer> holds"},
        {"<integer>-+1</integer>", "<integer> holds"},
        {"<real>1.5x</real>", "<real> holds"},
        {"<true>yes</true>", "<true> holds"},
        {"<data>A</data>", "<data> holds"},
        {"<data>AQ=I</data>", "<data> holds"},
        {"<data>A?ID</data>", "<data> holds"},
        {"<date>2001-02-29T00:00:00Z</date>", "<date> holds"},
        {"<date>2001-01-01T24:00:00Z</date>", "<date> holds"},
        {"<date>2001-01-01</date>", "<date> holds"},
        {"<dict><key>a</key></dict>", "a key without a value"},
        {"<dict><key>a</key><key>b</key></dict>", "a key without a value"},
        {"<dict><true/></dict>", "a value without a key"},
        {"<array><key>a</key></array>", "a key outside a dictionary"},
        {"<array>text</array>", "text between the elements"},
        {"<string><true/></string>", "<true> within <string>"},
        {"<true/><true/>", "a second value"},
        {"<plist><true/></plist>", "<plist> within <plist>"},
        {"<set><true/></set>", "unknown element <set>"},
        {"<array>", "mismatched tag"},
        {"<string>&nbsp;</string>", "undefined entity"},
        {"<string>\xE9</string>", "not well-formed"},
    };
    for (const auto& [content, reason] : cases)
        EXPECT_THAT(answerTo(inXML(content)), AllOf(StartsWith("refused: "), HasSubstr(reason))) << content;
    EXPECT_THAT(answerTo("<plist>\n<array>\n\n <real/></array></plist>"), HasSubstr("line 4, column 9: "));
}

// An entity costs nothing to write and everything to unfold; what is declared is not even looked at.
TEST(PropertyListXML, IsRefusedWithEntitiesOrAnotherType)
{
    const std::string content = "<plist><string>&a;</string></plist>";
    for (const auto& head : {"<!DOCTYPE plist [<!ENTITY a \"aaaa\">]>"s, "<!DOCTYPE plist []>"s,
             "<!DOCTYPE plist SYSTEM \"x\" [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"s,
             "<!DOCTYPE plist SYSTEM \"x\">"s, "<!DOCTYPE html>"s}) {
        const auto value = decodePropertyList(head + content);
        ASSERT_FALSE(value) << head;
        EXPECT_EQ(value.error().code, static_cast<long>(PropertyListFault::unsupported)) << head;
    }
}

// A table of a hundred thousand people says "First" once.
TEST(PropertyListBinary, WritesWhatIsEqualOnce)
{
    std::vector<Value> elements;
    for (int at = 0; at < 1000; ++at)
        elements.push_back(Value::dictionary({{"a long enough key", "a long enough value"}, {"n", 1e9}}));
    const auto bytes = encodePropertyList(Value::array(elements), PropertyListFormat::binary);
    ASSERT_TRUE(bytes);
    EXPECT_LT(bytes->size(), 1000 * (5 * 2 + 4 + 2));
    EXPECT_EQ(*decodePropertyList(*bytes), Value::array(elements));
}

TEST(PropertyListBinary, KeepsApartWhatIsEqualAndNotTheSame)
{
    const auto value = Value::array({1, 1.0, true, 0.0, -0.0, Date{978307200}, "a", Value::data("a"),
        INT64_MIN, std::uint64_t(1) << 63, std::numeric_limits<double>::quiet_NaN()});
    for (const auto format : kBothFormats)
        EXPECT_EQ(answerTo(*encodePropertyList(value, format)), spelled(value));
}

TEST(PropertyList, ComesBackAsItWas)
{
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        const Value value = RandomValues(seed).next(5);
        for (const auto format : kBothFormats) {
            const auto bytes = encodePropertyList(value, format);
            ASSERT_TRUE(bytes) << seed << ": " << bytes.error().text;
            ASSERT_EQ(answerTo(*bytes), spelled(value)) << seed;
            ASSERT_EQ(propertyListFormatOf(*bytes), format);
        }
    }
}

TEST(PropertyList, RoundsDatesInXMLDownToTheSecond)
{
    const struct {
        double seconds, expected;
    } cases[] = {{0.75, 0}, {-0.25, -1}, {-11539324800.5, -11539324801}};
    for (const auto& [seconds, expected] : cases) {
        EXPECT_EQ(
            *decodePropertyList(*encodePropertyList(Date{seconds}, PropertyListFormat::xml)), Date{expected});
        EXPECT_EQ(*decodePropertyList(*encodePropertyList(Date{seconds}, PropertyListFormat::binary)),
            Date{seconds});
    }
}

TEST(PropertyList, RefusesWhatItCannotHoldAndSaysWhere)
{
    class Thing : public Object { };
    const double never = std::numeric_limits<double>::quiet_NaN();
    const struct {
        Value value;
        const char* reason;
        bool inBinary;
    } cases[] = {
        {Value(), "absent", false},
        {Value::dictionary({{"Email", Value::array({1, NullMarker{}})}}),
            "Email[1]: a property list holds no null", false},
        {Value::array({Value::array({makeRef<Thing>()})}), "[0][0]: a property list holds no objects", false},
        {Value::array({Value()}), "[0]: a property list holds no absent", false},
        {Value::dictionary({{"a", Value::dictionary({{"b", "\xE9"}})}}), "a.b: the text is not UTF-8", false},
        {Value::dictionary({{"\xED\xA0\x80", 1}}), "the key is not UTF-8", false},
        {Date{never}, "not finite", false},
        {"a\x01", "U+0001", true},
        {"\uFFFE", "U+FFFE", true},
        {Value::dictionary({{"\x0B", 1}}), "U+000B", true},
        {Date{253402300800}, "years 1 to 9999", true},
        {Date{-62135596801}, "years 1 to 9999", true},
    };
    for (const auto& [value, reason, inBinary] : cases)
        for (const auto format : kBothFormats) {
            const auto bytes = encodePropertyList(value, format);
            if (inBinary && format == PropertyListFormat::binary) {
                ASSERT_TRUE(bytes) << reason;
                EXPECT_EQ(answerTo(*bytes), spelled(value));
                continue;
            }
            ASSERT_FALSE(bytes) << reason;
            EXPECT_THAT(bytes.error().text, HasSubstr(reason));
            EXPECT_EQ(bytes.error().code, static_cast<long>(PropertyListFault::notEncodable)) << reason;
        }
}

TEST(PropertyList, RefusesTextThatOnlyLooksLikeUTF8)
{
    for (const char* text : {"\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xEF\xBF",
             "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "long enough ASCII first \xFF"})
        EXPECT_FALSE(encodePropertyList(text, PropertyListFormat::binary)) << testing::PrintToString(text);
}

TEST(PropertyList, TellsItsFormByItsFirstBytes)
{
    EXPECT_EQ(propertyListFormatOf("bplist99"), PropertyListFormat::binary);
    EXPECT_EQ(propertyListFormatOf(" \n<"), PropertyListFormat::xml);
    for (const char* bytes : {"", " ", "{ a = 1; }", "bplis", "BEGIN:VCARD"})
        EXPECT_EQ(propertyListFormatOf(bytes), std::nullopt) << bytes;
}

} // namespace
} // namespace platform
