// Properties that programs declare: of every type, kept for other processes, agreed on by two that declare
// alike.
#include "store/RosterWorld.h"

#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <cmath>
#include <stdexcept>

namespace test {

namespace {

using testing::HasSubstr;

struct Sample {
    const char* name;
    ZRPropertyType type;
    Value value;
};

Value list() { return Value::array({"a", 1, 2.5, Value::array({true})}); }
Value table() { return Value::dictionary({{"key", "value"}, {"more", Value::dictionary({{"deep", 7}})}}); }
Value bytes() { return Value::data(std::string("\0\xff raw", 6)); }

std::vector<Sample> samples()
{
    constexpr auto low = std::numeric_limits<std::int64_t>::min(),
                   high = std::numeric_limits<std::int64_t>::max();
    return {{"text", 1, "ünï"}, {"empty text", 1, ""}, {"highest", 2, high}, {"lowest", 2, low},
        {"beyond a double", 2, std::int64_t{9007199254740993}}, {"real", 3, 0.1}, {"whole real", 3, 2.0},
        {"infinite", 3, INFINITY}, {"date", 4, Value(platform::Date{-11644473600.125})}, {"array", 5, list()},
        {"dictionary", 6, table()}, {"data", 7, bytes()},
        {"texts", 257, multiValue({{"one", "a"}, {"two", "b"}}, 1)},
        {"integers", 258, multiValue({{high, "a"}, {0, "b"}, {std::int64_t{9007199254740993}, "c"}}, 2)},
        {"reals", 259, multiValue({{0.1, "a"}, {4.0, "b"}})},
        {"several dates", 260,
            multiValue({{Value(platform::Date{0}), "a"}, {Value(platform::Date{1e9 + 0.5}), "b"}}, 1)},
        {"arrays", 261, multiValue({{list(), "a"}, {Value::array({}), "b"}})},
        {"dictionaries", 262, multiValue({{table(), "a"}, {Value::dictionary({}), "b"}}, 1)},
        {"datas", 263, multiValue({{bytes(), "a"}, {Value::data(""), "b"}})}};
}

const Role writes("write custom properties", [](const Words& words) {
    const auto roster = openShared();
    const auto one = ZRPerson::initWithUniqueId(words.at(0), roster);
    for (const auto& sample : samples()) {
        const Value types = Value::dictionary({{sample.name, sample.type}});
        if (ZRPerson::addPropertiesAndTypes(types, roster.get()) != 1
            || !one->setValue(sample.value, sample.name))
            throw std::runtime_error(std::string(sample.name) + " refused");
    }
    if (!roster->save())
        throw std::runtime_error(roster->lastSaveError().text);
    return textOf(*one);
});

const Role removes("remove custom properties", [](const Words& words) {
    const auto roster = openShared();
    const auto one = roster->recordForUniqueId(words.at(0));
    for (const auto& sample : samples())
        one->setValue(Value(platform::NullMarker{}), sample.name);
    return std::string(roster->save() ? "saved" : roster->lastSaveError().text);
});

constexpr char cardId[] = "01234567-89AB-CDEF-0123-456789ABCDEF:ZRPerson";

class CustomProperties : public testing::Test {
protected:
    std::int64_t declare(const char* name, const Value& type)
    {
        return ZRPerson::addPropertiesAndTypes(Value::dictionary({{name, type}}), roster.get());
    }
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST(CustomPropertiesInFiles, AreReadEqualByAnotherProcessAndLeaveNothingWhenRemoved)
{
    const Home home;
    const auto written = home.play("write custom properties", {cardId});
    ASSERT_EQ(written.status, 0) << written.log;
    EXPECT_THAT(written.answer, HasSubstr("beyond a double: whole 9007199254740993\n"));
    EXPECT_THAT(written.answer, HasSubstr("whole real: real 0x1p+1\n"));
    EXPECT_EQ(home.play("read card", {cardId}).answer, written.answer);

    ASSERT_EQ(home.play("remove custom properties", {cardId}).answer, "saved");
    const auto left = home.play("read card", {cardId});
    for (const auto& sample : samples())
        EXPECT_THAT(left.answer, HasSubstr(std::string(sample.name) + ": absent\n"));
}

TEST_F(CustomProperties, AreDeclaredOnce)
{
    EXPECT_EQ(declare("shoe size", 2), 1);
    EXPECT_EQ(ZRPerson::typeOfProperty(ZRPerson::recordClassDescription, "shoe size", roster.get()), 2);
    EXPECT_EQ(roster->typeOfProperty("shoe size", "ZRPerson"), 2);
    EXPECT_EQ(roster->typeOfProperty("shoe size", "ZRGroup"), 0) << "declared for people only";

    platform::LogCapture log;
    EXPECT_EQ(declare(kZREmailProperty, 1), 0);
    EXPECT_EQ(declare("shoe size", 2), 0);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
    EXPECT_EQ(declare("shoe size", 3), 0);
    EXPECT_EQ(roster->typeOfProperty("shoe size", "ZRPerson"), 2);
}

TEST_F(CustomProperties, StayForGood)
{
    declare("shoe size", 2);
    EXPECT_EQ(ZRPerson::removeProperties(Value::array({"shoe size"})), 0);
    EXPECT_EQ(roster->typeOfProperty("shoe size", "ZRPerson"), 2);
}

TEST_F(CustomProperties, DoNotHideTheKeysOfACard)
{
    // "title" is a key of the stored card though no property: a custom property of that name would shadow it.
    declare("title", 1);
    const auto one = person(roster, {{zr::kZRTitleProperty, "Dr."}});
    EXPECT_EQ(one->valueForProperty("title"), Value("Dr."));
}

} // namespace test
