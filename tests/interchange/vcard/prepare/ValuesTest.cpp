// Values are decoded and escaped.
#include "interchange/vcard/prepare/Values.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

using namespace std::string_literals;

std::string canonical(std::string_view value, Shape shape, Escapes escapes)
{
    std::string out;
    appendValue(out, value, shape, escapes);
    return out;
}

TEST(Values, HaveTheFourEscapesAndNoOther)
{
    const struct {
        std::string value;
        Shape shape;
        Escapes escapes;
        std::string expected;
    } cases[] = {
        {"a;b\\;c,d\\,e", Shape::onePart, Escapes::rfc, "a\\;b\\;c,d\\,e"},
        {"a;b\\;c,d\\,e", Shape::fields, Escapes::rfc, "a;b\\;c,d\\,e"},
        {"a;b\\;c,d\\,e", Shape::wholeLine, Escapes::rfc, "a;b;c,d,e"},
        {"a;b\\;c,d", Shape::fields, Escapes::old, "a;b\\;c\\,d"},
        {"a;b,c", Shape::wholeLine, Escapes::old, "a;b,c"},
        // A capital letter would be read as that letter.
        {"a\\nb\\Nc", Shape::onePart, Escapes::rfc, "a\\nb\\nc"},
        {"a\\nb", Shape::onePart, Escapes::old, "a\\nb"},
        {"a\\nb", Shape::onePart, Escapes::oldEncoded, "a\\\\nb"},
        {"a\\\\nb", Shape::onePart, Escapes::rfc, "a\\\\nb"},
        {"a\\:b\\c\\", Shape::onePart, Escapes::rfc, "a:b\\\\c\\\\"},
        {"a\r\nb\rc\nd\0e"s, Shape::onePart, Escapes::rfc, "a\\nb\\nc\\nde"},
    };
    for (const auto& [value, shape, escapes, expected] : cases) {
        const auto once = canonical(value, shape, escapes);
        EXPECT_EQ(once, expected) << value;
        EXPECT_EQ(canonical(once, shape, Escapes::rfc), once) << value;
    }
}

TEST(Values, FieldsAreCountedPastEscapes)
{
    const struct {
        const char* canonical;
        std::size_t most, count, last, end;
    } cases[] = {{"", 2, 1, 0, 0}, {"a\\;b;c\\\\;", 9, 3, 9, 9}, {"a\\;b;c;d", 2, 2, 5, 6},
        {"a;b", 2, 2, 2, 3}, {"a\\", 1, 1, 0, 2}};
    for (const auto& [canonical, most, count, last, end] : cases) {
        const auto fields = firstFields(canonical, most);
        EXPECT_EQ(fields.count, count) << canonical;
        EXPECT_EQ(fields.last, last) << canonical;
        EXPECT_EQ(fields.end, end) << canonical;
    }
    EXPECT_TRUE(isEmptyValue("; ;\t", Shape::fields));
    EXPECT_FALSE(isEmptyValue(";", Shape::wholeLine));
}

TEST(Values, QuotedPrintableIsDecoded)
{
    const struct {
        const char *text, *bytes;
    } cases[] = {
        {"=C3=bc", "\xC3\xBC"},
        {"a=0D=0Ab", "a\r\nb"},
        {"1=3D1", "1=1"},
        // No digits behind it, or nothing at all.
        {"a=zz=4=", "a=zz=4"},
        // A ";" that was encoded is text; with its own escape it needs no second.
        {"a;b=3Bc", "a;b\\;c"},
        {"a\\=3Bb", "a\\;b"},
        {"a=5C=3Bb", "a\\;b"},
        {"a=5C=5C=3Bb", "a\\\\\\;b"},
    };
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(decodedQuotedPrintable(text), bytes) << text;
}

TEST(Values, Base64IsCleanedAndDecoded)
{
    const struct {
        const char *text, *clean, *bytes;
        bool sound;
    } cases[] = {
        {"QUJD", "QUJD", "ABC", true},
        {" QU\tJD RA==  ", "QUJDRA==", "ABCD", true},
        {"QUJDRA", "QUJDRA==", "ABCD", true},
        {"QUJD...", "QUJD", "ABC", false},
        {"QUJDR", "QUJD", "ABC", false},
        {"QQ==QUJD", "QQQUJD==", "A\x04\x14\x24", false},
        {"", "", "", true},
    };
    for (const auto& [text, clean, bytes, soundExpected] : cases) {
        std::string out;
        bool sound = true;
        appendBase64(out, text, sound);
        EXPECT_EQ(out, clean) << text;
        EXPECT_EQ(sound, soundExpected) << text;
        EXPECT_EQ(decodedBase64(out).substr(0, 4), bytes) << text;
    }
}

} // namespace
} // namespace vcard::prepare
