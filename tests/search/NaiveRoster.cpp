// What cards and groups say as a whole: their types, their text, and what a save leaves of them.
#include "search/NaiveRoster.h"

#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "platform/text/Digits.h"

#include <algorithm>

namespace test {

namespace {

constexpr std::string_view kIndexedTexts[]{zr::kZRFirstNameProperty, zr::kZRMiddleNameProperty,
    zr::kZRLastNameProperty, zr::kZRFirstNamePhoneticProperty, zr::kZRMiddleNamePhoneticProperty,
    zr::kZRLastNamePhoneticProperty, zr::kZRNicknameProperty, zr::kZRMaidenNameProperty, zr::kZRTitleProperty,
    zr::kZRSuffixProperty, zr::kZRDepartmentProperty, zr::kZROrganizationProperty, zr::kZRJobTitleProperty,
    zr::kZRNoteProperty};

constexpr std::string_view kMessaging[]{zr::kZRAIMInstantProperty, zr::kZRJabberInstantProperty,
    zr::kZRMSNInstantProperty, zr::kZRYahooInstantProperty, zr::kZRICQInstantProperty};

bool isContent(std::string_view property, const Value& value)
{
    if (property == zr::kZRAddressProperty)
        return std::ranges::any_of(
            kSearchedAddressParts, [&](std::string_view part) { return !value[part].asText().empty(); });
    return !value.isString() || !value.asText().empty();
}

std::string_view className(NaiveRecord::Kind kind)
{
    switch (kind) {
    case NaiveRecord::Kind::person:
        return zr::kZRPersonRecordType;
    case NaiveRecord::Kind::group:
        return zr::kZRGroupRecordType;
    default:
        return zr::kZRSmartGroupRecordType;
    }
}

} // namespace

ZRPropertyType typeOf(const NaiveRoster& roster, std::string_view property, NaiveRecord::Kind kind)
{
    if (const auto type = builtInTypeOfProperty(className(kind), property))
        return type;
    if (kind == NaiveRecord::Kind::smartGroup)
        return kZRPropertyTypeUnknown;
    const auto& types = kind == NaiveRecord::Kind::person ? roster.personTypes : roster.groupTypes;
    const auto at = types.find(property);
    return at == types.end() ? kZRPropertyTypeUnknown : at->second;
}

bool isCustom(const NaiveRoster& roster, std::string_view property, NaiveRecord::Kind kind)
{
    return !builtInTypeOfProperty(className(kind), property) && typeOf(roster, property, kind);
}

std::string indexTextOf(const NaiveRecord& record)
{
    std::string text;
    const auto append = [&](const Value& piece) {
        if (!piece.asText().empty())
            text.append(piece.asText()).append(" ");
    };
    const auto forEntriesOf = [&](std::string_view property, const auto& body) {
        if (const auto at = record.entries.find(property); at != record.entries.end())
            for (const auto& entry : at->second)
                body(entry.value);
    };
    for (const auto property : kIndexedTexts)
        if (const auto at = record.values.find(property); at != record.values.end())
            append(at->second);
    forEntriesOf(zr::kZRURLsProperty, append);
    forEntriesOf(zr::kZRAddressProperty, [&](const Value& address) {
        for (const auto part : {"Street", "City", "State", "ZIP", "Sama", "Region", "Country"})
            append(address[part]);
        for (const auto& [key, part] : address.asDictionary()->entries())
            if (std::ranges::find(kAddressParts, key) == kAddressParts.end())
                append(part);
    });
    forEntriesOf(zr::kZREmailProperty, append);
    forEntriesOf(zr::kZRPhoneProperty, [&](const Value& number) {
        append(number);
        append(Value(platform::digitsOnly(number.asText())));
    });
    for (const auto property : kMessaging)
        forEntriesOf(property, append);
    forEntriesOf(zr::kZRRelatedNamesProperty, append);
    return text;
}

void dropEmptyEntries(NaiveRecord& record)
{
    constexpr std::string_view kept[]{zr::kZRRemoteLocationProperty, zr::kZRCalendarURIsProperty};
    record.hasEmptyNote = false;
    for (auto& [name, entries] : record.entries) {
        const std::string_view property = name;
        if (builtInTypeOfProperty(className(record.kind), property)
            && std::ranges::find(kept, property) == std::end(kept))
            std::erase_if(
                entries, [&](const NaiveEntry& entry) { return !isContent(property, entry.value); });
    }
}

} // namespace test
