// How a record is written down for programs: one JSON object.
#include "CardJson.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/text/Dates.h"
#include "platform/text/Escape.h"

#include <fmt/format.h>

namespace {

using platform::Value;

/// Dates of these properties are days; those of any other are moments.
bool isDay(std::string_view property)
{
    return property == zr::kZRBirthdayProperty || property == zr::kZROtherDatesProperty;
}

Json dateJson(platform::Date date, std::string_view property)
{
    if (!isDay(property))
        return platform::iso8601(date);
    const auto day = platform::calendarDayOf(date);
    return day ? Json(platform::iso8601(*day)) : Json();
}

Json multiValueJson(const ZRMultiValue& values, std::string_view property)
{
    Json json = Json::array();
    const auto primary = values.primaryIdentifier();
    for (ZRIndex index = 0; index < values.count(); ++index) {
        const std::string& identifier = values.identifierAtIndex(index);
        Json entry{{"id", identifier}, {"label", values.labelAtIndex(index)},
            {"value", valueJson(values.valueAtIndex(index), property)}};
        if (identifier == primary)
            entry["primary"] = true;
        json.push_back(std::move(entry));
    }
    return json;
}

} // namespace

Json valueJson(const Value& value, std::string_view property)
{
    switch (value.kind()) {
    case Value::Kind::boolean:
        return value.asBoolean();
    case Value::Kind::integer:
        return value.asInteger();
    case Value::Kind::real:
        return value.asReal();
    case Value::Kind::date:
        return dateJson(value.asDate(), property);
    case Value::Kind::string:
        return std::string(value.asText());
    case Value::Kind::data:
        return platform::encodeBase64(value.asBytes());
    case Value::Kind::array: {
        Json json = Json::array();
        for (const auto& element : value.asArray())
            json.push_back(valueJson(element, property));
        return json;
    }
    case Value::Kind::dictionary: {
        Json json = Json::object();
        for (const auto& [key, element] : value.asDictionary()->entries())
            json[key] = valueJson(element, property);
        return json;
    }
    case Value::Kind::object:
        if (const auto* values = value.as<ZRMultiValue>())
            return multiValueJson(*values, property);
        return nullptr;
    default:
        return nullptr;
    }
}

Json cardJson(ZRRecord& record)
{
    const std::string name = displayName(record);
    Json properties = Json::object();
    for (const auto& property : ZRRecord::propertiesWithRoster(record.recordClass(), record.nts_Roster()))
        if (const Value value = record.valueForProperty(property);
            !value.isNothing() && property != zr::kZRUIDProperty)
            properties[property] = valueJson(value, property);
    Json groups = Json::array();
    for (const auto& group : record.parentGroups())
        groups.push_back(group->uniqueId());
    return Json{{"id", record.uniqueId()}, {"kind", std::string(record._table())}, {"name", name},
        {"properties", std::move(properties)}, {"groups", std::move(groups)}};
}

std::string nameAndId(ZRRecord& record)
{
    return fmt::format("{} ({})", displayName(record), record.uniqueId().substr(0, 8));
}

void printCardDone(const Options& options, std::string_view done, ZRRecord& record)
{
    if (options.json)
        printJson(cardJson(record));
    else
        print(fmt::format("{} {}\n", done, nameAndId(record)));
}

std::string displayName(ZRRecord& record)
{
    // Names that were derived before a change, here or elsewhere, must not be shown.
    record.clearTemporaryCache();
    if (auto* person = dynamic_cast<ZRPerson*>(&record))
        return person->compositeName();
    if (auto* group = dynamic_cast<ZRGroup*>(&record))
        return group->name();
    return record.uniqueId();
}
