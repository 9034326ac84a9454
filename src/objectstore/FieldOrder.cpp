// How fields are ordered in memory.
#include "objectstore/FieldOrder.h"

#include <fmt/format.h>

namespace objectstore {

namespace {

int rankOf(FieldKind kind)
{
    switch (kind) {
    case FieldKind::absent:
        return 0;
    case FieldKind::integer:
    case FieldKind::real:
        return 1;
    case FieldKind::text:
        return 2;
    default:
        return 3;
    }
}

/// What decides an object's place: what the store sorts by, or what a save would make of it.
FieldValue sortedField(StoreObject& object, const Slot& slot)
{
    if (object.hasChanges() && slot.lazy && object.isAbsent(slot))
        return {};
    if (object.hasChanges())
        return ObjectAccess::field(object, slot);
    const Row* row = ObjectAccess::row(object).get();
    return row ? row->value(slot.field) : ObjectAccess::field(object, slot);
}

int compareNumbers(const FieldValue& a, const FieldValue& b)
{
    if (a.kind == FieldKind::integer && b.kind == FieldKind::integer)
        return a.integer < b.integer ? -1 : a.integer > b.integer;
    // Wider than double, so that large whole numbers keep their order against floating ones.
    const long double left = a.kind == FieldKind::integer ? static_cast<long double>(a.integer) : a.real;
    const long double right = b.kind == FieldKind::integer ? static_cast<long double>(b.integer) : b.real;
    return left < right ? -1 : left > right;
}

int compare(const FieldValue& a, const FieldValue& b)
{
    const int left = rankOf(a.kind), right = rankOf(b.kind);
    if (left != right)
        return left - right;
    if (left == 0)
        return 0;
    return left == 1 ? compareNumbers(a, b) : a.bytes.compare(b.bytes);
}

} // namespace

FieldOrder::FieldOrder(const StoreFetch& fetch)
{
    for (const auto& sort : fetch.sortKeys) {
        const Slot* slot = fetch.entity->slot(sort.key);
        if (!slot || !slot->hasColumn())
            throw InvalidKey(fmt::format("{} cannot be sorted by \"{}\"", fetch.entity->name(), sort.key));
        _keys.push_back({slot, sort.ascending});
    }
}

bool FieldOrder::operator()(const ObjectRef& a, const ObjectRef& b) const
{
    for (const auto& [slot, ascending] : _keys)
        if (const int order = compare(sortedField(*a, *slot), sortedField(*b, *slot)))
            return (order < 0) == ascending;
    const std::int64_t left = a->key(), right = b->key();
    if ((left < 0) != (right < 0))
        return right < 0;
    return left < 0 ? left > right : left < right;
}

} // namespace objectstore
