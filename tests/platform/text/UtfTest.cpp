// UTF-8 and UTF-16 are checked and converted.
#include "platform/text/Utf.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

struct Bytes {
    std::string_view bytes;
    bool isValid;
    std::string_view repaired;
};

constexpr std::string_view kLongASCII = "0123456789abcdef";

constexpr Bytes kBytes[] = {
    {"", true, ""},
    {"plain", true, "plain"},
    {"0123456789abcdefé", true, "0123456789abcdefé"},
    {"ä€😀", true, "ä€😀"},
    {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", true, "\xEF\xBF\xBF\xF4\x8F\xBF\xBF"},
    {"0123456\xFF", false, "0123456\uFFFD"},
    {"01234567\x80x", false, "01234567\uFFFDx"},
    {"\xC0\xAF", false, "\uFFFD\uFFFD"},
    {"\xE0\x80\x80", false, "\uFFFD\uFFFD\uFFFD"},
    {"\xED\xA0\x80", false, "\uFFFD\uFFFD\uFFFD"},
    {"\xF4\x90\x80\x80", false, "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"a\xE2\x82", false, "a\uFFFD"},
    {"\xF0\x9F\x98z", false, "\uFFFDz"},
};

TEST(Utf, TellsAndRepairsIllFormedBytes)
{
    for (const auto& [bytes, isValid, repaired] : kBytes) {
        EXPECT_EQ(isValidUTF8(bytes), isValid) << testing::PrintToString(bytes);
        EXPECT_EQ(repairedUTF8(bytes), repaired) << testing::PrintToString(bytes);
        EXPECT_EQ(fromUTF16(toUTF16(bytes)), repaired) << testing::PrintToString(bytes);
        EXPECT_EQ(utf16Length(bytes), toUTF16(bytes).size()) << testing::PrintToString(bytes);
    }
}

TEST(Utf, FindsAHighByteAtEveryPlace)
{
    for (std::size_t at = 0; at < kLongASCII.size(); ++at) {
        std::string text(kLongASCII);
        text[at] = '\x80';
        EXPECT_FALSE(isASCII(text)) << at;
        EXPECT_FALSE(isValidUTF8(text)) << at;
    }
    EXPECT_TRUE(isASCII(kLongASCII));
}

TEST(Utf, EveryCharacterSurvivesTheWayThere)
{
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character == 0xD800)
            character = 0xE000;
        std::string text = "x";
        appendUTF8(text, character);
        std::size_t at = 1;
        ASSERT_EQ(std::uint32_t{nextCharacter(text, at)}, std::uint32_t{character});
        ASSERT_EQ(startOfLastCharacter(text), 1u) << std::uint32_t{character};
        ASSERT_EQ(utf16Length(text), character > 0xFFFF ? 3u : 2u) << std::uint32_t{character};
        for (const auto order : {ByteOrder::little, ByteOrder::big})
            ASSERT_EQ(fromUTF16Bytes(toUTF16Bytes(text, order), order), text) << std::uint32_t{character};
    }
}

TEST(Utf, ReadsUTF16Strictly)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(fromUTF16Bytes("\xE9\x00\x3D\xD8\x00\xDE"sv, ByteOrder::little), "é😀");
    EXPECT_EQ(fromUTF16Bytes("\x00\xE9\xD8\x3D\xDE\x00"sv, ByteOrder::big), "é😀");
    for (const auto bad : {"\x00\xD8"sv, "\x00\xDC"sv, "\x00\xDC\x00\xD8"sv, "\x00\xD8\x41\x00"sv, "A"sv})
        EXPECT_FALSE(fromUTF16Bytes(bad, ByteOrder::little)) << testing::PrintToString(bad);
    EXPECT_EQ(fromUTF16(u"a\xD83Dz"), "a\uFFFDz");
}

struct Cut {
    std::string_view text;
    std::size_t start, length;
    std::string_view part;
};

TEST(Utf, CutsByUnits)
{
    const Cut cuts[] = {
        {"abcdef", 2, 3, "cde"},
        {"abcdef", 4, SIZE_MAX, "ef"},
        {"abc", 7, 1, ""},
        {"äöü", 1, 1, "ö"},
        {"a😀b", 1, 2, "😀"},
        {"a😀b", 3, 1, "b"},
        {"a😀b", 0, 2, "a"},
        {"a😀b", 2, 1, "😀"},
        {"😀😀", 2, SIZE_MAX, "😀"},
        {"", 0, 1, ""},
    };
    for (const auto& [text, start, length, part] : cuts)
        EXPECT_EQ(substringUTF16(text, start, length), part) << text << ' ' << start << ' ' << length;
}

} // namespace
} // namespace platform
