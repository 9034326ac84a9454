// Where each property of each class of stored records is kept: the map from properties to keys.
#pragma once

#include "objectstore/Model.h"

#include <map>
#include <string_view>

/// Where a property of a class of stored records is kept.
struct ZRPropertyPlace {
    /// The key of the record.
    const objectstore::Slot* key = nullptr;
    /// The entity of the rows, or of the one object, that hold the value; null: the key holds it itself.
    const objectstore::Entity* entity = nullptr;
    /// The key of the value in that entity; null for a value that is converted as a whole (an address).
    const objectstore::Slot* entityKey = nullptr;
    /// For a messaging property: the service of its rows.
    std::string_view service = {};
    bool isMultiValue = false;
    /// A multi-value that the key holds itself, as the property list of its dictionary.
    bool isArchived = false;
    /// Kept by the record's source: what is shared of the info record.
    bool ofSource = false;
};

using ZRPropertyPlaces = std::map<std::string_view, ZRPropertyPlace>;

/// All properties that the entity keeps. Made once a process; needs no lock.
const ZRPropertyPlaces& zrPropertiesOf(const objectstore::Entity& entity);
