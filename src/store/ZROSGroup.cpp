// The stored side of a group: what is below it, and which entry of a member it uses.
#include "objectstore/StoreContext.h"
#include "platform/text/Fold.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include <unordered_set>
#include <vector>

using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::StoreObject;
using platform::Value;

platform::Ref<StoreObject> ZROSGroup::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSGroup>(entity);
}

// Two processes can make a circle of groups together, so that no group is looked at twice.
bool ZROSGroup::containsGroup(ZROSGroup& other)
{
    const Slot& parents = groupSlots().parentGroups;
    std::vector<ObjectRef> waiting{ObjectRef(&other)};
    std::unordered_set<ObjectRef> seen;
    while (!waiting.empty()) {
        const ObjectRef group = std::move(waiting.back());
        waiting.pop_back();
        for (auto& parent : group->objects(parents)) {
            if (parent.get() == this)
                return true;
            if (seen.insert(parent).second)
                waiting.push_back(std::move(parent));
        }
    }
    return false;
}

const Slot* ZROSGroup::entrySlotOfDistributionListConfig(std::string_view property)
{
    const Slot* slot = distributionListConfigSlots().entity.slot(platform::foldCase(property));
    const bool leadsToEntries = slot && slot->destination && slot->destination->slot("orderingIndex");
    return leadsToEntries ? slot : nullptr;
}

// A person is in few groups, a group may have very many members: the choices are looked for at the person.
ObjectRef ZROSGroup::distributionListConfigWithKey(
    std::string_view property, ZROSRecord& person, ZROSGroup& group)
{
    const auto& slots = distributionListConfigSlots();
    for (auto& choice : person.objects(person.slot("distributionListConfigs")))
        if (choice->relatedKey(slots.group) == group.key() && choice->text(slots.propertyName) == property)
            return std::move(choice);
    return nullptr;
}

bool ZROSGroup::nts_SetDistributionIdentifier(std::optional<std::string_view> identifier,
    std::string_view property, ZROSRecord& person, ZROSGroup& group, ZRFetching fetching)
{
    const Slot* entrySlot = entrySlotOfDistributionListConfig(property);
    const ZRPropertyPlace* place = person.keyForProperty(property);
    if (!identifier || !entrySlot || !place || place->entity != entrySlot->destination)
        return false;
    const ObjectRef entry = person.propertyValueWithKey(*place->key, *identifier);
    if (!entry)
        return false;
    ObjectRef choice =
        fetching == ZRFetching::allowed ? distributionListConfigWithKey(property, person, group) : nullptr;
    if (!choice) {
        const auto& slots = distributionListConfigSlots();
        choice = group.context()->insertObjectOfEntity(slots.entity);
        group.context()->assignObjectToStore(*choice, group.store());
        choice->setValue(slots.propertyName, Value(property));
        choice->setRelated(slots.contact, &person);
        choice->setRelated(slots.group, &group);
    }
    choice->setRelated(*entrySlot, entry.get());
    return true;
}

platform::Ref<StoreObject> ZROSDistributionListConfig::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSDistributionListConfig>(entity);
}

void ZROSDistributionListConfig::didChange(const Slot& slot)
{
    if (!slot.destination || !slot.destination->slot("orderingIndex"))
        return;
    if (const ObjectRef entry = related(slot)) {
        _identifier = entry->text(entry->slot("uniqueId"));
        _entrySlot = &slot;
    }
}

// Others have saved: the row that was chosen may have made way for another one of the same entry, or the
// entry may be gone, and the choice with it.
void ZROSDistributionListConfig::willMerge()
{
    const ObjectRef person = _entrySlot ? related(distributionListConfigSlots().contact) : nullptr;
    if (!person)
        return;
    ObjectRef successor;
    for (const Slot* slot : person->entity().slots())
        if (slot->holdsParts && slot->isToMany() && slot->destination == _entrySlot->destination)
            for (const auto& entry : person->objects(*slot)) {
                if (entry->key() == relatedKey(*_entrySlot))
                    return;
                if (entry->text(entry->slot("uniqueId")) == _identifier)
                    successor = entry;
            }
    if (successor)
        setRelated(*_entrySlot, successor.get());
    else
        context()->deleteObject(*this);
}
