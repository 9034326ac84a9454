// A group as one dictionary, for the pasteboard and backups, and groups made from such dictionaries.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Log.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <map>

using objectstore::ObjectList;
using objectstore::StoreObject;
using platform::Ref;
using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

namespace {

/// The properties for which choices travel, and the key of each list.
struct DistributionList {
    std::string_view property;
    std::string_view key;
};
constexpr DistributionList distributionLists[] = {
    {zr::kZRPhoneProperty, zr::kZRPhoneDistributionListDictionaryKey},
    {zr::kZREmailProperty, zr::kZREmailDistributionListDictionaryKey},
    {zr::kZRAddressProperty, zr::kZRAddressDistributionListDictionaryKey},
};

Value idsOf(const ObjectList& records)
{
    std::vector<Value> ids;
    ids.reserve(records.size());
    for (const auto& record : records)
        ids.emplace_back(record->text(record->slot("uniqueId")));
    return Value::array(std::move(ids));
}

/// The choices among `all` for one property: the id of each member with the identifier of its entry.
Value choicesOf(const ObjectList& all, std::string_view property)
{
    const auto& slots = distributionListConfigSlots();
    const auto& entrySlot = *ZROSGroup::entrySlotOfDistributionListConfig(property);
    std::map<std::string, Value> choices;
    for (const auto& choice : all) {
        if (choice->text(slots.propertyName) != property)
            continue;
        const auto person = choice->related(slots.contact), entry = choice->related(entrySlot);
        try {
            if (person && entry)
                choices.emplace(person->text(person->slot("uniqueId")), entry->text(entry->slot("uniqueId")));
        } catch (const objectstore::InaccessibleObject&) {
            // Another process deleted the entry: the choice says nothing any more.
            continue;
        }
    }
    return Value::dictionary({choices.begin(), choices.end()});
}

void addChoices(ZROSRecord& group, Entries& entries)
{
    const ObjectList choices = group.objectsIfThere(groupSlots().distributionListConfigs);
    std::vector<platform::Result<ObjectList>> held;
    for (const std::string_view key : {"contact", "phone", "email", "address"})
        held.push_back(group.context()->relatedObjects(choices, key));
    for (const auto& list : distributionLists)
        entries.emplace_back(list.key, choicesOf(choices, list.property));
}

/// Everything about the members and subgroups that are stored.
void addContents(ZROSRecord& group, Entries& entries)
{
    const auto& slots = groupSlots();
    if (const ObjectList members = group.objectsIfThere(slots.contacts); !members.empty()) {
        entries.emplace_back(zr::kZRMembersDictionaryKey, idsOf(members));
        addChoices(group, entries);
    }
    if (const ObjectList subgroups = group.objectsIfThere(slots.childGroups); !subgroups.empty())
        entries.emplace_back(zr::kZRSubgroupsDictionaryKey, idsOf(subgroups));
}

/// The record that an id of a dictionary stands for now.
Ref<ZRRecord> recordFor(std::string_view uniqueId, const Value& recordMapping,
    const ZRRecordsById& recordsByUniqueId, ZRRoster& roster) ZR_NTS
{
    const Value& mapped = recordMapping.isDictionary() ? recordMapping[uniqueId] : Value();
    const std::string_view present = mapped.isString() ? mapped.asText() : uniqueId;
    const auto at = recordsByUniqueId.find(present);
    return at != recordsByUniqueId.end() ? at->second : roster.nts_RecordForUniqueId(present);
}

const ZRRecordClass& classOfDictionary(const Value& dictionary)
{
    const auto* named = ZRRecordClass::named(dictionary[zr::kZRGroupClassKey].asText());
    return named == &ZRSmartGroup::recordClassDescription ? *named : ZRGroup::recordClassDescription;
}

} // namespace

Value ZRGroup::dictionaryRepresentation() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        Entries entries{{std::string(zr::kZRUIDProperty), Value(nts_UniqueId())},
            {std::string(zr::kZRGroupClassKey), Value(recordClass().name)}};
        if (Value name = nts_ValueForProperty(zr::kZRGroupNameProperty); !name.isNothing())
            entries.emplace_back(zr::kZRGroupNameProperty, std::move(name));
        if (auto* impl = zrDatabaseImpl(); impl && impl->context())
            addContents(*impl, entries);
        return Value::dictionary(std::move(entries));
    });
}

Ref<ZRGroup> ZRGroup::addGroupFromDictionary(const Value& dictionary)
{
    return addGroupFromDictionary(dictionary, nullptr);
}

Ref<ZRGroup> ZRGroup::addGroupFromDictionary(const Value& dictionary, Ref<ZRRoster> roster)
{
    if (!roster)
        roster = ZRRoster::roster();
    if (!roster)
        return nullptr;
    return locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        auto group = platform::refCast<ZRGroup>(nts_recordFromDictionaryRepresentation(
            classOfDictionary(dictionary), dictionary, Value(), *roster, false));
        if (group)
            group->nts_AddMembersAndSubgroupsFromDictionaryRepresentation(dictionary, Value(), {});
        return group;
    });
}

void ZRGroup::nts_AddMembersAndSubgroupsFromDictionaryRepresentation(
    const Value& dictionary, const Value& recordMapping, const ZRRecordsById& recordsByUniqueId)
{
    for (const Value& id : dictionary[zr::kZRMembersDictionaryKey].asArray()) {
        const auto person = platform::refCast<ZRPerson>(
            recordFor(id.asText(), recordMapping, recordsByUniqueId, *nts_Roster()));
        if (!person) {
            platform::log(fmt::format("Could not find member with uid: {}", id.asText()));
            continue;
        }
        nts_AddMember(*person);
        for (const auto& list : distributionLists)
            if (const Value& identifier = dictionary[list.key][id.asText()]; identifier.isString())
                nts_SetDistributionIdentifier(identifier.asText(), list.property, *person, false);
    }
    for (const Value& id : dictionary[zr::kZRSubgroupsDictionaryKey].asArray()) {
        const auto group = platform::refCast<ZRGroup>(
            recordFor(id.asText(), recordMapping, recordsByUniqueId, *nts_Roster()));
        if (group)
            nts_AddSubgroup(*group);
        else
            platform::log(fmt::format("Could not find subgroup with uid: {}", id.asText()));
    }
}
