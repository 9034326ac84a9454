// A person as plain texts: what tests of round trips compare.
#include "PlainCard.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMutableMultiValue.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace test {

namespace {

using platform::Value;

bool isDayProperty(std::string_view property)
{
    return property == kZRBirthdayProperty || property == kZROtherDatesProperty;
}

std::string plainText(const Value& value)
{
    if (!value.isDate())
        return std::string(value.isString() ? std::string(value.asText()) : value.description());
    const auto day = platform::calendarDayOf(value.asDate());
    return day ? platform::iso8601(*day) : "no day";
}

Value valueOf(const std::string& text, std::string_view property)
{
    if (isDayProperty(property))
        if (const auto day = platform::readDay(text))
            return *platform::noonOf(*day);
    return text;
}

std::vector<PlainEntry> plainEntries(const ZRMultiValue& values)
{
    std::vector<PlainEntry> entries;
    for (ZRIndex at = 0; at < values.count(); ++at) {
        PlainEntry& entry = entries.emplace_back();
        entry.label = values.labelAtIndex(at);
        entry.isPrimary = values.primaryIndex() == at;
        const Value& value = values.valueAtIndex(at);
        if (!value.isDictionary())
            entry.value[""] = plainText(value);
        else
            for (const auto& [key, part] : value.asDictionary()->entries())
                entry.value[key] = plainText(part);
    }
    return entries;
}

Value multiValueOf(const std::vector<PlainEntry>& entries, std::string_view property)
{
    const auto values = platform::makeRef<ZRMutableMultiValue>();
    for (const PlainEntry& entry : entries) {
        Value value;
        if (entry.value.contains("")) {
            value = valueOf(entry.value.at(""), property);
        } else {
            std::vector<std::pair<std::string, Value>> parts(entry.value.begin(), entry.value.end());
            value = Value::dictionary(std::move(parts));
        }
        values->addValue(value, entry.label);
        if (entry.isPrimary)
            values->setPrimaryIdentifier(values->identifierAtIndex(values->count() - 1));
    }
    return Value(values);
}

/// The text that stands in quotes at the front of `rest`, from where it is taken.
std::string takeQuoted(std::string_view& rest)
{
    std::string text;
    for (rest.remove_prefix(1); rest.front() != '"'; rest.remove_prefix(1)) {
        char character = rest.front();
        if (character == '\\') {
            rest.remove_prefix(1);
            character = rest.front() == 'n' ? '\n' : rest.front() == 'r' ? '\r' : rest.front();
        }
        text += character;
    }
    rest.remove_prefix(1);
    return text;
}

} // namespace

PlainCard PlainCard::of(const ZRPerson& person)
{
    PlainCard card;
    for (const auto& property : ZRRecord::propertiesWithRoster(person.recordClass(), person.roster().get())) {
        const Value value = person.valueForProperty(property);
        if (value.isNothing() || property == kZRUIDProperty || property == kZRCreationDateProperty
            || property == kZRModificationDateProperty || property == kZRImageProperty)
            continue;
        if (property == kZRPersonFlags)
            card.flags = value.asInteger();
        else if (const auto* values = value.as<ZRMultiValue>())
            card.entries[property] = plainEntries(*values);
        else
            card.texts[property] = plainText(value);
    }
    card.photo = person.imageData().asBytes();
    for (const auto& group : person.parentGroups())
        card.groups.push_back(static_cast<const ZRGroup&>(*group).name());
    std::ranges::sort(card.groups);
    return card;
}

platform::Ref<ZRPerson> PlainCard::addTo(const platform::Ref<ZRRoster>& roster) const
{
    const auto person = ZRPerson::initWithRoster(roster);
    for (const auto& [property, text] : texts)
        person->setValue(valueOf(text, property), property);
    for (const auto& [property, values] : entries)
        person->setValue(multiValueOf(values, property), property);
    if (flags)
        person->setValue(flags, kZRPersonFlags);
    if (!photo.empty())
        person->setImageData(Value::data(photo));
    return person;
}

PlainCard PlainCard::read(const std::string& text)
{
    PlainCard card;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isPrimary = line.starts_with('*');
        const auto end = line.find_first_of(" :", isPrimary);
        const auto property = line.substr(isPrimary, end - isPrimary);
        std::string_view rest = line;
        rest.remove_prefix(end + 2);
        if (property == "flags") {
            card.flags = std::stoi(std::string(rest));
        } else if (line[end] == ':') {
            card.texts[property] = takeQuoted(rest);
        } else {
            PlainEntry entry{takeQuoted(rest), {}, isPrimary};
            rest.remove_prefix(1);
            for (auto equals = rest.find('='); equals != rest.npos; equals = rest.find('=')) {
                const std::string key(rest.substr(1, equals - 1));
                rest.remove_prefix(equals + 1);
                entry.value[key] = takeQuoted(rest);
            }
            card.entries[property].push_back(entry);
        }
    }
    return card;
}

std::string PlainCard::text() const
{
    std::string text;
    for (const auto& [property, value] : texts)
        text += fmt::format("{}: {:?}\n", property, value);
    for (const auto& [property, values] : entries)
        for (const PlainEntry& entry : values) {
            text += fmt::format("{}{} [{:?}]", entry.isPrimary ? "*" : "", property, entry.label);
            for (const auto& [key, value] : entry.value)
                text += fmt::format(" {}={:?}", key, value);
            text += "\n";
        }
    if (flags != 0 || !photo.empty())
        text += fmt::format("flags: {}, picture: {} bytes\n", flags, photo.size());
    for (const auto& group : groups)
        text += "in " + group + "\n";
    return text;
}

} // namespace test
