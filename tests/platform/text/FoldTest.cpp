// Folds make the same what is the same to a search, in every script.
#include "platform/text/Fold.h"

#include "Samples.h"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <thread>

namespace platform {
namespace {

struct Row {
    std::string_view text, withoutCase, withoutBoth;
};

constexpr Row kRows[] = {
    {"Ana LIMA-9", "ana lima-9", "ana lima-9"},
    {"STRAẞE", "strasse", "strasse"},
    {"Müller", "müller", "muller"},
    {"MU\u0308LLER", "mu\u0308ller", "muller"},
    {"İstanbul", "i\u0307stanbul", "istanbul"},
    {"ΟΔΥΣΣΕΎΣ", "οδυσσεύσ", "οδυσσευσ"},
    {"Nguyễn Thị Ệ", "nguyễn thị ệ", "nguyen thi e"},
    {"が ハ\u309A ガ", "が ハ\u309A ガ", "か\u3099 ハ\u309A カ\u3099"},
    {"Ｗｉｄｅ ①", "ｗｉｄｅ ①", "wide 1"},
};

TEST(Fold, MakesSpellingsTheSame)
{
    for (const auto& [text, withoutCase, withoutBoth] : kRows) {
        EXPECT_EQ(foldCase(text), withoutCase) << text;
        EXPECT_EQ(foldCaseAndDiacritics(text), withoutBoth) << text;
        EXPECT_EQ(transformed(text, kFoldNothing), text);
    }
    EXPECT_EQ(transformed("Éric ÀB", kFoldDiacritics), "Eric AB");
    EXPECT_EQ(foldCaseAndDiacritics("A\xFF"), "a\uFFFD");
}

// The definition on whole strings, straight from ICU.
std::string foldByDefinition(const std::string& text, std::uint32_t options)
{
    UErrorCode status = U_ZERO_ERROR;
    const auto& decomposition = *icu::Normalizer2::getNFKDInstance(status);
    auto units = icu::UnicodeString::fromUTF8(text);
    if (options & kFoldDiacritics)
        units = decomposition.normalize(units, status);
    if (options & kFoldCase)
        units.foldCase();
    std::string result;
    if (!(options & kFoldDiacritics))
        return units.toUTF8String(result);
    units = decomposition.normalize(units, status);
    icu::UnicodeString kept;
    for (int32_t at = 0; at < units.length(); at = units.moveIndex32(at, 1))
        if (const auto c = units.char32At(at);
            u_charType(c) != U_NON_SPACING_MARK || c == 0x3099 || c == 0x309A)
            kept.append(c);
    return kept.toUTF8String(result);
}

TEST(Fold, OfEachCharacterFollowsTheDefinitionAndIsFinal)
{
    for (char32_t character = 1; character <= 0x10FFFF; ++character) {
        const auto type = u_charType(static_cast<UChar32>(character));
        if (type == U_UNASSIGNED || type == U_PRIVATE_USE_CHAR || type == U_SURROGATE)
            continue;
        std::string text;
        appendUTF8(text, character);
        for (const std::uint32_t options : {kFoldCase, kFoldDiacritics, kFoldCaseAndDiacritics}) {
            const std::string once = transformed(text, options);
            ASSERT_EQ(once, foldByDefinition(text, options)) << text << ' ' << options;
            ASSERT_EQ(transformed(once, options), once) << text << ' ' << options;
        }
    }
}

TEST(Fold, AgreesWithItsDefinitionOnWholeTexts)
{
    Samples samples;
    for (int count = 0; count < 20000; ++count) {
        const std::string text = count % 2 ? samples.text(kManyScripts, 12) : samples.ascii(20);
        for (const std::uint32_t options : {kFoldCase, kFoldDiacritics, kFoldCaseAndDiacritics})
            ASSERT_EQ(transformed(text, options), foldByDefinition(text, options)) << text << ' ' << options;
    }
}

// Pages of the fold table are made by whoever comes first.
TEST(Fold, ThreadsThatMeetAtANewPageGetTheSameFold)
{
    std::string everyLetterOfAScript;
    for (char32_t character = 0x13A0; character < 0x1500; ++character)
        appendUTF8(everyLetterOfAScript, character);
    std::vector<std::string> folds(8);
    std::vector<std::jthread> threads;
    for (auto& fold : folds)
        threads.emplace_back([&] { fold = foldCaseAndDiacritics(everyLetterOfAScript); });
    threads.clear();
    const std::string expected = foldByDefinition(everyLetterOfAScript, kFoldCaseAndDiacritics);
    for (const auto& fold : folds)
        EXPECT_EQ(fold, expected);
}

std::string repeated(std::string_view text, int count)
{
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

TEST(Incremented, IsTheNextText)
{
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"a", "b"},
        {"ab", "ac"},
        {"az", "a{"},
        {"\x7F", "\u0080"},
        {"é", "ê"},
        {"x\uD7FF", "x\uE000"},
        {"x\uFFFE", "x\uFFFF"},
        {"x\uFFFF", "x" + repeated("\uFFFF", 16)},
        {"😀", "😁"},
        {"x\U000103FF", "x\U00010400"},
        {"x\U0010FFFF", "x" + repeated("\U0010FFFF", 16)},
    };
    for (const auto& [text, next] : rows)
        EXPECT_EQ(incremented(text), next) << text;
}

TEST(Incremented, LiesAboveWhateverGoesOnAndAboveNothingElse)
{
    Samples samples;
    for (int count = 0; count < 20000; ++count) {
        const std::string prefix = foldCaseAndDiacritics("a" + samples.text(kManyScripts, 4));
        const std::string other = foldCaseAndDiacritics(samples.text(kManyScripts, 6));
        const std::string bound = incremented(prefix);
        ASSERT_TRUE(isValidUTF8(bound));
        ASSERT_LT(prefix + other, bound);
        ASSERT_EQ(prefix <= other && other < bound, other.starts_with(prefix)) << prefix << ' ' << other;
    }
}

} // namespace
} // namespace platform
