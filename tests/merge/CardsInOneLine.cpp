// How a line becomes a card, and a card a line.
#include "merge/CardsInOneLine.h"

#include "core/ZRMutableMultiValue.h"
#include "core/ZRPropertyType.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace test {

namespace {

Value dateFrom(const std::string& text)
{
    platform::CalendarDay day;
    if (std::sscanf(text.c_str(), "%d-%d-%d", &day.year, &day.month, &day.day) != 3)
        throw std::invalid_argument("no date: " + text);
    return Value(platform::noonOf(day, platform::TimeZone::gmt()).value());
}

Value dictionaryFrom(const std::string& text)
{
    std::vector<std::pair<std::string, Value>> entries;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');)
        entries.emplace_back(part.substr(0, part.find('=')), Value(part.substr(part.find('=') + 1)));
    return Value::dictionary(std::move(entries));
}

Value valueFrom(const std::string& text, ZRPropertyType type)
{
    switch (zrBaseType(type)) {
    case kZRPropertyTypeInteger:
        return Value(std::stoi(text));
    case kZRPropertyTypeReal:
        return Value(std::stod(text));
    case kZRPropertyTypeDate:
        return dateFrom(text);
    case kZRPropertyTypeArray:
        return Value::array({Value(text)});
    case kZRPropertyTypeDictionary:
        return dictionaryFrom(text);
    case kZRPropertyTypeData:
        return Value::data(text);
    default:
        return Value(text);
    }
}

std::string written(const Value& value)
{
    if (value.isDate())
        return platform::iso8601(value.asDate()).substr(0, 10);
    if (value.isData())
        return std::string(value.asBytes());
    if (value.isArray())
        return value.asArray().empty() ? "" : written(value.asArray().front());
    std::string text;
    if (const auto* dictionary = value.asDictionary())
        for (const auto& [key, entry] : dictionary->entries())
            text += (text.empty() ? "" : ",") + key + "=" + written(entry);
    else
        text = value.description();
    std::ranges::replace(text, '\r', '/');
    return text;
}

void addEntry(ZRPerson& card, const std::string& property, const std::string& label, const Value& value)
{
    const Value present = card.valueForProperty(property);
    const auto entries = present.isAbsent() ? platform::makeRef<ZRMutableMultiValue>()
                                            : present.as<ZRMultiValue>()->mutableCopy();
    entries->addValue(value, label);
    card.setValue(Value(entries), property);
}

void addPart(ZRPerson& card, const std::string& part)
{
    const auto colon = part.find(": ");
    const std::string head = part.substr(0, colon), text = part.substr(colon + 2);
    const auto blank = head.find(' ');
    const std::string property = head.substr(0, blank);
    const auto type = ZRRecord::typeOfProperty(card.recordClass(), property, card.nts_Roster());
    if (type == kZRPropertyTypeUnknown)
        throw std::invalid_argument("no property: " + property);
    if (zrIsMultiValueType(type))
        addEntry(card, property, head.substr(blank + 1), valueFrom(text, type));
    else
        card.setValue(valueFrom(text, type), property);
}

bool isOfTheRecord(std::string_view property)
{
    return property == kZRUIDProperty || property == kZRCreationDateProperty
        || property == kZRModificationDateProperty;
}

} // namespace

Ref<ZRPerson> card(const Ref<ZRRoster>& roster, std::string_view line)
{
    constexpr std::string_view between = " | ";
    auto made = ZRPerson::initWithRoster(roster);
    while (!line.empty()) {
        const auto end = std::min(line.find(between), line.size());
        addPart(*made, std::string(line.substr(0, end)));
        line.remove_prefix(std::min(end + between.size(), line.size()));
    }
    return made;
}

std::string lineOf(const ZRPerson& card)
{
    std::string line;
    const auto add = [&](const std::string& head, const Value& value) {
        line += fmt::format("{}{}: {}", line.empty() ? "" : " | ", head, written(value));
    };
    for (const auto& property : ZRRecord::propertiesWithRoster(card.recordClass(), card.nts_Roster())) {
        const Value value = card.valueForProperty(property);
        if (value.isAbsent() || isOfTheRecord(property))
            continue;
        const auto* entries = value.as<ZRMultiValue>();
        if (!entries)
            add(property, value);
        for (ZRIndex i = 0; entries && i < entries->count(); ++i)
            add(property + " " + entries->labelAtIndex(i), entries->valueAtIndex(i));
    }
    return line;
}

void declareCustomProperties(ZRRoster& roster)
{
    std::vector<std::pair<std::string, Value>> types;
    int type = kZRPropertyTypeString;
    for (const char* name : {"text", "number", "real", "day", "list", "table", "bytes"}) {
        types.emplace_back(name, Value(type));
        types.emplace_back(std::string(name) + "s", Value(type | kZRPropertyTypeMulti));
        ++type;
    }
    ZRPerson::addPropertiesAndTypes(Value::dictionary(std::move(types)), &roster);
}

} // namespace test
