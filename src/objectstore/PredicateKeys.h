// Which slot does a predicate's key mean, and which value its operand?
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"

#include <string_view>

namespace objectstore {

// What is no such thing is the caller's mistake: each throws std::invalid_argument, or InvalidKey, which is
// one.

/// The operand's value, absent for null.
const platform::Value& constant(const PredicateOperand& operand);

const Slot& predicateSlot(const Entity& entity, std::string_view key);
/// A relationship to at most one object: a key path may go on behind it.
const Slot& toOneSlot(const Entity& entity, std::string_view key);
const Slot& toManySlot(const Entity& entity, std::string_view key);
/// A to-many that can be followed from its other end too.
const Slot& twoWaySlot(const Entity& entity, std::string_view key);
/// Where a key path may end: anything but a to-many.
const Slot& lastSlot(const Entity& entity, std::string_view key);

/// The key before the first dot, and the path behind it; that is empty at the last key.
struct SplitPath {
    explicit SplitPath(std::string_view path);
    std::string_view key;
    std::string_view rest;
};

} // namespace objectstore
