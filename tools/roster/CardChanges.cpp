// How --set and --unset are read and applied.
#include "CardChanges.h"

#include "Subject.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

using platform::Ref;
using platform::Value;

namespace {

/// What the roster keeps by itself, or derives.
constexpr std::array kept = {zr::kZRUIDProperty, zr::kZRCreationDateProperty, zr::kZRModificationDateProperty,
    zr::kZRRemoteLocationProperty, zr::kZRHomePageProperty};

constexpr std::array addressParts = {zr::kZRAddressStreetKey, zr::kZRAddressCityKey, zr::kZRAddressStateKey,
    zr::kZRAddressZIPKey, zr::kZRAddressCountryKey, zr::kZRAddressCountryCodeKey};

constexpr ZRPropertyType kMultiDictionary = kZRPropertyTypeMulti | kZRPropertyTypeDictionary;

/// One --set or --unset in its pieces.
struct Change {
    std::string place;
    Subject subject;
    bool adds = false;
    /// Absent behind a subject alone.
    std::optional<std::string> value;

    bool isMulti() const { return zrIsMultiValueType(subject.type); }
    ZRPropertyType base() const { return zrBaseType(subject.type); }
};

[[noreturn]] void refuse(const Change& change, std::string_view why)
{
    throw Failure(exitStatus::usage, fmt::format("{}: {}", change.place, why));
}

[[noreturn]] void refuseMissing(const Change& change, std::string_view what)
{
    throw Failure(exitStatus::refused, fmt::format("{}: the card has no {}", change.place, what));
}

/// The part of an address that has that name in any case.
std::string partCalled(const Change& change)
{
    for (const auto part : addressParts)
        if (platform::foldCase(part) == platform::foldCase(change.subject.key))
            return std::string(part);
    refuse(change,
        fmt::format(
            "an address has no '{}'; its parts are {}", change.subject.key, fmt::join(addressParts, ", ")));
}

void requireSense(const Change& change, bool hasLabel)
{
    const Subject& subject = change.subject;
    if (std::ranges::find(kept, subject.property) != kept.end())
        refuse(change, fmt::format("{} is kept by the roster itself", subject.property));
    if (!change.isMulti() && (hasLabel || change.adds))
        refuse(change, fmt::format("{} has one value, without a label", subject.property));
    if (!subject.key.empty() && subject.type != kMultiDictionary)
        refuse(change, fmt::format("{} has no parts", subject.property));
    if (hasLabel && subject.label.empty()) {
        std::vector<std::string> words;
        for (const auto& label : builtInLabelsForProperty(subject.property))
            words.push_back(ZRLocalizedPropertyOrLabel(label));
        refuse(
            change, fmt::format("a label stands behind ';': {} or one of your own", fmt::join(words, ", ")));
    }
}

Change changeOf(ZRRoster& roster, std::string_view option, const std::string& text)
{
    Change change{fmt::format("{} '{}'", option, text), {}, false, {}};
    const auto equals = std::min(text.find('='), text.size());
    std::string subject = text.substr(0, equals);
    if (equals < text.size())
        change.value = text.substr(equals + 1);
    if (change.value && subject.ends_with('+')) {
        change.adds = true;
        subject.pop_back();
    }
    change.subject = subjectOf(roster, subject, change.place);
    requireSense(change, subject.find(';') != subject.npos);
    if (!change.subject.key.empty())
        change.subject.key = partCalled(change);
    return change;
}

// ---- entries

Ref<ZRMutableMultiValue> entriesOf(const ZRPerson& person, const std::string& property)
{
    const Value value = person.valueForProperty(property);
    const auto* const entries = value.as<ZRMultiValue>();
    return entries ? entries->mutableCopy() : platform::makeRef<ZRMutableMultiValue>();
}

void store(ZRPerson& person, const std::string& property, const ZRMutableMultiValue& entries)
{
    person.setValue(entries.count() > 0 ? Value(entries.copy()) : Value(), property);
}

/// Labels of one's own are known in any case.
bool isCalled(const std::string& label, const std::string& name)
{
    return label == name || platform::foldCase(label) == platform::foldCase(name);
}

/// The first entry that is meant: of the label, or the primary one without.
ZRIndex entryMeant(const ZRMultiValue& entries, const std::string& label)
{
    if (label.empty())
        return entries.count() > 0 ? entries.primaryIndex() : kZRNotFound;
    const auto& labels = entries._allLabels();
    const auto at =
        std::ranges::find_if(labels, [&](const std::string& held) { return isCalled(held, label); });
    return at == labels.end() ? kZRNotFound : at - labels.begin();
}

std::string labelForNew(const Subject& subject)
{
    if (!subject.label.empty())
        return subject.label;
    for (const auto& offered :
        {initialFieldsForProperty(subject.property), builtInLabelsForProperty(subject.property)})
        if (!offered.empty())
            return offered.front();
    return std::string(zr::kZROtherLabel);
}

/// Equal as people see it: the same text in any case, or the same day.
bool meansValue(const Value& held, const Value& named)
{
    if (held.isString() && named.isString())
        return platform::foldCase(held.asText()) == platform::foldCase(named.asText());
    if (held.isDate() && named.isDate())
        return platform::calendarDayOf(held.asDate()) == platform::calendarDayOf(named.asDate());
    return held == named;
}

Value withPart(const Value& address, const std::string& part, const Value& value)
{
    std::vector<std::pair<std::string, Value>> entries;
    if (address.isDictionary())
        entries = address.asDictionary()->entries();
    std::erase_if(entries, [&](const auto& entry) { return entry.first == part; });
    entries.emplace_back(part, value);
    return Value::dictionary(std::move(entries));
}

// ---- --set

/// The settings of one command: knows which entries it added, and what was set already.
class Settings {
public:
    explicit Settings(ZRPerson& person) : _person(person) { }

    void apply(const Change& change)
    {
        const Value value = valueOf(change);
        noteFirst(change);
        if (change.isMulti())
            return setEntry(change, value);
        if (_person.valueForProperty(change.subject.property) != value)
            _person.setValue(value, change.subject.property);
    }

private:
    static std::string scopeOf(const Subject& subject) { return subject.property + ";" + subject.label; }

    static Value valueOf(const Change& change)
    {
        if (!change.value)
            refuse(change, "wants PROPERTY=VALUE");
        if (change.value->empty())
            refuse(change, "there is no value; --unset takes one out");
        const auto& [property, key, label, type] = change.subject;
        if (!key.empty())
            return Value(*change.value);
        if (type == kMultiDictionary)
            refuse(change,
                fmt::format("is set by its parts, as {}.City: {}", property, fmt::join(addressParts, ", ")));
        return valueOfText(change.base(), *change.value, change.place);
    }

    /// A second value for the same place is a mistake, unless it is to stand beside the first.
    void noteFirst(const Change& change)
    {
        auto& set = _set[scopeOf(change.subject)];
        if (change.adds)
            set.clear();
        if (!set.insert(change.subject.key).second)
            refuse(change, change.isMulti() ? "is set twice; += adds one more" : "is set twice");
    }

    /// Where the value goes; kZRNotFound for a new entry.
    ZRIndex target(const Change& change, const ZRMultiValue& entries)
    {
        if (change.adds)
            return kZRNotFound;
        const auto added = _added.find(scopeOf(change.subject));
        return added != _added.end() && !change.subject.key.empty()
            ? entries.indexForIdentifier(added->second)
            : entryMeant(entries, change.subject.label);
    }

    void setEntry(const Change& change, const Value& value)
    {
        const auto& [property, key, label, type] = change.subject;
        const auto entries = entriesOf(_person, property);
        const ZRIndex at = target(change, *entries);
        const Value former = at == kZRNotFound ? Value() : entries->valueAtIndex(at);
        const Value whole = key.empty() ? value : withPart(former, key, value);
        if (whole == former)
            return;
        if (at != kZRNotFound)
            entries->replaceValueAtIndex(at, whole);
        else if (auto added = entries->addValue(whole, labelForNew(change.subject)); change.adds)
            _added[scopeOf(change.subject)] = std::move(added);
        store(_person, property, *entries);
    }

    ZRPerson& _person;
    /// By property and label: the parts that were set, "" for the value itself; and the entry added last.
    std::map<std::string, std::set<std::string>> _set;
    std::map<std::string, std::string> _added;
};

// ---- --unset

void unsetPart(const Change& change, ZRPerson& person)
{
    const auto& [property, key, label, type] = change.subject;
    if (change.value)
        refuse(change, "a part is taken out whole");
    const auto entries = entriesOf(person, property);
    const ZRIndex at = entryMeant(*entries, label);
    if (at == kZRNotFound || entries->valueAtIndex(at)[key].isNothing())
        refuseMissing(change, "such part");
    entries->replaceValueAtIndex(at, withPart(entries->valueAtIndex(at), key, {}));
    store(person, property, *entries);
}

void unsetEntries(const Change& change, ZRPerson& person)
{
    const auto& [property, key, label, type] = change.subject;
    if (change.value && type == kMultiDictionary)
        refuse(change, "is taken out whole, or by its parts");
    const Value named = change.value ? valueOfText(change.base(), *change.value, change.place) : Value();
    const auto entries = entriesOf(person, property);
    const ZRIndex before = entries->count();
    for (ZRIndex at = before; at-- > 0;)
        if ((label.empty() || isCalled(entries->labelAtIndex(at), label))
            && (!change.value || meansValue(entries->valueAtIndex(at), named)))
            entries->removeValueAndLabelAtIndex(at);
    if (entries->count() == before)
        refuseMissing(change, "such entry");
    store(person, property, *entries);
}

void unset(const Change& change, ZRPerson& person)
{
    const std::string& property = change.subject.property;
    if (!change.subject.key.empty())
        return unsetPart(change, person);
    if (change.isMulti())
        return unsetEntries(change, person);
    const Value held = person.valueForProperty(property);
    if (change.value && !meansValue(held, valueOfText(change.base(), *change.value, change.place)))
        refuseMissing(change, fmt::format("such {}", property));
    if (held.isNothing())
        refuseMissing(change, property);
    person.setValue({}, property);
}

} // namespace

void applyChanges(const Options& options, ZRPerson& person)
{
    ZRRoster& roster = *person.nts_Roster();
    for (const auto& text : options.unsets)
        unset(changeOf(roster, "--unset", text), person);
    Settings settings(person);
    for (const auto& text : options.sets)
        settings.apply(changeOf(roster, "--set", text));
}
