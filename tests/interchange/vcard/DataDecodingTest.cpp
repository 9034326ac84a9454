// How Base64 and UTF-7 are decoded, and how UTF-16 without a mark is recognised.
#include "interchange/vcard/DataDecoding.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <utility>

namespace {

TEST(Base64Decoding, WorksByLinesAndKeepsWhatIsNone)
{
    using namespace std::string_literals;
    const std::pair<std::string, std::string> cases[] = {
        {"QUJD", "ABC"},
        {"QUI=", "AB"},
        {"QQ==", "A"},
        {"QUI", "AB"},
        {"QQ", "A"},
        {"Q", ""},
        {"QUJD\nREVG\r\nR0hJ\rSg==", "ABCDEFGHIJ"},
        {"QUJD \t\n", "ABC"},
        {"", ""},
        {"\r\n\n", ""},
        // Groups do not reach over the end of a line.
        {"QUJDR\nEVG", "ABC\x11\x51"s},
        {"+/+/", "\xFB\xFF\xBF"},
        // A line that is no Base64 comes out as it stands, with its end.
        {"QUJD\nnot here!\r\nREVG", "ABCnot here!\r\nDEF"},
        {"QQ===\n", "QQ===\n"},
        {"Q=Q\n", "Q=Q\n"},
        {" QUJD", " QUJD"},
        {"QUJD x\n", "QUJD x\n"},
        // The eighth bit does not count.
        {"\xD1UJD\x8AREVG", "ABCDEF"},
        {"\0QUJD"s, "\0QUJD"s},
    };
    for (const auto& [text, data] : cases)
        EXPECT_EQ(zrDecodeBase64(text), data) << testing::PrintToString(text);
}

TEST(Base64Decoding, GivesBackEveryByte)
{
    std::string text, data;
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (unsigned group = 0; group < 1u << 16; group += 37) {
        const unsigned bits = group << 8 | (group & 0xFF);
        for (int place = 3; place >= 0; --place)
            text += digits[bits >> (6 * place) & 63];
        for (int byte = 2; byte >= 0; --byte)
            data += static_cast<char>(bits >> (8 * byte));
    }
    EXPECT_EQ(zrDecodeBase64(text), data);
}

TEST(UTF7Decoding, TakesStretchesAsTheyCome)
{
    EXPECT_EQ(zrDecodedUTF7(""), std::nullopt);
    EXPECT_EQ(zrDecodedUTF7("Hi Mom"), "Hi Mom");
    EXPECT_EQ(zrDecodedUTF7("a-b"), "a-b") << "outside a stretch a dash is a dash";
    EXPECT_EQ(zrDecodedUTF7("a+-b"), "ab") << "an empty stretch is nothing";
    EXPECT_EQ(zrDecodedUTF7("a+AGE.b"), zrDecodedUTF7("a+AGE-.b")) << "a dash that ends a stretch goes";
    EXPECT_EQ(zrDecodedUTF7("a+AOk"), "a") << "a stretch without an end is lost";
    // The bytes 00 E9 as they come are U+E900 on a little-endian machine.
    constexpr bool little = std::endian::native == std::endian::little;
    EXPECT_EQ(zrDecodedUTF7("a+AOk-b"), little ? "a\uE900b" : "aéb");
    EXPECT_EQ(zrDecodedUTF7("a+AA-b"), std::nullopt) << "an odd number of bytes";
}

TEST(UTF16Recognition, CountsZerosAtEvenPlaces)
{
    using namespace std::string_literals;
    EXPECT_TRUE(zrIsUTF16EntourageVCard("\0B\0E\0G\0I\0N"s));
    EXPECT_FALSE(zrIsUTF16EntourageVCard("B\0E\0G\0I\0N\0"s));
    EXPECT_FALSE(zrIsUTF16EntourageVCard("\0B\0E\0G\0IxN"s)) << "exactly 80 % are not enough";
    EXPECT_FALSE(zrIsUTF16EntourageVCard(""));
    EXPECT_TRUE(zrIsUTF16EntourageVCard(std::string(22, '\0') + "xxxx")) << "only the first 22 bytes count";
}

} // namespace
