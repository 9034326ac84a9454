// Cards as a table of comma-separated values (RFC 4180), a row a card.
#include "CardJson.h"
#include "CardWriter.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

using platform::Value;

namespace {

constexpr std::array addressParts = {zr::kZRAddressStreetKey, zr::kZRAddressCityKey, zr::kZRAddressStateKey,
    zr::kZRAddressZIPKey, zr::kZRAddressCountryKey, zr::kZRAddressCountryCodeKey};

/// The columns of one property.
struct Columns {
    std::string property;
    ZRPropertyType type = kZRPropertyTypeUnknown;
    /// Of a multi-value: for how many entries there are columns.
    ZRIndex entries = 1;

    bool isMulti() const { return zrIsMultiValueType(type); }
    bool isAddress() const { return property == zr::kZRAddressProperty; }
};

const ZRMultiValue* entriesOf(const Value& value) { return value.as<ZRMultiValue>(); }

std::string textOf(const Value& value, std::string_view property)
{
    if (value.isNothing())
        return {};
    const Json json = valueJson(value, property);
    return json.is_string() ? json.get<std::string>() : json.dump();
}

std::string quoted(const std::string& text)
{
    const bool hasEdges = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!hasEdges && text.find_first_of(",\"\r\n") == text.npos)
        return text;
    std::string field = "\"";
    for (const char c : text)
        field.append(c == '"' ? 2 : 1, c);
    return field + '"';
}

class Line {
public:
    void add(const std::string& text)
    {
        if (!_text.empty() || _hasFields)
            _text += ',';
        _hasFields = true;
        _text += quoted(text);
    }
    std::string end() { return std::move(_text) + "\r\n"; }

private:
    std::string _text;
    bool _hasFields = false;
};

class CsvWriter final : public CardWriter {
public:
    CsvWriter(ExportScope scope, ZRRoster& roster)
    {
        const auto types = ZRRecord::propertyTypesWithRoster(ZRPerson::recordClassDescription, &roster);
        for (const auto& property : readableProperties(ZRPerson::recordClassDescription, &roster))
            if (const auto at = types.find(property); at != types.end() && hasColumns(property, at->second)
                && (scope.notes || property != zr::kZRNoteProperty))
                _columns.push_back({property, at->second});
        _columns.push_back({std::string(zr::kZRPersonFlags), kZRPropertyTypeInteger});
    }

    bool looksFirst() const override { return true; }

    void look(ZRPerson& person) override
    {
        for (auto& columns : _columns)
            if (columns.isMulti())
                if (const Value value = person.valueForProperty(columns.property); entriesOf(value))
                    columns.entries = std::max(columns.entries, entriesOf(value)->count());
        _groups = std::max(_groups, person.parentGroups().size());
    }

    std::string begin() override
    {
        Line line;
        line.add("Id");
        for (const auto& columns : _columns)
            addTitles(columns, line);
        for (std::size_t number = 1; number <= _groups; ++number)
            line.add(fmt::format("Group {}", number));
        return line.end();
    }

    std::string card(ZRPerson& person) override
    {
        Line line;
        line.add(person.uniqueId());
        for (const auto& columns : _columns)
            addValues(columns, person.valueForProperty(columns.property), line);
        const auto groups = person.parentGroups();
        for (std::size_t at = 0; at < _groups; ++at)
            line.add(at < groups.size() ? displayName(*groups[at]) : "");
        return line.end();
    }

private:
    static void addTitles(const Columns& columns, Line& line)
    {
        if (!columns.isMulti())
            return line.add(columns.property);
        for (ZRIndex number = 1; number <= columns.entries; ++number) {
            line.add(fmt::format("{} {} Label", columns.property, number));
            if (!columns.isAddress())
                line.add(fmt::format("{} {} Value", columns.property, number));
            else
                for (const auto part : addressParts)
                    line.add(fmt::format("{} {} {}", columns.property, number, part));
        }
    }

    static void addValues(const Columns& columns, const Value& value, Line& line)
    {
        if (!columns.isMulti())
            return line.add(textOf(value, columns.property));
        const auto* const entries = entriesOf(value);
        for (ZRIndex at = 0; at < columns.entries; ++at) {
            const bool isThere = entries && at < entries->count();
            line.add(isThere ? ZREnglishLocalizedPropertyOrLabel(entries->labelAtIndex(at)) : "");
            const Value entry = isThere ? entries->valueAtIndex(at) : Value();
            if (!columns.isAddress())
                line.add(textOf(entry, columns.property));
            else
                for (const auto part : addressParts)
                    line.add(std::string(entry[part].asText()));
        }
    }

    std::vector<Columns> _columns;
    std::size_t _groups = 1;
};

} // namespace

bool hasColumns(std::string_view property, ZRPropertyType type)
{
    switch (zrBaseType(type)) {
    case kZRPropertyTypeString:
    case kZRPropertyTypeInteger:
    case kZRPropertyTypeReal:
    case kZRPropertyTypeDate:
        return true;
    case kZRPropertyTypeDictionary:
        return property == zr::kZRAddressProperty;
    default:
        return false;
    }
}

std::unique_ptr<CardWriter> csvWriter(ExportScope scope, ZRRoster& roster)
{
    return std::make_unique<CsvWriter>(scope, roster);
}
