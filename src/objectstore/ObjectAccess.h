// The engine's own way into objects and contexts; no other room includes it.
#pragma once

#include "objectstore/Overlay.h"
#include "objectstore/RelationshipCaches.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreObject.h"

#include <cstdint>
#include <memory>

namespace objectstore {

/// Opens the private parts of a StoreObject to the engine's files.
struct ObjectAccess {
    static constexpr std::uint32_t kInserted = StoreObject::kInserted;
    static constexpr std::uint32_t kUpdated = StoreObject::kUpdated;
    static constexpr std::uint32_t kDeleted = StoreObject::kDeleted;
    static constexpr std::uint32_t kGone = StoreObject::kGone;
    static constexpr std::uint32_t kTouched = StoreObject::kTouched;
    static constexpr std::uint32_t kListed = StoreObject::kListed;
    static constexpr std::uint32_t kAsked = StoreObject::kAsked;
    static constexpr std::uint32_t kCreated = StoreObject::kCreated;
    static constexpr std::uint32_t kPending = kInserted | kUpdated | kDeleted;

    static std::uint32_t& state(StoreObject& object) { return object._state; }
    static std::uint32_t state(const StoreObject& object) { return object._state; }
    static bool is(const StoreObject& object, std::uint32_t bits) { return (object._state & bits) != 0; }
    static void add(StoreObject& object, std::uint32_t bits) { object._state |= bits; }
    static void drop(StoreObject& object, std::uint32_t bits) { object._state &= ~bits; }

    static std::int64_t& key(StoreObject& object) { return object._key; }
    static PersistentStore*& store(StoreObject& object) { return object._store; }
    static ContextAnchor*& anchor(StoreObject& object) { return object._anchor; }
    static RowRef& row(StoreObject& object) { return object._row; }
    static std::unique_ptr<Overlay>& overlay(StoreObject& object) { return object._overlay; }
    static Overlay& makeOverlay(StoreObject& object)
    {
        if (!object._overlay)
            object._overlay = std::make_unique<Overlay>();
        return *object._overlay;
    }
    static std::unique_ptr<RelationshipCaches>& caches(StoreObject& object) { return object._relationships; }
    static RelationshipCaches& makeCaches(StoreObject& object)
    {
        if (!object._relationships)
            object._relationships = std::make_unique<RelationshipCaches>();
        return *object._relationships;
    }
    /// The field as it would be written now: change, kept value or row.
    static FieldValue field(StoreObject& object, const Slot& slot) { return object.field(slot); }
    /// The key of a to-one as it stands, without a look at the store: 0 when no row is here.
    static std::int64_t keyIfKnown(const StoreObject& object, const Slot& slot)
    {
        if (object._overlay)
            if (const platform::Value* value = object._overlay->find(slot))
                return value->asInteger();
        return object._row ? object._row->integer(slot.field) : 0;
    }
    /// The field as it stands, without a look at the store: absent when no row is here.
    static FieldValue fieldIfKnown(const StoreObject& object, const Slot& slot);
    static StoreObject*& nextGone(StoreObject& object) { return object._nextGone; }
    static void destroy(StoreObject* object) { delete object; }

    static ContextState& state(const StoreContext& context) { return *context._state; }
};

/// The field that stands for a value; text and bytes are borrowed from it.
FieldValue fieldOf(const platform::Value& value);
/// The value that a field of that slot stands for.
platform::Value valueOf(const Slot& slot, const FieldValue& field);

} // namespace objectstore
