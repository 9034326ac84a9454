// URLs and Base64 are escaped and read.
#include "platform/text/Escape.h"
#include "platform/value/Base64.h"

#include "Samples.h"
#include "platform/text/Digits.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using namespace std::string_view_literals;
using Rows = std::pair<std::string_view, std::string_view>;

TEST(PercentEscapes, AreAddedOnlyWhereTheTextIsNoURL)
{
    const Rows rows[] = {
        {"", ""},
        {"http://example.org/a?b=c&d#e", "http://example.org/a?b=c&d#e"},
        {"http://example.org/a%20b", "http://example.org/a%20b"},
        {"www.example.org", "www.example.org"},
        {"http://user@[2001:db8::1]:80/", "http://user@[2001:db8::1]:80/"},
        {"http://example.org/a b", "http://example.org/a%20b"},
        {"http://example.org/a%20b c", "http://example.org/a%20b%20c"},
        {"http://example.org/caf\u00E9", "http://example.org/caf%C3%A9"},
        {"http://example.org/caf%C3%A9/\u00FC", "http://example.org/caf%C3%A9/%C3%BC"},
        {"a%E9 b", "a%25E9%20b"},
        {"100%", "100%25"},
        {"100% sure", "100%25%20sure"},
        {"%zz", "%25zz"},
        {"a#b#c", "a#b%23c"},
        {"http://example.org/[x]", "http://example.org/%5Bx%5D"},
        {"http://[::1]/[x]", "http://[::1]/%5Bx%5D"},
        {"<a\"b>\\^`{|}", "%3Ca%22b%3E%5C%5E%60%7B%7C%7D"},
        {"tel:+49 30", "tel:+49%2030"},
        {"a\nb\0"sv, "a%0Ab%00"},
    };
    for (const auto& [text, url] : rows) {
        EXPECT_EQ(addingPercentEscapesIfNecessary(text), url) << text;
        EXPECT_EQ(isValidURL(text), text == url) << text;
    }
}

TEST(PercentEscapes, AlwaysEndInAURLThatStays)
{
    Samples samples;
    for (int count = 0; count < 20000; ++count) {
        const std::string url = addingPercentEscapesIfNecessary(samples.text("a:/?#[]@%2Fé %C3%A9<", 16));
        ASSERT_TRUE(isValidURL(url)) << url;
        ASSERT_EQ(addingPercentEscapesIfNecessary(url), url);
    }
    EXPECT_TRUE(isValidURL(addingPercentEscapesIfNecessary("\xFF%")));
}

TEST(PercentEscapes, OfAComponentAreUndoneToTheSameText)
{
    EXPECT_EQ(percentEscaped("a/b ü~", "/"), "a/b%20%C3%BC~");
    for (const auto bad : {"%", "%1", "%G1", "a%C3", "%FF"})
        EXPECT_FALSE(removingPercentEscapes(bad)) << bad;
    Samples samples;
    for (int count = 0; count < 2000; ++count) {
        const std::string text = samples.text(kManyScripts, 6) + samples.ascii(6);
        ASSERT_EQ(removingPercentEscapes(percentEscaped(text)), text);
    }
}

TEST(Base64, FollowsTheTestVectors)
{
    const Rows rows[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xFF\xEF\xBE\0"sv, "/+++AA=="}};
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(encodeBase64(bytes), text);
        EXPECT_EQ(propertylist::bytesFromBase64(text), bytes) << text;
    }
}

TEST(Digits, AreFoundInEveryScript)
{
    const Rows rows[] = {{"", ""}, {"+49 (30) 12-34", "49301234"}, {"０３−１２", "0312"}, {"٠١٢٣", "0123"},
        {"१२", "12"}, {"x²", "2"}, {"ext", ""}, {"𝟗", "9"}};
    for (const auto& [text, digits] : rows)
        EXPECT_EQ(digitsOnly(text), digits) << text;
    EXPECT_EQ(compatibilityComposed("Ｅ\u0301 ﬁ １"), "É fi 1");
}

} // namespace
} // namespace platform
