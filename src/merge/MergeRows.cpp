// Rows matched by what names them in their card, changed in place, added and deleted.
#include "merge/MergeRows.h"

#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRMultiValueObjectStoreWrapper.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <string>
#include <unordered_map>

using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::SlotKind;
using objectstore::StoreObject;
using platform::Value;

namespace {

/// What parts the rows of one key into several multi-values, by its name in every store; empty for most.
std::string nameOfUnit(StoreObject& row)
{
    const Slot* discriminator = row.entity().unit().discriminator;
    const ObjectRef of = discriminator ? row.related(*discriminator) : nullptr;
    if (!of)
        return {};
    const auto& customProperty = customPropertySlots();
    return std::string(of->text(
        &of->entity() == &customProperty.entity ? customProperty.propertyName : of->slot("serviceName")));
}

/// What names a row in its card; empty for a damaged one, which no card shows.
std::string nameOfRow(StoreObject& row)
{
    const std::string_view identifier = row.text(*row.entity().unit().identifier);
    return identifier.empty() ? std::string() : fmt::format("{}\n{}", identifier, nameOfUnit(row));
}

/// The definition in the target's store that stands for that of a source; null when it is of another type.
ObjectRef customPropertyLike(StoreObject& definition, ZROSContact& target)
{
    const auto& slots = customPropertySlots();
    const Value name(definition.text(slots.propertyName)), type(definition.integer(slots.valueType));
    const auto found = target.context()->sharedObject(
        slots.entity, {Value(definition.text(slots.recordType)), name}, target.store());
    if (!found) {
        platform::log(fmt::format("Cannot declare the property {}: {}", name.asText(), found.error().text));
        return nullptr;
    }
    if ((*found)->isAbsent(slots.valueType)) {
        (*found)->setValue(slots.valueType, type);
        if (ZRRoster* const roster = target.roster())
            roster->clearCustomPropertyCaches();
    }
    if ((*found)->integer(slots.valueType) == type.asInteger())
        return *found;
    platform::log(fmt::format("Property already exists: {} type: {} (requested: {})", name.asText(),
        (*found)->integer(slots.valueType), type.asInteger()));
    return nullptr;
}

/// The rows of one key of the target, as the source's rows are laid over them.
class RowMerge {
public:
    RowMerge(const Slot& slot, ZROSContact& target) : _slot(slot), _target(target)
    {
        for (auto& row : target.objects(slot))
            if (std::string name = nameOfRow(*row); !name.empty())
                _present.emplace(std::move(name), std::move(row));
    }

    void take(StoreObject& source)
    {
        const std::string name = nameOfRow(source);
        if (name.empty())
            return;
        const auto known = _present.find(name);
        if (known == _present.end())
            return add(source);
        for (const Slot* slot : source.entity().slots())
            _hasChanged |= merge::copyAttribute(*slot, *known->second, source);
        _present.erase(known);
    }

    /// What the source does not have goes; answers whether anything has changed.
    bool finish()
    {
        for (const auto& [name, row] : _present) {
            _target.removeObject(_slot, *row);
            _target.context()->deleteObject(*row);
        }
        return _hasChanged || !_present.empty();
    }

private:
    void add(StoreObject& source)
    {
        const Slot* discriminator = source.entity().unit().discriminator;
        const ObjectRef unit = discriminator ? unitLike(source, *discriminator) : nullptr;
        if (discriminator && !unit)
            return;
        const ObjectRef row = _target.context()->insertObjectOfEntity(source.entity());
        _target.context()->assignObjectToStore(*row, _target.store());
        if (unit)
            row->setRelated(*discriminator, unit.get());
        for (const Slot* slot : source.entity().slots())
            merge::copyAttribute(*slot, *row, source);
        _target.addObject(_slot, *row);
        if (const Slot* owner = row->entity().slot("owner"); owner != _slot.inverse)
            row->setRelated(*owner, &_target);
        _hasChanged = true;
    }

    ObjectRef unitLike(StoreObject& source, const Slot& discriminator)
    {
        const ObjectRef unit = source.related(discriminator);
        if (!unit)
            return nullptr;
        if (&unit->entity() == &customPropertySlots().entity)
            return customPropertyLike(*unit, _target);
        return ZRMultiValueObjectStoreWrapper::serviceWithName(
            nameOfUnit(source), *_target.managedObjectContext(), _target.store());
    }

    const Slot& _slot;
    ZROSContact& _target;
    std::unordered_map<std::string, ObjectRef> _present;
    bool _hasChanged = false;
};

} // namespace

namespace merge {

bool holdsEntries(const Slot& slot)
{
    return slot.kind == SlotKind::toMany && slot.holdsParts && slot.destination->unit();
}

bool mergeRows(const Slot& slot, ZROSContact& target, ZROSContact& source)
{
    RowMerge merge(slot, target);
    for (const auto& row : source.objects(slot))
        merge.take(*row);
    return merge.finish();
}

// What is computed late follows from the rest.
bool copyAttribute(const Slot& slot, StoreObject& target, StoreObject& source)
{
    const bool isStored = slot.kind == SlotKind::attribute || slot.kind == SlotKind::largeAttribute;
    if (!isStored || slot.isTransient() || slot.lazy)
        return false;
    const Value value = source.value(slot);
    if (value == target.value(slot))
        return false;
    target.setValue(slot, value);
    return true;
}

} // namespace merge
