// What a class of stored records knows of its keys, and of the entity and the context behind it.
#include "core/ZRConstants.h"
#include "objectstore/StoreCoordinator.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRModelTable.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <unordered_map>

using objectstore::Entity;
using objectstore::ObjectRef;
using objectstore::StoreObject;
using platform::Ref;
using platform::Value;

namespace {

/// By entity and property: every read of a property asks.
using PlacesByName = std::unordered_map<std::string_view, const ZRPropertyPlace*>;

std::unordered_map<const Entity*, PlacesByName> indexAllPlaces()
{
    std::unordered_map<const Entity*, PlacesByName> all;
    for (const auto& model : {rosterModel(), mailRecentsModel()})
        for (const Entity* entity : model->entities())
            for (const auto& [property, place] : zrPropertiesOf(*entity))
                all[entity].emplace(property, &place);
    return all;
}

} // namespace

const ZRPropertyPlace* ZROSRecord::keyForProperty(std::string_view property, const Entity& entity)
{
    static const auto* const all = new auto(indexAllPlaces());
    const auto places = all->find(&entity);
    if (places == all->end())
        return nullptr;
    const auto at = places->second.find(property);
    return at == places->second.end() ? nullptr : at->second;
}

std::string_view ZROSRecord::propertyForKey(std::string_view key, const Entity& entity)
{
    std::string_view found;
    for (const auto& [property, place] : zrPropertiesOf(entity)) {
        if (place.key->key != key)
            continue;
        if (!found.empty())
            return {};
        found = property;
    }
    return found;
}

std::string_view ZROSRecord::entityNameForPropertyKey(std::string_view key, const Entity& entity)
{
    for (const auto& [property, place] : zrPropertiesOf(entity))
        if (place.key->key == key)
            return place.entity ? std::string_view(place.entity->name()) : std::string_view();
    return {};
}

std::string_view ZROSRecord::propertyForRecord(StoreObject& value)
{
    const auto& contact = contactSlots().entity;
    const bool isMessaging = &value.entity() == &messagingSlots().entity;
    const ObjectRef service = isMessaging ? value.related(messagingSlots().service) : nullptr;
    const Value name = service ? service->valueForKey("serviceName") : Value();
    for (const auto& [property, place] : zrPropertiesOf(contact))
        if (place.entity == &value.entity() && (!isMessaging || place.service == name.asText()))
            return property;
    return {};
}

Ref<ZRManagedObjectContext> ZROSRecord::managedObjectContextForRoster(ZRRoster& roster, const Entity& entity)
{
    return &entity.model() == rosterModel().get() ? roster.managedObjectContext()
                                                  : roster.nts_mailRecentsManagedObjectContext();
}

const Entity* ZROSRecord::zrEntityDescriptionInRoster(ZRRoster& roster, std::string_view entityName)
{
    for (const auto& model : {rosterModel(), mailRecentsModel()})
        if (const Entity* entity = model->entity(entityName))
            return managedObjectContextForRoster(roster, *entity) ? entity : nullptr;
    return nullptr;
}

bool ZROSRecord::zrEntityKnowsKey(std::string_view key, std::string_view entityName, ZRRoster& roster)
{
    const Entity* entity = zrEntityDescriptionInRoster(roster, entityName);
    return entity && entity->slot(key);
}

bool ZROSRecord::zrEntityKnowsKey(
    std::string_view key, std::string_view entityName, const ZRManagedObjectContext& context)
{
    const auto coordinator = context.coordinator();
    const Entity* entity = coordinator ? coordinator->model().entity(entityName) : nullptr;
    return entity && entity->slot(key);
}
