// How two states of a card are told apart, value by value.
#include "interchange/import/ValueChange.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <set>

using platform::Value;
using Kind = interchange::ValueChange::Kind;

namespace interchange {

namespace {

const ZRMultiValue& entriesOf(const Value& value)
{
    static const platform::NeverDestroyed<const platform::Ref<ZRMultiValue>> none(
        platform::makeRef<ZRMultiValue>());
    const auto* const entries = value.as<ZRMultiValue>();
    return entries ? *entries : **none;
}

bool contains(const ZRMultiValue& entries, const Value& value)
{
    return entries._containsValue(value) != kZRNotFound;
}

void compareSingle(
    const std::string& property, const Value& before, const Value& after, std::vector<ValueChange>& changes)
{
    if (before == after)
        return;
    ValueChange change{Kind::replaced, property, {}, before, after, true};
    if (before.isNothing() || (before.isString() && before.asText().empty()))
        change.kind = Kind::added;
    else if (after.isNothing())
        change.kind = Kind::removed;
    else if (property == zr::kZRNoteProperty && after.asText().starts_with(before.asText()))
        change.kind = Kind::extended;
    change.isLoss = change.kind == Kind::replaced || change.kind == Kind::removed;
    changes.push_back(std::move(change));
}

/// The entry of `after` that the one at `index` became: by its identifier, else by its value and label.
ZRIndex heirOf(const ZRMultiValue& before, ZRIndex index, const ZRMultiValue& after)
{
    const ZRIndex same = after.indexForIdentifier(before.identifierAtIndex(index));
    if (same != kZRNotFound)
        return same;
    for (ZRIndex at = 0; at < after.count(); ++at)
        if (after.valueAtIndex(at) == before.valueAtIndex(index)
            && after.labelAtIndex(at) == before.labelAtIndex(index))
            return at;
    return kZRNotFound;
}

void compareEntries(const std::string& property, const ZRMultiValue& before, const ZRMultiValue& after,
    std::vector<ValueChange>& changes)
{
    std::set<ZRIndex> heirs;
    for (ZRIndex index = 0; index < before.count(); ++index) {
        const Value& value = before.valueAtIndex(index);
        const ZRIndex heir = heirOf(before, index, after);
        const Value now = heir == kZRNotFound ? Value() : after.valueAtIndex(heir);
        heirs.insert(heir);
        if (now == value && after.labelAtIndex(heir) == before.labelAtIndex(index))
            continue;
        changes.push_back({heir == kZRNotFound ? Kind::removed : Kind::replaced, property,
            before.labelAtIndex(index), value, now, !contains(after, value)});
    }
    for (ZRIndex index = 0; index < after.count(); ++index)
        if (!heirs.contains(index))
            changes.push_back(
                {Kind::added, property, after.labelAtIndex(index), {}, after.valueAtIndex(index)});
}

void compare(
    const std::string& property, const Value& before, const Value& after, std::vector<ValueChange>& changes)
{
    if (before.as<ZRMultiValue>() || after.as<ZRMultiValue>())
        compareEntries(property, entriesOf(before), entriesOf(after), changes);
    else
        compareSingle(property, before, after, changes);
}

} // namespace

std::vector<ValueChange> changesBetween(const CardContent& before, const CardContent& after)
{
    std::set<std::string> names;
    for (const auto* side : {&before, &after})
        for (const auto& [property, value] : side->properties())
            names.insert(property);
    std::vector<ValueChange> changes;
    for (const auto& property : names)
        compare(property, before.value(property), after.value(property), changes);
    compareSingle(std::string(zr::kZRImageProperty), before.picture(), after.picture(), changes);
    return changes;
}

std::vector<ValueChange> displacedValues(const CardContent& incoming, const CardContent& after)
{
    std::vector<ValueChange> displaced;
    for (const auto& [property, value] : incoming.properties()) {
        const auto& entries = entriesOf(value);
        for (ZRIndex index = 0; index < entries.count(); ++index)
            if (!contains(entriesOf(after.value(property)), entries.valueAtIndex(index)))
                displaced.push_back({Kind::displaced, property, entries.labelAtIndex(index),
                    entries.valueAtIndex(index), {}, true});
    }
    return displaced;
}

std::vector<std::string> changedProperties(const std::vector<ValueChange>& changes)
{
    std::vector<std::string> properties;
    for (const auto& change : changes)
        if (std::ranges::find(properties, change.property) == properties.end())
            properties.push_back(change.property);
    return properties;
}

} // namespace interchange
