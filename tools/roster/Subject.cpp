// How properties, labels and values are told from what people type.
#include "Subject.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRPerson.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

using platform::Value;

namespace {

[[noreturn]] void refuse(const std::string& place, std::string_view why)
{
    throw Failure(exitStatus::usage, fmt::format("{}: {}", place, why));
}

std::vector<std::string> propertiesOf(ZRRoster& roster)
{
    return ZRRecord::propertiesWithRoster(ZRPerson::recordClassDescription, &roster);
}

/// The property that has that name, or is called so in the user's language, in any case.
std::string propertyCalled(ZRRoster& roster, const std::string& name)
{
    const std::string folded = platform::foldCase(name);
    for (const auto& property : propertiesOf(roster))
        if (platform::foldCase(property) == folded
            || platform::foldCase(ZRLocalizedPropertyOrLabel(property)) == folded)
            return property;
    return {};
}

std::string labelCalled(const std::string& property, const std::string& name)
{
    const std::string folded = platform::foldCase(name);
    for (const auto& label : builtInLabelsForProperty(property))
        if (platform::foldCase(ZRLocalizedPropertyOrLabel(label)) == folded
            || platform::foldCase(ZREnglishLocalizedPropertyOrLabel(label)) == folded)
            return label;
    return name;
}

[[noreturn]] void refuseProperty(ZRRoster& roster, const std::string& name, const std::string& place)
{
    auto names = propertiesOf(roster);
    std::ranges::sort(names);
    std::string all;
    for (const auto& property : names)
        all += (all.empty() ? "" : ", ") + property;
    refuse(place, fmt::format("people have no property '{}'; they have {}", name, all));
}

template <class Number>
Value numberOf(const std::string& text, const std::string& place)
{
    Number number{};
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || end.ec != std::errc() || end.ptr != text.data() + text.size())
        refuse(place, fmt::format("'{}' is no number", text));
    return Value(number);
}

Value dayOf(const std::string& text, const std::string& place)
{
    const auto day = platform::readDay(text);
    const auto noon = day ? platform::noonOf(*day) : std::nullopt;
    if (!noon)
        refuse(place, fmt::format("'{}' is no day; write one as 1970-05-01", text));
    return Value(*noon);
}

} // namespace

Subject subjectOf(ZRRoster& roster, const std::string& text, const std::string& place)
{
    const auto semicolon = std::min(text.find(';'), text.size());
    const std::string name = text.substr(0, semicolon);
    Subject subject{propertyCalled(roster, name), {}, {}};
    if (const auto dot = name.rfind('.'); subject.property.empty() && dot != std::string::npos) {
        subject.property = propertyCalled(roster, name.substr(0, dot));
        subject.key = name.substr(dot + 1);
    }
    if (subject.property.empty())
        refuseProperty(roster, name, place);
    if (semicolon < text.size())
        subject.label = labelCalled(subject.property, text.substr(semicolon + 1));
    subject.type = roster.typeOfProperty(subject.property, zr::kZRPersonRecordType);
    return subject;
}

Value valueOfText(ZRPropertyType type, const std::string& text, const std::string& place)
{
    switch (type) {
    case kZRPropertyTypeString:
        return Value(text);
    case kZRPropertyTypeInteger:
        return numberOf<std::int64_t>(text, place);
    case kZRPropertyTypeReal:
        return numberOf<double>(text, place);
    case kZRPropertyTypeDate:
        return dayOf(text, place);
    default:
        refuse(place, "a value of this kind cannot be typed");
    }
}
