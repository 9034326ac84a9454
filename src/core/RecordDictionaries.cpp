// How a value stands in a record dictionary, and comes out of it again.
#include "core/RecordDictionaries.h"

#include "core/ZRMultiValue.h"
#include "core/ZRMutableMultiValue.h"

#include <algorithm>

using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

/// Of the keys "values", "labels", "identifiers" and "primary".
Value multiValueDictionary(const ZRMultiValue& values)
{
    const auto texts = [](const std::vector<std::string>& list) {
        return Value::array({list.begin(), list.end()});
    };
    Entries entries{{"values", Value::array(values._allValues())}, {"labels", texts(values._allLabels())},
        {"identifiers", texts(values._allIdentifiers())}};
    if (const auto& primary = values.primaryIdentifier())
        entries.emplace_back("primary", Value(*primary));
    return Value::dictionary(std::move(entries));
}

namespace {

Value multiValueFromDictionary(const Value& dictionary, bool generateIds)
{
    const auto& values = dictionary["values"].asArray();
    const auto& labels = dictionary["labels"].asArray();
    const auto& identifiers = dictionary["identifiers"].asArray();
    const std::size_t count = std::min(values.size(), labels.size());
    if (!generateIds && identifiers.size() >= count && !identifiers.empty()) {
        ZRMultiValue::Entries entries;
        for (std::size_t i = 0; i < count; ++i) {
            entries.identifiers.emplace_back(identifiers[i].asText());
            entries.labels.emplace_back(labels[i].asText());
            entries.values.push_back(values[i]);
        }
        if (dictionary["primary"].isString())
            entries.primaryIdentifier = dictionary["primary"].asText();
        return Value(platform::makeRef<ZRMultiValue>(std::move(entries)));
    }
    const auto made = platform::makeRef<ZRMutableMultiValue>();
    for (std::size_t i = 0; i < count; ++i)
        made->addValue(values[i], labels[i].asText());
    return Value(made);
}

} // namespace

Value valueFromDictionary(const Value& value, ZRPropertyType type, bool generateIds)
{
    return zrIsMultiValueType(type) && value.isDictionary() ? multiValueFromDictionary(value, generateIds)
                                                            : value;
}
