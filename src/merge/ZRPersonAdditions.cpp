// What becomes of a card's value when another card brings one for the same property.
#include "merge/ZRPersonAdditions.h"

#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRStringAdditions.h"
#include "format/ZRPhoneFormatter.h"
#include "platform/text/Dates.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Ref;
using platform::Value;

namespace {

/// Runs `body` as one operation on the person.
template <class Body>
void change(ZRPerson& person, Body body)
{
    locked(*person.nts_Roster(), ZRAccess::write, body);
}

std::string entryKey(std::string_view property, std::string_view identifier)
{
    return fmt::format("{}.{}", property, identifier);
}

std::string appended(std::string_view text, std::string_view behind)
{
    return text.empty() ? std::string(behind) : fmt::format("{}\r{}", text, behind);
}

/// The one entry with that label; kZRNotFound when there is none, or more than one.
ZRIndex onlyEntryLabelled(const ZRMultiValue& entries, std::string_view label)
{
    const auto& labels = entries._allLabels();
    const auto first = std::ranges::find(labels, label);
    if (first == labels.end() || std::find(first + 1, labels.end(), label) != labels.end())
        return kZRNotFound;
    return first - labels.begin();
}

/// As somebody reads it in a note.
std::string writtenOut(const Value& value)
{
    const auto day = value.isDate() ? platform::calendarDayOf(value.asDate()) : std::nullopt;
    return day ? platform::iso8601(*day) : value.description();
}

bool isTooRichForANote(ZRPropertyType type)
{
    return type == kZRPropertyTypeArray || type == kZRPropertyTypeDictionary || type == kZRPropertyTypeData;
}

/// The number in the user's format; anything else as it is.
Value formattedNumber(const Value& number)
{
    const auto formatted = ZRPhoneFormatter::sharedPhoneFormatter()->stringForObjectValue(number);
    return formatted ? Value(*formatted) : number;
}

} // namespace

// ---- update

void ZRPersonAdditions::updateNote(const Value& note, ZRPropertyChanges& changes)
{
    change(_person, [&]() ZR_NTS { nts_updateNote(note, changes); });
}

void ZRPersonAdditions::updateSingleValue(
    const Value& value, std::string_view property, ZRPropertyChanges& changes)
{
    change(_person, [&]() ZR_NTS { nts_updateSingleValue(value, property, changes); });
}

void ZRPersonAdditions::updateMultiValue(
    const Value& value, std::string_view property, ZRPropertyChanges& changes)
{
    change(_person, [&]() ZR_NTS { nts_updateMultiValue(value, property, changes); });
}

void ZRPersonAdditions::nts_updateValue(
    const Value& value, std::string_view property, ZRPropertyType type, ZRPropertyChanges& changes)
{
    if (property == zr::kZRNoteProperty)
        nts_updateNote(value, changes);
    else if (zrIsMultiValueType(type))
        nts_updateMultiValue(value, property, changes);
    else
        nts_updateSingleValue(value, property, changes);
}

void ZRPersonAdditions::nts_updateNote(const Value& note, ZRPropertyChanges& changes)
{
    const Value present = _person.nts_ValueForProperty(zr::kZRNoteProperty);
    if (note.isNothing() || note == present)
        return;
    _person.nts_SetValue(Value(appended(present.asText(), note.asText())), zr::kZRNoteProperty);
    changes[std::string(zr::kZRNoteProperty)] =
        present.isNothing() ? ZRPropertyAddedColor : ZRPropertyChangedColor;
}

void ZRPersonAdditions::nts_updateSingleValue(
    const Value& value, std::string_view property, ZRPropertyChanges& changes)
{
    const Value present = _person.nts_ValueForProperty(property);
    if (value.isNothing() || value == present)
        return;
    _person.nts_SetValue(value, property);
    changes[std::string(property)] = present.isNothing() ? ZRPropertyAddedColor : ZRPropertyChangedColor;
}

void ZRPersonAdditions::nts_updateMultiValue(
    const Value& value, std::string_view property, ZRPropertyChanges& changes)
{
    const auto* imported = value.as<ZRMultiValue>();
    if (!imported)
        return;
    const Value present = _person.nts_ValueForProperty(property);
    if (present.isNothing()) {
        _person.nts_SetValue(value, property);
        changes[std::string(property)] = ZRPropertyAddedColor;
        return;
    }
    const Ref<ZRMutableMultiValue> entries = present.as<ZRMultiValue>()->mutableCopy();
    bool hasChanged = false;
    for (ZRIndex index = 0; index < imported->count(); ++index) {
        const Value& entry = imported->valueAtIndex(index);
        const std::string& label = imported->labelAtIndex(index);
        if (entries->_containsValue(entry) != kZRNotFound)
            continue;
        hasChanged = true;
        if (const ZRIndex only = onlyEntryLabelled(*entries, label); only != kZRNotFound) {
            entries->replaceValueAtIndex(only, entry);
            changes[entryKey(property, entries->identifierAtIndex(only))] = ZRPropertyChangedColor;
        } else {
            changes[entryKey(property, entries->addValue(entry, label))] = ZRPropertyAddedColor;
        }
    }
    if (hasChanged)
        _person.nts_SetValue(Value(entries), property);
}

// ---- merge

void ZRPersonAdditions::mergeNote(const Value& note)
{
    ZRPropertyChanges unused;
    updateNote(note, unused);
}

void ZRPersonAdditions::mergeSingleValue(const Value& value, std::string_view property)
{
    change(_person, [&]() ZR_NTS {
        nts_mergeSingleValue(value, property,
            ZRRecord::nts_TypeOfProperty(_person.recordClass(), property, *_person.nts_Roster()));
    });
}

void ZRPersonAdditions::mergeMultiValue(const Value& value, std::string_view property)
{
    change(_person, [&]() ZR_NTS { nts_mergeMultiValue(value, property); });
}

void ZRPersonAdditions::nts_mergeValue(const Value& value, std::string_view property, ZRPropertyType type)
{
    ZRPropertyChanges unused;
    if (property == zr::kZRNoteProperty)
        nts_updateNote(value, unused);
    else if (zrIsMultiValueType(type))
        nts_mergeMultiValue(value, property);
    else
        nts_mergeSingleValue(value, property, type);
}

void ZRPersonAdditions::nts_mergeSingleValue(
    const Value& value, std::string_view property, ZRPropertyType type)
{
    if (value.isNothing())
        return;
    const Value present = _person.nts_ValueForProperty(property);
    if (present.isNothing())
        _person.nts_SetValue(value, property);
    else if (!isTooRichForANote(type) && !zrCaseInsensitiveIsEqual(present, value))
        _person.nts_SetValue(
            Value(appended(_person.nts_ValueForProperty(zr::kZRNoteProperty).asText(), writtenOut(value))),
            zr::kZRNoteProperty);
}

void ZRPersonAdditions::nts_mergeMultiValue(const Value& value, std::string_view property)
{
    const auto* incoming = value.as<ZRMultiValue>();
    if (!incoming)
        return;
    const Value present = _person.nts_ValueForProperty(property);
    if (present.isNothing()) {
        _person.nts_SetValue(value, property);
        return;
    }
    const Ref<ZRMutableMultiValue> entries = present.as<ZRMultiValue>()->mutableCopy();
    for (ZRIndex index = 0; index < incoming->count(); ++index) {
        Value entry = incoming->valueAtIndex(index);
        const std::string& label = incoming->labelAtIndex(index);
        ZRIndex found = entries->_containsValue(entry);
        if (found == kZRNotFound && property == zr::kZRPhoneProperty) {
            entry = formattedNumber(entry);
            found = entries->_containsValue(entry);
        }
        if (found == kZRNotFound || entries->labelAtIndex(found) != label)
            entries->addValue(entry, label);
    }
    if (entries->count() != present.as<ZRMultiValue>()->count())
        _person.nts_SetValue(Value(entries), property);
}
