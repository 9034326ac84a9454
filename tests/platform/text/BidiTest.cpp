// Ranges come in the order in which they are seen.
#include "platform/text/Bidi.h"

#include <gtest/gtest.h>

#include <numeric>

namespace platform {
namespace {

using Order = std::vector<std::size_t>;

struct Line {
    std::vector<std::string_view> parts;
    std::string_view joiner;
    Order order;
};

Order orderOf(const Line& line)
{
    std::string text;
    std::vector<TextRange> ranges;
    for (const auto part : line.parts) {
        if (!text.empty())
            text += line.joiner;
        ranges.push_back({text.size(), part.size()});
        text += part;
    }
    return visualOrder(text, ranges);
}

TEST(Bidi, OrdersPartsFromLeftToRightAsTheyAreSeen)
{
    const Line lines[] = {
        {{}, " ", {}},
        {{"City", "State", "Zip"}, " ", {0, 1, 2}},
        {{"Straße", "Ort"}, " ", {0, 1}},
        {{"עיר", "מדינה", "מיקוד"}, " ", {2, 1, 0}},
        {{"مدينة", "12345"}, " ", {1, 0}},
        {{"City", "עיר", "מדינה", "Zip"}, " ", {0, 2, 1, 3}},
        {{"עיר", "New York", "מיקוד"}, ", ", {2, 1, 0}},
        {{"😀", "é", "z"}, " ", {0, 1, 2}},
    };
    for (const auto& line : lines)
        EXPECT_EQ(orderOf(line), line.order) << testing::PrintToString(line.parts);
}

TEST(Bidi, PartsWithoutWidthKeepTheirOrder)
{
    EXPECT_EQ(visualOrder("é", std::vector<TextRange>{{2, 0}, {0, 2}, {0, 0}, {2, 0}}), (Order{1, 2, 0, 3}));
    Order inOrder(100);
    std::iota(inOrder.begin(), inOrder.end(), std::size_t{0});
    EXPECT_EQ(visualOrder("é", std::vector<TextRange>(100)), inOrder);
}

} // namespace
} // namespace platform
