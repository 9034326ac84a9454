// What holds of values and shared objects whatever uses them: equality, order-free dictionaries, and the race
// between a last release and a holder without ownership.
#include "platform/value/Value.h"

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <limits>
#include <thread>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::Key;

TEST(ValueEquality, FollowsTheAmountAndNotTheForm)
{
    const struct {
        const char* name;
        Value a, b;
        bool equal;
    } cases[] = {
        {"whole and floating", 3, 3.0, true},
        {"whole and floating apart", 3, 3.5, false},
        {"boolean and whole", true, 1, true},
        {"large neighbours", std::int64_t(9007199254740993), std::int64_t(9007199254740992), false},
        {"wide unsigned and its bits as signed", std::uint64_t(1) << 63, INT64_MIN, false},
        {"wide unsigned", UINT64_MAX, UINT64_MAX, true},
        {"unsigned below the border", std::uint64_t(7), 7, true},
        {"wide unsigned and floating", std::uint64_t(1) << 63, 9223372036854775808.0, true},
        {"date and number", Date{5}, 5, false},
        {"text and the same bytes", "ab", Value::data("ab"), false},
        {"absent and null", Value(), NullMarker{}, false},
        {"arrays", Value::array({1, "a"}), Value::array({1.0, "a"}), true},
        {"dictionaries", Value::dictionary({{"a", 1}, {"b", 2}}), Value::dictionary({{"b", 2}, {"a", 1}}),
            true},
    };
    for (const auto& [name, a, b, equal] : cases) {
        EXPECT_EQ(a == b, equal) << name;
        EXPECT_EQ(b == a, equal) << name;
        if (equal) {
            EXPECT_EQ(a.hash(), b.hash()) << name;
        }
    }
}

TEST(ValueNumbers, StayWithinTheRangeOfAnInteger)
{
    EXPECT_EQ(Value(1e300).asInteger(), INT64_MAX);
    EXPECT_EQ(Value(-1e300).asInteger(), INT64_MIN);
    EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).asInteger(), 0);
    EXPECT_EQ(Value(-2.9).asInteger(), -2);
    EXPECT_EQ(Value(UINT64_MAX).asReal(), 18446744073709551616.0);
}

TEST(ValueDictionary, KeepsTheLastEntryOfAKeyAndForgetsWhatHasNoValue)
{
    const auto value = Value::dictionary({{"b", 1}, {"a", 1}, {"b", 2}, {"c", 3}, {"c", Value()}, {"b", 3}});
    EXPECT_THAT(value.asDictionary()->entries(), ElementsAre(Key("a"), Key("b")));
    EXPECT_EQ(value["b"], Value(3));
    EXPECT_TRUE(value["c"].isAbsent());
}

/// Stays in memory behind its end, so that the test can look.
class Watched : public Object {
public:
    std::atomic<int> ends{0};
    ~Watched() override = default;

protected:
    void lastOwnerGone() noexcept override { ++ends; }
};

// A cache holds records without owning them: it must get a living one or none, never one that is ending.
TEST(ObjectOwnership, IsNeverRegainedOnceTheLastOwnerHasGone)
{
    constexpr int rounds = 3000;
    int regained = 0;
    std::vector<Watched> objects(rounds);
    std::barrier start(2);
    std::thread cache([&] {
        for (auto& object : objects) {
            start.arrive_and_wait();
            if (!object.retainIfOwned())
                continue;
            ++regained;
            EXPECT_EQ(object.ends, 0);
            object.release();
        }
    });
    for (auto& object : objects) {
        start.arrive_and_wait();
        object.release();
    }
    cache.join();
    for (auto& object : objects) {
        EXPECT_EQ(object.ends, 1);
        EXPECT_FALSE(object.retainIfOwned());
    }
    RecordProperty("regained", regained);
}

} // namespace
} // namespace platform
