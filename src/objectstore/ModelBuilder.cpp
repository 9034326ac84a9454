// How a model is made of its descriptions: inheritance, relationships and tables resolved, and contradictions
// refused.
#include "objectstore/Model.h"
#include "objectstore/SchemaSQL.h"

#include <fmt/format.h>

#include <algorithm>
#include <bitset>
#include <stdexcept>
#include <unordered_set>

namespace objectstore {

namespace {

/// Bounds what an Overlay can mark.
constexpr std::size_t kMaximumSlots = 128;

[[noreturn]] void refuse(std::string_view entity, std::string_view key, std::string_view why)
{
    throw std::logic_error(fmt::format("model: {}.{}: {}", entity, key, why));
}

bool needsColumn(const SlotDescription& slot)
{
    if ((slot.flags & kTransient) != 0)
        return false;
    return slot.kind == SlotKind::attribute || slot.kind == SlotKind::toOne;
}

} // namespace

/// Makes one Model, in passes: entities with their slots, then what refers to other entities, then tables.
class ModelBuilder {
public:
    explicit ModelBuilder(std::span<const EntityDescription> descriptions) : _descriptions(descriptions) { }

    platform::Ref<const Model> build()
    {
        for (const auto& description : _descriptions)
            addEntity(description);
        for (std::size_t i = 0; i < _descriptions.size(); ++i)
            resolveReferences(*_model->_ownedEntities[i], _descriptions[i]);
        for (const auto& entity : _model->_ownedEntities)
            checkInverses(*entity);
        for (const auto& entity : _model->_ownedEntities)
            placeInFamily(*entity);
        for (std::size_t i = 0; i < _descriptions.size(); ++i)
            resolveOwnership(*_model->_ownedEntities[i], _descriptions[i]);
        for (const auto& entity : _model->_ownedEntities)
            markParts(*entity);
        for (const auto& entity : _model->_ownedEntities)
            collectDescendants(*entity);
        _model->_schemaText = schemaText(*_model);
        _model->_schemaHash = schemaHash(_model->_schemaText);
        return _model;
    }

private:
    void addEntity(const EntityDescription& description)
    {
        auto owned = std::make_unique<Entity>();
        Entity& entity = *owned;
        entity._name = description.name;
        entity._model = _model.get();
        entity._isAbstract = description.isAbstract;
        entity._index = _model->_entities.size();
        entity._make = description.make;
        if (!description.parent.empty())
            inherit(entity, description);
        for (const auto& slot : description.slots)
            addSlot(entity, slot);
        if (entity._slots.size() > kMaximumSlots)
            refuse(entity._name, "", "more keys than an object can mark");
        _model->_entities.push_back(&entity);
        _model->_ownedEntities.push_back(std::move(owned));
        if (!_model->_byName.emplace(entity._name, &entity).second)
            refuse(entity._name, "", "described twice");
    }

    void inherit(Entity& entity, const EntityDescription& description)
    {
        const Entity* parent = _model->entity(description.parent);
        if (!parent)
            refuse(description.name, "", "its parent does not stand before it");
        entity._parent = parent;
        entity._byKey = parent->_byKey;
        entity._slots = parent->_slots;
        entity._fields = parent->_fields;
        if (!entity._make)
            entity._make = parent->_make;
    }

    void addSlot(Entity& entity, const SlotDescription& description)
    {
        auto owned = std::make_unique<Slot>();
        Slot& slot = *owned;
        slot.key = description.key;
        slot.kind = description.kind;
        slot.type = description.type;
        slot.flags = description.flags;
        slot.deleteRule = description.deleteRule;
        slot.leads = description.leads;
        slot.index = static_cast<std::uint16_t>(entity._slots.size());
        slot.field = Slot::kNoField;
        slot.entity = &entity;
        slot.lazy = description.lazy;
        slot.get = description.get;
        slot.set = description.set;
        slot.didSet = description.didSet;
        if (slot.kind == SlotKind::computed && !slot.get)
            refuse(entity._name, slot.key, "computed without a getter");
        if (needsColumn(description)) {
            if (slot.kind == SlotKind::attribute && slot.type == AttributeType::any)
                refuse(entity._name, slot.key, "a stored attribute needs a type");
            slot.column = quoted(slot.key);
            slot.field = static_cast<std::uint16_t>(entity._fields.size());
            entity._fields.push_back(&slot);
        }
        if ((slot.flags & kTextIndex) != 0)
            entity._textIndex = &slot;
        if ((slot.flags & kFeedsTextIndex) != 0 && !(slot.hasColumn() && slot.type == AttributeType::string))
            refuse(entity._name, slot.key, "only a stored text can feed a text index");
        entity._slots.push_back(&slot);
        if (!entity._byKey.emplace(slot.key, &slot).second)
            refuse(entity._name, slot.key, "described twice");
        entity._own.push_back(std::move(owned));
    }

    void resolveReferences(Entity& entity, const EntityDescription& description)
    {
        for (std::size_t i = 0; i < description.slots.size(); ++i) {
            Slot& slot = *entity._own[i];
            const SlotDescription& told = description.slots[i];
            if (!slot.isRelationship())
                continue;
            slot.destination = _model->entity(told.destination);
            if (!slot.destination)
                refuse(entity._name, slot.key, "leads to an unknown entity");
            if (!told.inverse.empty() && !(slot.inverse = slot.destination->slot(told.inverse)))
                refuse(entity._name, slot.key, "its inverse is unknown");
            if (slot.kind == SlotKind::manyToMany)
                nameJoin(slot, told);
        }
    }

    void nameJoin(Slot& slot, const SlotDescription& told)
    {
        if (told.joinTable.empty())
            refuse(slot.entity->_name, slot.key, "many-to-many without a join table");
        slot.table = quoted(told.joinTable);
        slot.column = slot.leads ? "\"lead\"" : "\"other\"";
        slot.farColumn = slot.leads ? "\"other\"" : "\"lead\"";
    }

    void checkInverses(const Entity& entity)
    {
        for (const auto& slot : entity._own) {
            if (slot->isThroughInverse()) {
                if (!slot->inverse || slot->inverse->kind != SlotKind::toOne)
                    refuse(entity._name, slot->key, "its inverse must be a stored to-one");
                const_cast<Slot*>(slot->inverse)->isInverted = true;
            }
            if (slot->kind == SlotKind::manyToMany && slot->inverse
                && (slot->inverse->table != slot->table || slot->inverse->leads == slot->leads))
                refuse(entity._name, slot->key, "its inverse must be the other end of one join table");
        }
    }

    void placeInFamily(Entity& entity)
    {
        std::string_view table = _descriptions[entity._index].table;
        if (table.empty() && entity._parent && entity._parent->_family)
            table = entity._parent->_family->name;
        if (table.empty()) {
            if (!entity._isAbstract)
                refuse(entity._name, "", "has no table");
            return;
        }
        Family& family = familyNamed(table);
        entity._family = &family;
        if (entity._isAbstract)
            return;
        family.entities.push_back(&entity);
        for (const Slot* slot : entity._fields)
            entity._familyColumns.push_back(columnFor(family, *slot));
        for (const Slot* slot : entity._slots)
            if (slot->kind == SlotKind::largeAttribute) {
                const_cast<Slot*>(slot)->table = quoted(slot->entity->_name + "_" + slot->key);
                entity._hasLarge = true;
            }
    }

    Family& familyNamed(std::string_view table)
    {
        for (const auto& family : _model->_ownedFamilies)
            if (family->name == table)
                return *family;
        auto family = std::make_unique<Family>();
        family->name = table;
        family->table = quoted(table);
        family->index = _model->_families.size();
        _model->_families.push_back(family.get());
        _model->_ownedFamilies.push_back(std::move(family));
        return *_model->_ownedFamilies.back();
    }

    std::uint16_t columnFor(Family& family, const Slot& slot)
    {
        const bool isReference = slot.kind == SlotKind::toOne;
        for (std::size_t i = 0; i < family.columns.size(); ++i) {
            auto& column = family.columns[i];
            if (column.name != slot.key)
                continue;
            if (column.type != slot.type || column.isReference != isReference)
                refuse(slot.entity->_name, slot.key, "another entity of the table has it with another type");
            column.flags |= slot.flags;
            return static_cast<std::uint16_t>(i);
        }
        family.columns.push_back({slot.key, slot.type, slot.flags, isReference});
        return static_cast<std::uint16_t>(family.columns.size() - 1);
    }

    void resolveOwnership(Entity& entity, const EntityDescription& description)
    {
        entity._owner = slotNamed(entity, description.owner);
        if (entity._parent && !entity._owner)
            entity._owner = entity._parent->_owner;
        entity._unit = unitOf(entity, description.unit);
        if (entity._parent && !entity._unit)
            entity._unit = entity._parent->_unit;
        for (const auto key : description.sharedBy)
            entity._sharedBy.push_back(slotNamed(entity, key));
        if (entity._owner && entity._owner->kind != SlotKind::toOne)
            refuse(entity._name, entity._owner->key, "an owner must be a stored to-one");
        if ((entity._unit || entity._textIndex) && !entity._owner)
            refuse(entity._name, "", "a multi-value or text index needs an owner");
        if (entity._textIndex && !entity._isAbstract && std::exchange(_model->_textEntry, &entity))
            refuse(entity._name, entity._textIndex->key, "another text is indexed already");
        if (entity._textIndex && entity._family)
            entity._textTable = quoted(entity._family->name + "_text");
        if (entity._isAbstract)
            return;
        auto& family = const_cast<Family&>(*entity._family);
        if (family.entities.front() != &entity && family.owner != entity._owner)
            refuse(entity._name, "", "the entities of a table must have one owner");
        family.owner = entity._owner;
    }

    static const Slot* slotNamed(const Entity& entity, std::string_view key)
    {
        if (key.empty())
            return nullptr;
        const Slot* slot = entity.slot(key);
        if (!slot || !slot->hasColumn())
            refuse(entity.name(), key, "must be a stored key");
        return slot;
    }

    static UnitSlots unitOf(const Entity& entity, const UnitDescription& told)
    {
        return {slotNamed(entity, told.identifier), slotNamed(entity, told.discriminator),
            slotNamed(entity, told.ordering), slotNamed(entity, told.primary)};
    }

    void markParts(const Entity& entity)
    {
        for (const auto& slot : entity._own) {
            if (!slot->isThroughInverse() || slot->deleteRule != DeleteRule::cascade
                || slot->destination->_owner != slot->inverse)
                continue;
            slot->holdsParts = true;
            if (slot->kind != SlotKind::toOneInverse)
                continue;
            for (const auto& part : _model->_ownedEntities)
                if (part->isKindOf(*slot->destination))
                    part->_isSingle = true;
        }
    }

    void collectDescendants(Entity& entity)
    {
        for (const auto& other : _model->_ownedEntities) {
            if (!other->isKindOf(entity) || other->_isAbstract)
                continue;
            entity._concrete.push_back(other.get());
            if (std::ranges::find(entity._families, other->_family) == entity._families.end())
                entity._families.push_back(other->_family);
        }
    }

    std::span<const EntityDescription> _descriptions;
    platform::Ref<Model> _model = platform::Ref<Model>::adopt(new Model);
};

platform::Ref<const Model> Model::make(std::span<const EntityDescription> entities)
{
    return ModelBuilder(entities).build();
}

} // namespace objectstore
