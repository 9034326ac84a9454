// Words are found in every script.
#include "platform/text/Tokenizer.h"

#include "Samples.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using List = std::vector<std::string>;

TEST(Tokenizer, FindsTheWordsOfEachScript)
{
    const std::pair<std::string_view, List> rows[] = {
        {"", {}},
        {" - , .", {}},
        {"Ana  Lima", {"Ana", "Lima"}},
        {"O'Brien & Smith-Jones, Inc.", {"O'Brien", "Smith", "Jones", "Inc"}},
        {"+49 30 1234,5", {"49", "30", "1234,5"}},
        {"a.b_c@example.org", {"a.b_c", "example.org"}},
        {"é@ü.de @", {"é", "ü.de"}},
        {"_ x_ __", {"x_"}},
        {"room4b", {"room4b"}},
        {"Zoë Müller", {"Zoë", "Müller"}},
        {"私は田中太郎です", {"私", "は", "田中", "太郎", "です"}},
        {"北京大学", {"北京", "大学"}},
        {"ภาษาไทย", {"ภาษา", "ไทย"}},
        {"김 철수", {"김", "철수"}},
        {"שלום עולם", {"שלום", "עולם"}},
    };
    for (const auto& [text, list] : rows)
        EXPECT_EQ(words(text), list) << text;
}

TEST(Tokenizer, KnowsThatAColonJoinsInSwedish)
{
    EXPECT_EQ(words("S:t Erik"), (List{"S", "t", "Erik"}));
    const test::ScopedVariable locale("LC_ALL", "sv_SE.UTF-8");
    EXPECT_EQ(words("S:t Erik"), (List{"S:t", "Erik"}));
}

// One letter beyond ASCII sends the whole text the long way.
TEST(Tokenizer, CutsASCIIAsTheGeneralRulesDo)
{
    Samples samples;
    for (int count = 0; count < 20000; ++count) {
        const std::string text = count % 2 ? samples.ascii(12, ":") : samples.text("ab1 _.',;\"-@2\r\n", 12);
        auto expected = wordRanges(text + " é");
        ASSERT_FALSE(expected.empty());
        expected.pop_back();
        ASSERT_EQ(wordRanges(text), expected) << testing::PrintToString(text);
    }
}

} // namespace
} // namespace platform
