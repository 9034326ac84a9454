// How a country's format becomes rows of fields.
#include "format/AddressFieldLayout.h"

#include "format/AddressFormat.h"
#include "format/ZRComponentLayoutController.h"

#include "core/ZRConstants.h"
#include "platform/value/AttributedString.h"
#include "store/ZRRoster.h"

using platform::Value;

namespace {

using Row = std::vector<AddressField>;

constexpr std::string_view kTitleJoiner = " ";

std::string textOfField(ZRRoster& roster, const Value& address, std::string_view key)
{
    if (key == kZRPostalAddressValueKey)
        return roster.formattedAddressFromDictionary(address)->string();
    return std::string(address[key].asText());
}

Row inVisualOrder(const Row& row)
{
    std::vector<std::string> titles;
    for (const auto& field : row)
        titles.push_back(field.title);
    Row ordered;
    for (const auto index : layoutOrderOfComponentsJoinedByString(titles, kTitleJoiner))
        ordered.push_back(row[index]);
    return ordered;
}

} // namespace

std::vector<Row> layoutFieldsForCountryCode(
    ZRRoster& roster, std::string_view code, const Value& address, FieldMode mode)
{
    const std::string country = countryOfAddress(
        roster, Value::dictionary({{std::string(zr::kZRAddressCountryCodeKey), Value(code)}}));
    const Value& format = addressFormatOfCountry(country);
    const auto shown = mode == FieldMode::edit ? format["FORMAT"].asText() : kZRPostalAddressValueKey;
    std::vector<Row> rows;
    for (const auto& line : addressLinesOfTemplate(shown)) {
        Row row;
        for (const auto key : line) {
            const auto text = textOfField(roster, address, key);
            row.push_back({std::string(key), std::string(format[key].asText()), text,
                key == zr::kZRAddressStreetKey, mode == FieldMode::show && text.empty()});
        }
        rows.push_back(inVisualOrder(row));
    }
    return rows;
}
