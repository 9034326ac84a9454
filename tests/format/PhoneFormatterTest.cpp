// Numbers become the texts that templates say, and what is no number stays as it was typed.
#include "format/NaivePhoneFormat.h"
#include "format/ZRAntiPhoneFormatter.h"
#include "format/ZRPhoneFormatter.h"
#include "platform/value/AttributedString.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

namespace {

using platform::makeRef;
using platform::Ref;
using platform::Value;
using Formats = std::vector<std::string>;

Ref<ZRPhoneFormatter> formatterWith(const Formats& formats)
{
    auto formatter = makeRef<ZRPhoneFormatter>();
    for (const auto& format : formats)
        formatter->addFormat(format);
    return formatter;
}

const Formats american = {"###-####", "(###) ###-####", "1 (###) ###-####", "+1 (###) ###-####"};

struct Case {
    const char* typed;
    const char* shown;
};

void expectShown(const ZRPhoneFormatter& formatter, std::initializer_list<Case> cases)
{
    for (const auto& [typed, shown] : cases)
        EXPECT_EQ(formatter.stringForObjectValue(typed), shown) << typed;
}

TEST(PhoneFormatter, TakesTheFirstTemplateThatFits)
{
    expectShown(*formatterWith(american),
        {{"5551234", "555-1234"}, {"4155551234", "(415) 555-1234"}, {"415.555.1234", "(415) 555-1234"},
            {"1-415-555-1234", "1 (415) 555-1234"}, {"2-415-555-1234", "2-415-555-1234"},
            {"+14155551234", "+1 (415) 555-1234"}, {"+441555512", "(+44) 155-5512"}, {"12345", "12345"},
            {"", ""}, {" - ", " - "}, {"[415]<555>/\"12'34\"", "(415) 555-1234"}});
    expectShown(*formatterWith({"2##", "#-#-#", "###"}), {{"212", "212"}, {"312", "3-1-2"}});
    expectShown(*formatterWith({"###", "2##"}), {{"2-1-2", "212"}});
    // Literals stand anywhere, and what follows the last position is kept.
    expectShown(*formatterWith({"(#5#) <x>", "#+"}),
        {{"151", "(151) <x>"}, {"161", "161"}, {"4+", "4+"}, {"44", "44"}});
    // However far behind.
    expectShown(*formatterWith({"###### ###### ####7##8", "### ###### ##########9"}),
        {{"12345612345612347228", "123456 123456 12347228"}, {"12345612345612346228", "12345612345612346228"},
            {"12345612345612347229", "123 456123 45612347229"},
            {"12345612345612347227", "12345612345612347227"}});
}

TEST(PhoneFormatter, KeepsExtensionsBehindTheNumber)
{
    expectShown(*formatterWith({"#", "##", "###-####", "####-####"}),
        {{"5551234 ext 5", "555-1234 ext 5"}, {"5551234  ext 5", "555-1234 ext 5"},
            {"5551234 x  5 \t", "555-1234 x  5"}, {"5551234#8", "555-1234 #8"}, {"5551234 #8", "555-1234 #8"},
            // What stands in front of the letter goes along, whatever it is.
            {"5551234x5", "5551234x5"}, {"55512345x6", "555-1234 5x6"}, {"12x", "1 2x"},
            // One character in front of it stays.
            {"1x", "1 x"}, {"1 x", "1 x"},
            // A letter in front of everything is no extension, nor does it hinder the digits behind it.
            {"x5551234", "555-1234"}, {"x555 1234 y", "555-1234"}, {"tel: none", "tel: none"},
            {"5551234 \xE2\x98\x8E 5", "555-1234 \xE2\x98\x8E 5"}, {"5551234 \t", "555-1234 "}});
}

TEST(PhoneFormatter, ReadsFullWidthDigits)
{
    const auto formatter = formatterWith({"###-####"});
    expectShown(*formatter,
        {{"\xEF\xBC\x95\xEF\xBC\x95\xEF\xBC\x95\xEF\xBC\x91\xEF\xBC\x92\xEF\xBC\x93\xEF\xBC\x94", "555-1234"},
            // Composed even where no template fits.
            {"\xEF\xBC\x95\xEF\xBC\x95", "55"}, {"\xEF\xBC\x8B\xEF\xBC\x95", "+5"},
            {"555\xC2\xA0"
             "1234",
                "555-1234"}});
    formatter->setEnabled(false);
    expectShown(
        *formatter, {{"\xEF\xBC\x95\xEF\xBC\x95", "\xEF\xBC\x95\xEF\xBC\x95"}, {"5551234", "5551234"}});
}

TEST(PhoneFormatter, AnswersTheFieldThatAsks)
{
    const auto formatter = formatterWith({"###-####"});
    Value value = "before";
    std::string error = "before";
    EXPECT_TRUE(formatter->getObjectValue(value, "5551234", &error));
    EXPECT_EQ(value, Value("555-1234"));
    EXPECT_EQ(error, "");
    EXPECT_TRUE(formatter->getObjectValue(value, "no number"));
    EXPECT_EQ(value, Value("no number"));
    const auto attributed = makeRef<platform::AttributedString>();
    attributed->append("555");
    attributed->append("1234", "field", "Phone");
    EXPECT_EQ(formatter->stringForObjectValue(attributed), "555-1234");
    EXPECT_EQ(formatter->stringForObjectValue(5551234), std::nullopt);
    EXPECT_EQ(formatter->stringForObjectValue({}), std::nullopt);
    EXPECT_EQ(makeRef<ZRPhoneFormatter>()->stringForObjectValue("\xEF\xBC\x95"), "\xEF\xBC\x95");
    EXPECT_TRUE(formatter->isPartialStringValid("any", nullptr, "", {}));
}

TEST(PhoneFormatter, KnowsWhatANumberMayHold)
{
    for (char32_t character = 1; character < 0x250; ++character) {
        const bool isAllowed =
            std::u32string_view(U" .\"'/-,[]<>()+0123456789").find(character) != std::u32string_view::npos;
        EXPECT_EQ(ZRPhoneFormatter::allowableCharacters().contains(character), isAllowed) << +character;
        EXPECT_EQ(ZRPhoneFormatter::nonAllowableCharacters().contains(character), !isAllowed) << +character;
    }
}

// Any templates, any texts: preparing templates must change no answer.
TEST(PhoneFormatter, AgreesWithTemplatesReadCharacterByCharacter)
{
    std::mt19937 random(20);
    const auto text = [&](std::string_view characters, int longest) {
        std::string made;
        for (int left = std::uniform_int_distribution<>(0, longest)(random); left > 0; --left)
            made += characters[std::uniform_int_distribution<std::size_t>(0, characters.size() - 1)(random)];
        return made;
    };
    int changed = 0;
    for (int round = 0; round < 2000; ++round) {
        Formats formats;
        for (int count = 0; count < 12; ++count)
            formats.push_back("(" + text("####12+- ", 6) + ")");
        const auto formatter = formatterWith(formats);
        for (int number = 0; number < 20; ++number) {
            const std::string typed = text("111222333+- x#", 8);
            const std::string shown = test::naivelyFormatted(typed, formats);
            ASSERT_EQ(formatter->stringForObjectValue(typed), shown)
                << typed << " by " << testing::PrintToString(formats);
            changed += shown != typed;
        }
    }
    EXPECT_GT(changed, 4000) << "too few texts met a template to prove much";
}

TEST(PhoneFormatter, FormatsByOneListOrTheOtherWhileItChanges)
{
    const auto formatter = formatterWith({"#-#"});
    std::atomic<bool> done = false;
    std::thread editor([&] {
        for (int round = 0; round < 200; ++round)
            formatter->replaceFormatAtIndex(0, round % 2 ? "#-#" : "# #");
        done = true;
    });
    while (!done)
        EXPECT_THAT(*formatter->stringForObjectValue("12"), testing::AnyOf("1-2", "1 2"));
    editor.join();
    EXPECT_EQ(formatter->stringForObjectValue("12"), "1-2");
}

TEST(AntiPhoneFormatter, LetsOnlyTemplatesPass)
{
    const ZRTextSelection none{7, 7};
    const struct {
        const char* text;
        ZRTextSelection bad;
    } cases[] = {{"", none}, {"(###) ###-####", none}, {"+1 [#] <#>, .\"'/", none}, {"x##", {0, 1}},
        {"##*#x", {2, 1}}, {"#\xC3\xA9#", {1, 1}}, {"\xEF\xBC\x91", {0, 1}}, {"## \xF0\x9F\x93\x9E", {3, 2}}};
    const auto formatter = makeRef<ZRAntiPhoneFormatter>();
    for (const auto& [text, bad] : cases) {
        ZRTextSelection selection = none;
        Value value = "before";
        std::string error = "before";
        const bool good = bad == none;
        EXPECT_EQ(formatter->isPartialStringValid(text, &selection, "##", {2, 0}, &error), good) << text;
        EXPECT_EQ(selection, bad) << text;
        EXPECT_EQ(formatter->getObjectValue(value, text, &error), good) << text;
        EXPECT_EQ(value, Value(good ? text : "before"));
        EXPECT_EQ(error, "before") << text;
    }
    EXPECT_EQ(formatter->stringForObjectValue("x#"), "x#");
    EXPECT_EQ(formatter->stringForObjectValue(1), std::nullopt);
}

TEST(LocalizedInteger, FollowsTheUsersCountry)
{
    const std::pair<const char*, const char*> cases[] = {{"en_US.UTF-8", "-1,234,567"},
        {"de_DE.UTF-8", "-1.234.567"}, {"hi_IN", "-12,34,567"}, {"C", "-1,234,567"}};
    for (const auto& [locale, text] : cases) {
        setenv("LC_NUMERIC", locale, 1);
        EXPECT_EQ(ZRLocalizedInteger(-1234567), text) << locale;
    }
    unsetenv("LC_NUMERIC");
}

} // namespace
