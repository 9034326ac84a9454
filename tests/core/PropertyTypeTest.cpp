// Which values fit which types, and which type a value asks for.
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPropertyType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

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
        {"multi-extreme", multi({1, INT64_MIN, UINT64_MAX}), {258, 259}, 0, 0},
        {"mixed multi-value", multi({"a", 1}), {}, 0, 0},
        {"multi-number", multi({1, 1.0}), {}, 0, 0},
        {"multi-boolean", multi({true, false}), {}, 0, 0},
        {"multi-value with a null marker", multi({"a", NullMarker()}), {}, 0, 0},
        {"multi-multi-value", multi({multi({})}), {}, 0, 0},
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
    using Entries = std::map<std::string, Value>;
    const Entries whole{{"identifiers", strings({"1"})}, {"labels", strings({"l"})},
        {"values", strings({"a"})}, {"primary", "1"}};
    const auto with = [&](const char* key, const Value& value) {
        Entries changed = whole;
        changed[key] = value;
        return changed;
    };
    const auto without = [&](const char* key) {
        Entries changed = whole;
        changed.erase(key);
        return changed;
    };
    const struct {
        const char* name;
        Entries entries;
        ZRPropertyType type;
    } cases[] = {
        {"of strings", whole, 257},
        {"by its last value", with("values", Value::array({"a", 2.5})), 259},
        {"of dictionaries", with("values", Value::array({Value::dictionary({{"City", "Bonn"}})})), 262},
        {"empty", with("values", strings({})), 0},
        {"without primary", without("primary"), 6},
        {"one key more", with("x", 1), 6},
        {"primary no string", with("primary", 1), 6},
        {"labels no array", with("labels", "l"), 6},
        {"nothing", {}, 6},
    };
    for (const auto& c : cases) {
        const Value dictionary = Value::dictionary({c.entries.begin(), c.entries.end()});
        EXPECT_EQ(propertyTypeForValue(dictionary, ZRTypeGuess::lenient), c.type) << c.name;
        EXPECT_EQ(propertyTypeForValue(dictionary, ZRTypeGuess::strict), 0) << c.name;
    }
}

// Which column has which type is seen when a process reads what another one wrote.
TEST(PropertyType, HasAColumnForCustomValuesOnlyWhereItIsOne)
{
    for (const ZRPropertyType type : {-1, 0, 8, 256, 264})
        EXPECT_FALSE(customPropertyValueKeyNameForPropertyType(type)) << type;
}

} // namespace
