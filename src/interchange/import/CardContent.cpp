// How cards are read to be compared, and when they say the same.
#include "interchange/import/CardContent.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "merge/MergedProperties.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Value;

namespace interchange {

namespace {

bool saysNothing(const Value& value)
{
    const auto* const entries = value.as<ZRMultiValue>();
    return value.isNothing() || (entries && entries->count() == 0);
}

/// Whether the text is the note, or a part of it that stands between the ends of lines: an update appends
/// notes.
bool isInNote(std::string_view note, std::string_view text)
{
    constexpr std::string_view lineEnds = "\r\n";
    for (auto at = note.find(text); at != std::string_view::npos; at = note.find(text, at + 1)) {
        const std::size_t end = at + text.size();
        if ((at == 0 || lineEnds.find(note[at - 1]) != lineEnds.npos)
            && (end == note.size() || lineEnds.find(note[end]) != lineEnds.npos))
            return true;
    }
    return false;
}

/// Whether the card's value stays as it is when `incoming` flows in.
bool knows(std::string_view property, const Value& own, const Value& incoming)
{
    if (property == zr::kZRNoteProperty)
        return isInNote(own.asText(), incoming.asText());
    const auto* const entries = incoming.as<ZRMultiValue>();
    const auto* const known = own.as<ZRMultiValue>();
    if (!entries || !known)
        return own == incoming;
    return std::ranges::all_of(entries->_allValues(),
        [&](const Value& value) { return known->_containsValue(value) != kZRNotFound; });
}

} // namespace

bool saysSame(const Value& a, const Value& b)
{
    const auto* const entries = a.as<ZRMultiValue>();
    const auto* const others = b.as<ZRMultiValue>();
    return entries && others ? entries->isEqual(*others, ZRMultiValue::CompareIdentifiers::no) : a == b;
}

CardContent::CardContent(platform::Ref<const ZRPerson> person, const ZRPropertyTypes& properties)
    : _person(std::move(person))
{
    ZRRoster& roster = *_person->nts_Roster();
    locked(roster, ZRAccess::read, [&]() ZR_NTS {
        for (const auto& [property, type] : properties)
            if (!merge::isOfOneCardOnly(property))
                if (Value value = _person->nts_ValueForProperty(property); !saysNothing(value))
                    _properties.emplace_back(property, std::move(value));
    });
}

const Value& CardContent::value(std::string_view property) const
{
    static const Value absent;
    const auto at = std::ranges::lower_bound(
        _properties, property, {}, [](const auto& entry) -> std::string_view { return entry.first; });
    return at != _properties.end() && at->first == property ? at->second : absent;
}

const Value& CardContent::picture() const
{
    if (!_picture)
        _picture = _person->imageData();
    return *_picture;
}

bool CardContent::says(const CardContent& other) const
{
    return std::ranges::equal(_properties, other._properties, [](const auto& a, const auto& b) {
        return a.first == b.first && saysSame(a.second, b.second);
    }) && picture() == other.picture();
}

bool CardContent::knowsNoteOf(const CardContent& incoming) const
{
    const Value& note = incoming.value(zr::kZRNoteProperty);
    return !note.isNothing() && knows(zr::kZRNoteProperty, value(zr::kZRNoteProperty), note);
}

bool CardContent::knowsAllOf(const CardContent& incoming) const
{
    return std::ranges::all_of(incoming._properties, [&](const auto& entry) {
        return knows(entry.first, value(entry.first), entry.second);
    }) && (incoming.picture().isNothing() || picture() == incoming.picture());
}

} // namespace interchange
