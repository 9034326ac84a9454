// What is remembered of headers is what a reader without memory would read.
#include "interchange/vcard/prepare/Headers.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>

namespace vcard::prepare {
namespace {

std::string described(std::string_view line, const Header* header)
{
    if (!header)
        return "no colon";
    const auto& property = header->property;
    auto text =
        fmt::format("{}|{}|{}|{}|{}|{}", property.group, property.name, header->canonical, header->rank,
            header->row ? static_cast<int>(header->row->use) : -1, line.substr(header->text.size()));
    for (const auto& parameter : property.parameters)
        text += fmt::format("|{}={}", parameter.name, parameter.value);
    return text;
}

/// Lines of few pieces, so that headers come again, in other orders and with quotes left open.
std::string randomLine(std::mt19937& random)
{
    const auto oneOf = [&](auto... texts) {
        const std::string_view all[] = {texts...};
        return all[random() % std::size(all)];
    };
    const auto parameter = [&] {
        return oneOf(
            "", "", ";TYPE=home", ";PREF", ";PREF=2", ";TYPE=\"a,b\"", ";X=\"a:b\"", ";X=\"a:", ";Y=b\"");
    };
    return fmt::format("{}{}{}{}{}{}", oneOf("", "", "item1.", "g."),
        oneOf("TEL", "N", "NICKNAME", "X-A", "-"), parameter(), parameter(), oneOf(":", ":", ":", ""),
        oneOf("1", "a:b", "\":c", ""));
}

TEST(Headers, AreWhatTheyWouldBeWithoutMemory)
{
    std::mt19937 random(20261122);
    Headers headers;
    for (int card = 0; card < 400; ++card) {
        const auto version = static_cast<Version>(random() % kVersions);
        headers.beginCard(version);
        for (int line = 0; line < 12; ++line) {
            const auto text = randomLine(random);
            Headers fresh;
            fresh.beginCard(version);
            const auto expected = described(text, fresh.of(text));
            ASSERT_EQ(described(text, headers.of(text)), expected) << text << " in card " << card;
        }
    }
}

TEST(Headers, StayRightWhenMoreThanCanBeRememberedHaveCome)
{
    Headers headers;
    for (int card = 0; card < 3; ++card) {
        headers.beginCard(Version::v30);
        for (std::size_t each = 0; each < Headers::kMostRemembered + 20; ++each) {
            const auto line = fmt::format("X-{}:{}", each, card);
            ASSERT_EQ(headers.of(line)->property.name, fmt::format("X-{}", each));
        }
        const std::string tooLong(Headers::kLongestRemembered, 'X');
        const auto line = tooLong + ":v";
        EXPECT_EQ(headers.of(line)->property.name, tooLong);
        EXPECT_EQ(headers.of("X-1:")->property.name, "X-1");
    }
}

} // namespace
} // namespace vcard::prepare
