// How a record is written down for people: the name, then a line a value.
#include "CardJson.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "format/AddressDisplay.h"
#include "format/ZRPhoneNumberDisplay.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

namespace {

using platform::Value;

/// The order in which a person expects to read a card; what is not named here follows by name.
constexpr std::array readingOrder = {zr::kZRTitleProperty, zr::kZRFirstNameProperty,
    zr::kZRMiddleNameProperty, zr::kZRLastNameProperty, zr::kZRSuffixProperty, zr::kZRNicknameProperty,
    zr::kZRMaidenNameProperty, zr::kZRFirstNamePhoneticProperty, zr::kZRMiddleNamePhoneticProperty,
    zr::kZRLastNamePhoneticProperty, zr::kZRJobTitleProperty, zr::kZRDepartmentProperty,
    zr::kZROrganizationProperty, zr::kZRPhoneProperty, zr::kZREmailProperty, zr::kZRURLsProperty,
    zr::kZRHomePageProperty, zr::kZRAIMInstantProperty, zr::kZRICQInstantProperty,
    zr::kZRJabberInstantProperty, zr::kZRMSNInstantProperty, zr::kZRYahooInstantProperty,
    zr::kZRAddressProperty, zr::kZRBirthdayProperty, zr::kZROtherDatesProperty, zr::kZRRelatedNamesProperty,
    zr::kZRCalendarURIsProperty, zr::kZRNoteProperty};

/// Properties that say nothing to a person who reads a card. The home page is the first of the URLs again.
constexpr std::array internal = {zr::kZRUIDProperty, zr::kZRPersonFlags, zr::kZRRemoteLocationProperty,
    zr::kZRSearchElementProperty, zr::kZRHomePageProperty};

/// How values are shown; what is stored stays as it is. Addresses are written as their country does, numbers
/// as those do who dial them.
class Display {
public:
    explicit Display(ZRRoster& roster) : _roster(roster), _numbers(roster.defaultCountryCode()) { }

    std::string text(const Value& value, std::string_view property) const
    {
        if (property == zr::kZRAddressProperty && value.isDictionary())
            return fmt::format("{}", fmt::join(displayLinesOfAddress(_roster, value), "\n"));
        if (property == zr::kZRPhoneProperty && value.isString())
            return _numbers.stringForNumber(value.asText());
        const Json json = valueJson(value, property);
        return json.is_string() ? json.get<std::string>() : json.dump();
    }

private:
    ZRRoster& _roster;
    ZRPhoneNumberDisplay _numbers;
};

/// "  title      first line of the value", and its further lines below.
void appendLines(std::string& text, std::string title, std::string_view value)
{
    do {
        const auto end = std::min(value.find_first_of("\r\n"), value.size());
        text += fmt::format("  {:<22} {}\n", title, value.substr(0, end));
        value.remove_prefix(std::min(end + (value.substr(end).starts_with("\r\n") ? 2 : 1), value.size()));
        title.clear();
    } while (!value.empty());
}

} // namespace

std::vector<std::string> readableProperties(const ZRRecordClass& recordClass, ZRRoster* roster)
{
    auto names = ZRRecord::propertiesWithRoster(recordClass, roster);
    std::erase_if(
        names, [](const std::string& name) { return std::ranges::find(internal, name) != internal.end(); });
    const auto place = [](const std::string& name) {
        return std::ranges::find(readingOrder, name) - readingOrder.begin();
    };
    std::ranges::sort(names, {}, [&](const std::string& name) { return std::pair(place(name), name); });
    return names;
}

std::string cardText(ZRRecord& record)
{
    const Display display(*record.nts_Roster());
    std::string text = displayName(record) + "\n";
    for (const auto& name : readableProperties(record.recordClass(), record.nts_Roster())) {
        const Value value = record.valueForProperty(name);
        if (value.isNothing())
            continue;
        const std::string title = ZRLocalizedPropertyOrLabel(name);
        const auto* const values = value.as<ZRMultiValue>();
        if (!values)
            appendLines(text, title, display.text(value, name));
        for (ZRIndex index = 0; values && index < values->count(); ++index)
            appendLines(text,
                fmt::format("{} ({})", title, ZRLocalizedPropertyOrLabel(values->labelAtIndex(index))),
                display.text(values->valueAtIndex(index), name));
    }
    if (auto* person = dynamic_cast<ZRPerson*>(&record))
        if (const auto picture = person->imageData(); picture.isData())
            appendLines(text, "Picture", fmt::format("{} bytes", picture.asBytes().size()));
    appendLines(text, "Unique id", record.uniqueId());
    return text;
}
