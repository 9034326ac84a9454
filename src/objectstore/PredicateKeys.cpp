// Which slot does a predicate's key mean, and which value its operand?
#include "objectstore/PredicateKeys.h"

#include "objectstore/StoreErrors.h"

#include <fmt/format.h>

namespace objectstore {

namespace {

const Slot& required(bool isFit, const Slot& slot, const Entity& entity, std::string_view what)
{
    if (!isFit)
        throw InvalidKey(fmt::format("Predicate: {} of {} is no {}", slot.key, entity.name(), what));
    return slot;
}

} // namespace

const platform::Value& constant(const PredicateOperand& operand)
{
    if (!operand.variable.empty())
        throw std::invalid_argument("Predicate: $" + operand.variable + " has no value");
    return operand.value;
}

const Slot& predicateSlot(const Entity& entity, std::string_view key)
{
    const Slot* slot = entity.slot(key);
    if (!slot)
        throw InvalidKey(fmt::format("Predicate: {} has no key {}", entity.name(), key));
    return *slot;
}

const Slot& toOneSlot(const Entity& entity, std::string_view key)
{
    const Slot& slot = predicateSlot(entity, key);
    return required(slot.isRelationship() && !slot.isToMany(), slot, entity, "to-one");
}

const Slot& toManySlot(const Entity& entity, std::string_view key)
{
    const Slot& slot = predicateSlot(entity, key);
    return required(slot.isToMany(), slot, entity, "to-many");
}

const Slot& twoWaySlot(const Entity& entity, std::string_view key)
{
    const Slot& slot = toManySlot(entity, key);
    return required(slot.inverse != nullptr, slot, entity, "to-many with an inverse");
}

const Slot& lastSlot(const Entity& entity, std::string_view key)
{
    const Slot& slot = predicateSlot(entity, key);
    return required(!slot.isToMany(), slot, entity, "single value");
}

SplitPath::SplitPath(std::string_view path) : key(path.substr(0, path.find('.')))
{
    if (key.size() < path.size())
        rest = path.substr(key.size() + 1);
}

} // namespace objectstore
