// Encodings convert strictly, both ways.
#include "platform/text/Encoding.h"

#include "Samples.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <set>

namespace platform {
namespace {

using namespace std::string_view_literals;
using Kind = EncodingInfo::Kind;

std::string lowered(std::string_view text)
{
    std::string result(text);
    for (char& byte : result)
        byte = static_cast<char>(tolower(byte));
    return result;
}

TEST(Encoding, EveryRowIsFoundByItsNamesAndNumbers)
{
    std::set<std::string> seen;
    for (const EncodingInfo& info : allEncodings()) {
        EXPECT_EQ(encodingForName(lowered(info.name)), info.encoding) << info.name;
        EXPECT_EQ(nameOfEncoding(info.encoding), info.name);
        EXPECT_EQ(encodingFromWider(widerFromEncoding(info.encoding)), info.encoding) << info.name;
        std::string names = lowered(info.name) + ' ' + lowered(info.aliases);
        for (char* name = strtok(names.data(), " "); name; name = strtok(nullptr, " ")) {
            EXPECT_TRUE(seen.insert(name).second) << name << " names two encodings";
            EXPECT_EQ(encodingForName(name), info.encoding) << name;
        }
        UErrorCode status = U_ZERO_ERROR;
        ucnv_close(ucnv_open(info.converter, &status));
        EXPECT_TRUE(U_SUCCESS(status)) << info.converter;
    }
}

TEST(Encoding, TheNumbersThatFilesHoldStay)
{
    const std::tuple<std::string_view, TextEncoding, WiderEncoding> rows[] = {{"UTF-8", 4, 0x8000100},
        {"UTF-16", 10, 256}, {"UTF-16BE", encodingForName("utf-16be"), 268435712},
        {"UTF-16LE", encodingForName("utf-16le"), 335544576}};
    for (const auto& [name, encoding, wider] : rows) {
        EXPECT_EQ(encodingForName(name), encoding);
        EXPECT_EQ(widerFromEncoding(encoding), wider);
    }
    const std::pair<std::string_view, TextEncoding> names[] = {
        {"us-ascii", 1}, {"LATIN1", 5}, {"quillonroman", 30}, {"utf-7", 4000100}};
    for (const auto& [name, encoding] : names)
        EXPECT_EQ(encodingForName(name), encoding) << name;
}

TEST(Encoding, AnUnknownNameConvertsNothing)
{
    for (const auto name : {"", "nonsense", "utf-9", " utf-8"})
        EXPECT_EQ(encodingForName(name), invalidTextEncoding) << name;
    for (const TextEncoding encoding : {invalidTextEncoding, TextEncoding{0}, TextEncoding{9999}}) {
        EXPECT_FALSE(decode("a", encoding));
        EXPECT_FALSE(encode("a", encoding));
    }
    EXPECT_EQ(encodingFromWider(7), invalidTextEncoding);
    EXPECT_EQ(widerFromEncoding(7), invalidTextEncoding);
}

// ICU's own answer, by its replacing callback: what it replaces is what we refuse.
std::optional<std::string> decodeByICU(char byte, const char* converterName)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(converterName, &status);
    char16_t units[4];
    const int32_t length = ucnv_toUChars(converter, units, 4, &byte, 1, &status);
    ucnv_close(converter);
    std::u16string_view text(units, static_cast<std::size_t>(length));
    return text == u"\uFFFD" ? std::nullopt : std::optional(fromUTF16(text));
}

TEST(Encoding, EachByteOfASingleByteSetGoesThereAndBack)
{
    for (const EncodingInfo& info : allEncodings()) {
        if (info.kind != Kind::singleByte && info.kind != Kind::latin1 && info.kind != Kind::ascii)
            continue;
        for (int value = 0; value < 256; ++value) {
            const char byte = static_cast<char>(value);
            const auto text = decode({&byte, 1}, info.encoding);
            ASSERT_EQ(text, decodeByICU(byte, info.converter)) << info.name << ' ' << value;
            if (text) {
                ASSERT_EQ(encode(*text, info.encoding), std::string(1, byte)) << info.name << ' ' << value;
            }
        }
    }
}

TEST(Encoding, ASCIIIsItselfWhereTheTableSaysSo)
{
    std::string ascii;
    for (int value = 0; value < 128; ++value)
        ascii.push_back(static_cast<char>(value));
    for (const EncodingInfo& info : allEncodings()) {
        if (!info.asciiCompatible)
            continue;
        // A character beyond ASCII keeps the converter from being passed over.
        const std::string other = info.kind == Kind::ascii ? ""
            : info.kind == Kind::multiByte                 ? "田"
                                                           : "\u00A0";
        const auto alone = encode(other, info.encoding);
        if (!alone)
            continue;
        EXPECT_EQ(encode(ascii + other, info.encoding), ascii + *alone) << info.name;
        EXPECT_EQ(decode(ascii + *alone, info.encoding), ascii + other) << info.name;
    }
}

struct Known {
    std::string_view name, bytes, text;
};

TEST(Encoding, KnowsTheBytesOfEachSet)
{
    const Known rows[] = {
        {"utf-8", "M\xC3\xBCller", "Müller"},
        {"latin1", "M\xFCller", "Müller"},
        {"quillonroman", "M\x9Fller \xDB", "Müller €"},
        {"windows-1252", "\x80 caf\xE9", "€ café"},
        {"windows-1251", "\xC6\xF3\xEA", "Жук"},
        {"koi8-r", "\xF6\xD5\xCB", "Жук"},
        {"iso-8859-15", "\xA4", "€"},
        {"Shift_JIS", "\x93\x63\x92\x86", "田中"},
        {"EUC-JP", "\xC5\xC4\xC3\xE6", "田中"},
        {"ISO-2022-JP", "\x1B$BEDCf\x1B(B", "田中"},
        {"GB2312", "\xB1\xB1\xBE\xA9", "北京"},
        {"Big5", "\xA5\x5F\xA8\xCA", "北京"},
        {"EUC-KR", "\xB1\xE8", "김"},
        {"ks_c_5601-1987", "\xB1\xE8", "김"},
        {"UTF-7", "M+APw-ller", "Müller"},
        {"UTF-16", "\xFE\xFF\0M\0\xFC"sv, "Mü"},
        {"UTF-16LE", "M\0\xFC\0"sv, "Mü"},
        {"UTF-16BE", "\0M\0\xFC\xD8\x3D\xDE\0"sv, "Mü😀"},
    };
    for (const auto& [name, bytes, text] : rows) {
        EXPECT_EQ(decode(bytes, encodingForName(name)), text) << name;
        EXPECT_EQ(encode(text, encodingForName(name)), bytes) << name;
    }
    EXPECT_EQ(decode("\xFF\xFEM\0"sv, kUTF16Encoding), "M");
    EXPECT_EQ(decode("\0M"sv, kUTF16Encoding), "M");
}

TEST(Encoding, RefusesWhatItCannotConvertAndGoesOnWell)
{
    const Known undecodable[] = {{"us-ascii", "caf\xE9", "cafe"}, {"utf-8", "\xED\xA0\x80", "é"},
        {"utf-8", "\xC3", "é"}, {"windows-1253", "\xD2", "Ω"}, {"Shift_JIS", "\x93", "田"},
        {"Shift_JIS", "\x93\x63\xFF", "田"}, {"EUC-JP", "\xC5\x20", "田"}, {"GB18030", "\xFF", "北"},
        {"Big5", "\xA5", "北"}, {"EUC-KR", "\xFF\xFF", "김"}, {"ISO-2022-JP", "\x1B$Z", "田"},
        {"utf-16", "\xFE\xFF\xD8\0"sv, "田"}, {"utf-16le", "M", "田"}, {"utf-7", "\xFC", "ü"}};
    for (const auto& [name, bytes, good] : undecodable) {
        const TextEncoding encoding = encodingForName(name);
        EXPECT_FALSE(decode(bytes, encoding)) << name << ' ' << testing::PrintToString(bytes);
        EXPECT_EQ(decode(encode(good, encoding).value_or(""), encoding), good) << name;
    }
    const std::pair<std::string_view, std::string_view> unencodable[] = {{"us-ascii", "é"}, {"latin1", "€"},
        {"latin1", "😀"}, {"windows-1252", "Ж"}, {"quillonroman", "Ж"}, {"koi8-r", "é"}, {"Shift_JIS", "김"},
        {"Big5", "😀"}, {"EUC-KR", "\xFF"}, {"utf-8", "\xFF"}, {"utf-16", "\xFF"}, {"latin1", "\xFF"},
        {"windows-1252", "\xFF"}};
    for (const auto& [name, text] : unencodable)
        EXPECT_FALSE(encode(text, encodingForName(name))) << name << ' ' << text;
}

TEST(Encoding, WhatEncodesAlsoDecodes)
{
    Samples samples;
    for (int count = 0; count < 3000; ++count) {
        const std::string text = samples.text("aé ßЖя田中김北Ωא€😀+~\\\x1B", 6);
        for (const EncodingInfo& info : allEncodings())
            if (const auto bytes = encode(text, info.encoding)) {
                ASSERT_EQ(decode(*bytes, info.encoding), text) << info.name;
            }
    }
}

} // namespace
} // namespace platform
