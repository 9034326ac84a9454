// How a predicate is asked of one object in memory.
#include "objectstore/PredicateMatch.h"

#include "objectstore/PredicateKeys.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/ValueComparison.h"

#include <unordered_set>

namespace objectstore {

using platform::Value;

namespace {

Value readLast(StoreObject& object, std::string_view key)
{
    if (key == kSelf)
        return Value(ObjectRef(&object));
    const Slot& slot = lastSlot(object.entity(), key);
    return slot.isRelationship() ? Value(object.related(slot)) : object.value(slot);
}

Value read(StoreObject& object, std::string_view path)
{
    const auto [key, rest] = SplitPath(path);
    if (rest.empty())
        return readLast(object, key);
    if (key == kSelf)
        return read(object, rest);
    const ObjectRef next = object.related(toOneSlot(object.entity(), key));
    if (!next)
        return {};
    try {
        return read(*next, rest);
    } catch (const InaccessibleObject&) {
        return {};
    }
}

/// What the slot leads to, however many.
ObjectList linked(StoreObject& object, const Slot& slot)
{
    if (slot.isToMany())
        return object.objects(slot);
    auto one = object.related(slot);
    return one ? ObjectList{std::move(one)} : ObjectList{};
}

/// Goes up from the object to the groups that hold it, and to those above them, until it meets `wanted`.
bool isBelow(StoreObject& object, const StoreObject& wanted, const Slot& members, const Slot& children)
{
    if (!object.entity().isKindOf(*members.destination))
        return false;
    auto waiting = linked(object, *members.inverse);
    std::unordered_set<StoreId> seen;
    while (!waiting.empty()) {
        const ObjectRef group = std::move(waiting.back());
        waiting.pop_back();
        if (isSameObject(*group, wanted))
            return true;
        if (!seen.insert(group->storeId()).second || !group->entity().isKindOf(*children.destination))
            continue;
        for (auto& above : linked(*group, *children.inverse))
            waiting.push_back(std::move(above));
    }
    return false;
}

/// A row that another context deleted fulfils nothing.
bool fulfils(StoreObject& row, const StorePredicate& condition)
{
    try {
        return matches(condition, row);
    } catch (const InaccessibleObject&) {
        return false;
    }
}

bool hasRow(StoreObject& object, const Slot& slot, const PredicateRef& condition)
{
    for (const auto& row : object.objects(slot))
        if (!condition || fulfils(*row, *condition))
            return true;
    return false;
}

/// Answers each form of a predicate for one object.
struct Matcher {
    StoreObject& object;

    bool operator()(const StorePredicate::Constant& form) const { return form.value; }

    bool operator()(const StorePredicate::Comparison& test) const
    {
        const Value& right = constant(test.operand);
        Value left = read(object, test.keyPath);
        if (test.mask)
            left = left.isNumber() ? Value(left.asInteger() & *test.mask) : Value();
        if (test.texts && left.isString())
            return test.texts->contains(left.asText());
        if (!right.isNothing())
            return compares(left, test.comparator, right, test.option);
        const bool isAbsent = comparisonKind(left) == ComparisonKind::none;
        return (test.comparator == Comparator::equal && isAbsent)
            || (test.comparator == Comparator::notEqual && !isAbsent);
    }

    bool operator()(const StorePredicate::Compound& compound) const
    {
        for (const auto& part : compound.parts)
            if (matches(*part, object) != compound.isAll)
                return !compound.isAll;
        return compound.isAll;
    }

    bool operator()(const StorePredicate::Negation& negation) const
    {
        return !matches(*negation.part, object);
    }

    bool operator()(const StorePredicate::RowTest& test) const
    {
        const Slot& slot = toManySlot(object.entity(), test.relationship);
        return hasRow(object, slot, test.condition) == (test.wanted == Rows::some);
    }

    bool operator()(const StorePredicate::Membership& membership) const
    {
        const auto* group = constant(membership.group).as<const StoreObject>();
        if (!group)
            return false;
        const Slot& members = twoWaySlot(group->entity(), membership.members);
        const Slot& children = twoWaySlot(group->entity(), membership.children);
        return isBelow(object, *group, members, children);
    }
};

} // namespace

bool matches(const StorePredicate& predicate, StoreObject& object)
{
    return std::visit(Matcher{object}, predicate.form());
}

} // namespace objectstore
