// The map from properties to keys, derived from the model table.
#include "store/ZRPropertyPlaces.h"

#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRPropertyType.h"
#include "store/ZRModelTable.h"

#include <unordered_map>

using objectstore::Entity;
using objectstore::Model;
using objectstore::SlotKind;

namespace {

/// Properties of the info record that its source keeps.
constexpr std::string_view keysOfSource[] = {"remoteLocations", "readSharingACL", "readWriteSharingACL"};

ZRPropertyPlace placeOf(const Entity& entity, const ModelKey& key)
{
    ZRPropertyPlace place{.key = entity.slot(key.slot.key)};
    const Entity* destination = place.key->destination;
    if (!destination) {
        const auto type = builtInTypeOfProperty(modelEntityNamed(entity.name())->publicClass, key.property);
        place.isArchived = key.slot.type == objectstore::AttributeType::data && zrIsMultiValueType(type);
        return place;
    }
    place.entity = destination;
    place.isMultiValue = place.key->kind == SlotKind::toMany;
    const auto& mainKey = modelEntityNamed(destination->name())->mainKey;
    place.entityKey = mainKey.empty() ? nullptr : destination->slot(mainKey);
    return place;
}

void addMessaging(ZRPropertyPlaces& places, const Entity& contact)
{
    const auto* key = contact.slot("messagingAddresses");
    for (const std::string_view property : kMessagingProperties)
        places[property] = {.key = key,
            .entity = key->destination,
            .entityKey = key->destination->slot("address"),
            .service = property,
            .isMultiValue = true};
}

/// The info record shows what its source keeps: the places are those of the source's entity.
void addFromSource(ZRPropertyPlaces& places, const ZRPropertyPlaces& ofSource)
{
    for (const auto& [property, place] : ofSource)
        for (const std::string_view key : keysOfSource)
            if (place.key->key == key) {
                places[property] = place;
                places[property].ofSource = true;
            }
}

using PlacesByEntity = std::unordered_map<const Entity*, ZRPropertyPlaces>;

ZRPropertyPlaces placesOf(const Entity& entity, const PlacesByEntity& made)
{
    ZRPropertyPlaces places;
    if (entity.parent())
        places = made.at(entity.parent());
    for (const ModelKey& key : modelEntityNamed(entity.name())->keys)
        if (!key.property.empty() && key.slot.kind != SlotKind::manyToMany)
            places[key.property] = placeOf(entity, key);
    if (entity.name() == zr::kZRObjectStoreContactEntityName)
        addMessaging(places, entity);
    return places;
}

/// Parents come first in a model, so a child finds its parent's places made; the info record comes last,
/// since it shows what the source keeps.
PlacesByEntity makeAllPlaces()
{
    PlacesByEntity all;
    for (const auto& model : {rosterModel(), mailRecentsModel()})
        for (const Entity* entity : model->entities())
            all[entity] = placesOf(*entity, all);
    const Entity& info = *rosterModel()->entity(zr::kZRObjectStoreInfoEntityName);
    addFromSource(all[&info], all.at(rosterModel()->entity(zr::kZRObjectStoreRosterSourceEntityName)));
    return all;
}

} // namespace

const ZRPropertyPlaces& zrPropertiesOf(const Entity& entity)
{
    static const auto* const all = new PlacesByEntity(makeAllPlaces());
    return all->at(&entity);
}
