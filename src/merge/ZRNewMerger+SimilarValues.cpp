// Entries that stand twice in one card, differently written.
#include "core/ZRMutableMultiValue.h"
#include "merge/ZRNewMerger.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

Ref<ZRMultiValue> ZRNewMerger::mergedSimilarMultiValuesIn(
    const ZRMultiValue& entries, std::string_view property, ZRPropertyChanges& changes)
{
    const auto kept = platform::makeRef<ZRMutableMultiValue>();
    for (ZRIndex index = 0; index < entries.count(); ++index) {
        const Value& value = entries.valueAtIndex(index);
        const std::string& identifier = entries.identifierAtIndex(index);
        if (kept->_containsSimilarValue(value, property) != kZRNotFound)
            changes[fmt::format("{}.{}", property, identifier)] = ZRPropertyChangedColor;
        else
            kept->_appendValue(value, entries.labelAtIndex(index), identifier);
    }
    if (const auto& primary = entries.primaryIdentifier())
        kept->setPrimaryIdentifier(*primary);
    return kept;
}

bool ZRNewMerger::findSimilarMultiValuesForPerson(const Ref<ZRPerson>& person)
{
    allPersonProperties();
    return locked(*person->nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        CleanedValues cleaned = nts_cleanedValues(*person);
        if (cleaned.empty())
            return false;
        _selfMergedPeople[person->nts_UniqueId()] = std::move(cleaned);
        return true;
    });
}

ZRNewMerger::CleanedValues ZRNewMerger::nts_cleanedValues(const ZRPerson& person)
{
    CleanedValues cleaned;
    for (const auto& [property, type] : _personProperties) {
        const Value value = zrIsMultiValueType(type) ? person.nts_ValueForProperty(property) : Value();
        const auto* entries = value.as<ZRMultiValue>();
        if (!entries || entries->count() < 2)
            continue;
        ZRPropertyChanges changes;
        auto kept = mergedSimilarMultiValuesIn(*entries, property, changes);
        if (!changes.empty())
            cleaned.emplace(property, std::move(kept));
    }
    return cleaned;
}

// What was found in a card that was updated since is no longer what it says: there the updated values are
// looked at, which applyChanges carries over.
void ZRNewMerger::mergeSimilarMultiValuesForPerson(const Ref<ZRPerson>& person)
{
    const std::string uniqueId = person->uniqueId();
    const auto found = _selfMergedPeople.find(uniqueId);
    if (found == _selfMergedPeople.end())
        return;
    const auto changed = _updatedPeopleSet.contains(uniqueId)
        ? platform::refCast<ZRPerson>(requireTarget().recordForUniqueId(uniqueId))
        : person;
    const Value picture = person->imageData();
    locked(*changed->nts_Roster(), ZRAccess::write, [&]() ZR_NTS {
        const CleanedValues cleaned = changed == person ? found->second : nts_cleanedValues(*changed);
        nts_takeSnapshot(person, picture);
        for (const auto& [property, kept] : cleaned)
            changed->nts_SetValue(Value(kept), property);
    });
}
