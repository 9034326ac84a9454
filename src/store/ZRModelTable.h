// What is stored, as one table: entities, keys, columns, hooks, and the property that each key holds.
#pragma once

#include "objectstore/Model.h"

#include <span>
#include <string_view>

struct ZRRecordClass;

/// One key of an entity, and what the record layer knows of it.
struct ModelKey {
    objectstore::SlotDescription slot;
    /// The property that this key holds; empty for keys that are no property.
    std::string_view property = {};
};

/// One entity, and what the record layer knows of it.
struct ModelEntity {
    objectstore::EntityDescription entity;
    std::span<const ModelKey> keys = {};
    /// For rows of a multi-value and for the note: the key of the value itself. Empty: converted as a whole.
    std::string_view mainKey = {};
    /// For records: what unique ids of the entity end in, and the public class of its handles.
    std::string_view table = {};
    std::string_view publicClass = {};
    /// Seen by users: a deletion is logged, a change is told to everybody.
    bool isPublic = false;
};

/// The entities of the main store, and of the store of mail recents; parents first.
std::span<const ModelEntity> rosterModelTable();
std::span<const ModelEntity> mailRecentsModelTable();

/// The row of that entity in either table; null for a name that is in none.
const ModelEntity* modelEntityNamed(std::string_view name);

/// The models that the tables describe, made once a process.
platform::Ref<const objectstore::Model> rosterModel();
platform::Ref<const objectstore::Model> mailRecentsModel();

/// The properties of messaging addresses, which share one key. Each is the name of its service.
inline constexpr std::string_view kMessagingProperties[] = {
    "AIMInstant", "ICQInstant", "MSNInstant", "YahooInstant", "JabberInstant"};
