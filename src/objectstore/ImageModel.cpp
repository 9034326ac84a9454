// How the tables of whole objects are found.
#include "objectstore/ImageModel.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace objectstore {

namespace {

template <class Item, class Same>
void addOnce(std::vector<Item>& list, const Item& item, Same same)
{
    if (std::ranges::none_of(list, [&](const Item& known) { return same(known, item); }))
        list.push_back(item);
}

void addSlotOnce(std::vector<const Slot*>& list, const Slot* slot)
{
    addOnce(list, slot, [](const Slot* a, const Slot* b) { return a == b; });
}

void addTable(std::vector<ImageModel::Found>& list, const Slot& slot)
{
    for (const Family* family : slot.destination->families())
        addOnce(list, {family, slot.inverse},
            [](const auto& a, const auto& b) { return a.family == b.family && a.by == b.by; });
}

bool isShared(const Slot& slot)
{
    return slot.kind == SlotKind::toMany && slot.deleteRule == DeleteRule::cascade && !slot.holdsParts;
}

} // namespace

const Slot* uniqueSlot(const Entity& entity)
{
    for (const Slot* slot : entity.fields())
        if (slot->kind == SlotKind::attribute && (slot->flags & kUnique) != 0)
            return slot;
    return nullptr;
}

ImageModel::ImageModel(const Model& model, ImageRules rules) : _model(model), _rules(std::move(rules))
{
    for (const std::string_view name : _rules.roots) {
        const Entity* entity = model.entity(name);
        if (!entity)
            throw std::logic_error("no entity " + std::string(name));
        for (const Entity* concrete : entity->concreteEntities())
            _rootEntities.push_back(concrete);
    }
    for (const Entity* entity : _rootEntities)
        for (const Slot* slot : entity->slots())
            if (isShared(*slot))
                _tieEntities.push_back(slot->destination);
    for (const Entity* entity : _rootEntities) {
        auto at = std::ranges::find(_roots, entity->family(), &Roots::family);
        if (at == _roots.end()) {
            at = _roots.emplace(_roots.end());
            at->family = entity->family();
            at->uniqueId = uniqueSlot(*entity);
        }
        addSlots(*at, *entity);
    }
    for (const Entity* entity : model.entities())
        for (const Slot* slot : entity->fields())
            _fields[entity].push_back(fieldOf(*slot));
}

bool ImageModel::isTie(const Entity& entity) const
{
    return std::ranges::find(_tieEntities, &entity) != _tieEntities.end();
}

void ImageModel::addSlots(Roots& roots, const Entity& entity)
{
    for (const Slot* slot : entity.slots()) {
        if (slot->kind == SlotKind::largeAttribute)
            addSlotOnce(roots.large, slot);
        else if (slot->kind == SlotKind::manyToMany)
            addSlotOnce(slot->leads ? roots.leads : roots.memberships, slot);
        else if (isShared(*slot))
            addTable(roots.ties, *slot);
        else if (slot->holdsParts && !isTie(*slot->destination))
            addTable(roots.parts, *slot);
        else if (slot->kind == SlotKind::toOneInverse && !slot->holdsParts)
            addSlotOnce(roots.pointers, slot);
    }
}

const ImageModel::Roots* ImageModel::rootsOf(const Entity& entity) const
{
    const auto at = std::ranges::find(_roots, entity.family(), &Roots::family);
    return at == _roots.end() ? nullptr : &*at;
}

ImageModel::Field ImageModel::fieldOf(const Slot& slot) const
{
    const bool isCounted =
        !slot.lazy && std::ranges::find(_rules.uncounted, slot.key) == _rules.uncounted.end();
    return {&slot, isCounted, slot.key == _rules.flagsKey ? _rules.uncountedFlags : 0};
}

} // namespace objectstore
