// Which values fit which types, and which type a value asks for.
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPropertyType.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using platform::Date;
using platform::NullMarker;
using platform::Value;

Value multi(std::initializer_list<Value> values)
{
    auto multiValue = platform::makeRef<ZRMutableMultiValue>();
    for (const Value& value : values)
        multiValue->addValue(value, "label");
    return multiValue;
}

Value strings(std::initializer_list<const char*> texts)
{
    return Value::array(std::vector<Value>(texts.begin(), texts.end()));
}

struct Sample {
    const char* name;
    Value value;
    std::vector<ZRPropertyType> fits;
    ZRPropertyType strict;
    ZRPropertyType lenient;
};

const std::vector<Sample>& samples()
{
    static const std::vector<Sample> all = {
        {"string", "text", {1}, 1, 1},
        {"empty string", "", {1}, 1, 1},
        {"integer", 7, {2, 3}, 2, 2},
        {"boolean", true, {2, 3}, 2, 2},
        {"real", 1.5, {2, 3}, 3, 3},
        {"whole real", 2.0, {2, 3}, 3, 3},
        {"date", Date{0}, {4}, 4, 4},
        {"array", strings({"a"}), {5}, 5, 5},
        {"dictionary", Value::dictionary({{"a", 1}}), {6}, 0, 6},
        {"data", Value::data("x"), {7}, 7, 7},
        {"multi-string", multi({"a", "b"}), {257}, 0, 0},
        {"multi-integer", multi({1, 2}), {258, 259}, 0, 0},
        {"multi-real", multi({1.5}), {258, 259}, 0, 0},
        {"multi-date", multi({Date{1}}), {260}, 0, 0},
        {"multi-array", multi({strings({})}), {261}, 0, 0},
        {"multi-dictionary", multi({Value::dictionary({})}), {262}, 0, 0},
        {"multi-data", multi({Value::data("")}), {263}, 0, 0},
        {"mixed multi-value", multi({"a", 1}), {}, 0, 0},
        {"empty multi-value", multi({}), {}, 0, 0},
    };
    return all;
}

TEST(PropertyType, DecidesWhatAPropertyMayHold)
{
    for (const Sample& sample : samples())
        for (ZRPropertyType type = -2; type < 600; ++type) {
            const bool fits = std::ranges::find(sample.fits, type) != sample.fits.end();
            EXPECT_EQ(_ZRCheckTypeOfValue(sample.value, type), fits) << sample.name << " as " << type;
        }
}

TEST(PropertyType, LetsNothingRemoveAnyProperty)
{
    for (const ZRPropertyType type : {-1, 0, 1, 7, 8, 257, 264}) {
        EXPECT_TRUE(_ZRCheckTypeOfValue({}, type)) << type;
        EXPECT_TRUE(_ZRCheckTypeOfValue(NullMarker(), type)) << type;
    }
}

TEST(PropertyType, IsFoundFromAValue)
{
    for (const Sample& sample : samples()) {
        EXPECT_EQ(propertyTypeForValue(sample.value, ZRTypeGuess::strict), sample.strict) << sample.name;
        EXPECT_EQ(propertyTypeForValue(sample.value, ZRTypeGuess::lenient), sample.lenient) << sample.name;
    }
}

TEST(PropertyType, SeesASerializedMultiValueInADictionaryOfItsFourKeys)
{
    const Value ids = strings({"1"}), labels = strings({"l"}), text = strings({"a"}), none = strings({});
    const Value mixed = Value::array({"a", 2.5});
    const Value nested = Value::array({Value::dictionary({{"City", "Bonn"}})});
    const struct {
        const char* name;
        std::vector<std::pair<std::string, Value>> entries;
        ZRPropertyType type;
    } cases[] = {
        {"of strings", {{"identifiers", ids}, {"labels", labels}, {"values", text}, {"primary", "1"}}, 257},
        {"by its last value", {{"identifiers", ids}, {"labels", labels}, {"values", mixed}, {"primary", "1"}},
            259},
        {"of dictionaries", {{"identifiers", ids}, {"labels", labels}, {"values", nested}, {"primary", "1"}},
            262},
        {"empty", {{"identifiers", none}, {"labels", none}, {"values", none}, {"primary", ""}}, 0},
        {"without primary", {{"identifiers", ids}, {"labels", labels}, {"values", text}}, 6},
        {"one key more",
            {{"identifiers", ids}, {"labels", labels}, {"values", text}, {"primary", "1"}, {"x", 1}}, 6},
        {"another key", {{"identifiers", ids}, {"labels", labels}, {"values", text}, {"Primary", "1"}}, 6},
        {"primary no string", {{"identifiers", ids}, {"labels", labels}, {"values", text}, {"primary", 1}},
            6},
        {"labels no array", {{"identifiers", ids}, {"labels", "l"}, {"values", text}, {"primary", "1"}}, 6},
        {"nothing", {}, 6},
    };
    for (const auto& c : cases) {
        const Value dictionary = Value::dictionary(c.entries);
        EXPECT_EQ(propertyTypeForValue(dictionary, ZRTypeGuess::lenient), c.type) << c.name;
        EXPECT_EQ(propertyTypeForValue(dictionary, ZRTypeGuess::strict), 0) << c.name;
    }
}

TEST(PropertyType, NamesTheColumnOfACustomValue)
{
    const struct {
        ZRPropertyType type;
        std::optional<ZRCustomValueKey> stored;
    } cases[] = {
        {1, {{"stringValue", false}}},
        {2, {{"numberValue", false}}},
        {3, {{"numberValue", false}}},
        {4, {{"dateValue", false}}},
        {5, {{"dataValue", true}}},
        {6, {{"dataValue", true}}},
        {7, {{"dataValue", false}}},
        {257, {{"stringValue", false}}},
        {262, {{"dataValue", true}}},
        {263, {{"dataValue", false}}},
        {0, {}},
        {8, {}},
        {256, {}},
        {264, {}},
        {-1, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(customPropertyValueKeyNameForPropertyType(c.type), c.stored) << c.type;
}

} // namespace
