// How an object's attributes are read and changed.
#include "objectstore/ContextState.h"
#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <cmath>

namespace objectstore {

using platform::Value;

FieldValue fieldOf(const Value& value)
{
    FieldValue field;
    switch (value.kind()) {
    case Value::Kind::boolean:
    case Value::Kind::integer:
        field.kind = FieldKind::integer;
        field.integer = value.asInteger();
        break;
    case Value::Kind::real:
        field.kind = FieldKind::real;
        field.real = value.asReal();
        break;
    case Value::Kind::date:
        field.kind = FieldKind::real;
        field.real = value.asDate().seconds;
        break;
    case Value::Kind::string:
        field.kind = FieldKind::text;
        field.bytes = value.asText();
        break;
    case Value::Kind::data:
        field.kind = FieldKind::bytes;
        field.bytes = value.asBytes();
        break;
    default:
        break;
    }
    return field;
}

FieldValue ObjectAccess::fieldIfKnown(const StoreObject& object, const Slot& slot)
{
    if (object._overlay)
        if (const Value* value = object._overlay->find(slot))
            return fieldOf(*value);
    return object._row ? object._row->value(slot.field) : FieldValue();
}

Value valueOf(const Slot& slot, const FieldValue& field)
{
    switch (field.kind) {
    case FieldKind::integer:
        if (slot.type == AttributeType::boolean)
            return field.integer != 0;
        if (slot.type == AttributeType::real)
            return static_cast<double>(field.integer);
        if (slot.type == AttributeType::date)
            return platform::Date{static_cast<double>(field.integer)};
        return field.integer;
    case FieldKind::real:
        return slot.type == AttributeType::date ? Value(platform::Date{field.real}) : Value(field.real);
    case FieldKind::text:
        return field.bytes;
    case FieldKind::bytes:
        return Value::data(field.bytes);
    default:
        return {};
    }
}

namespace {

[[noreturn]] void refuse(const Slot& slot, const Value& value)
{
    throw InvalidKey(fmt::format("{}.{} cannot hold {}", slot.entity->name(), slot.key, value.description()));
}

Value finite(double real) { return std::isnan(real) ? Value() : Value(real); }

/// The value as the slot holds it.
Value fitting(const Slot& slot, const Value& value)
{
    if (value.isNothing())
        return {};
    switch (slot.type) {
    case AttributeType::any:
        return value;
    case AttributeType::string:
        if (value.isString())
            return value;
        break;
    case AttributeType::data:
        if (value.isData())
            return value;
        break;
    case AttributeType::date:
        if (value.isDate())
            return std::isnan(value.asDate().seconds) ? Value() : value;
        break;
    case AttributeType::integer:
        if (value.isNumber())
            return value.asInteger();
        break;
    case AttributeType::real:
        if (value.isNumber())
            return finite(value.asReal());
        break;
    case AttributeType::boolean:
        if (value.isNumber())
            return value.asBoolean();
        break;
    case AttributeType::number:
        if (value.isReal())
            return finite(value.asReal());
        if (value.isNumber())
            return value.asInteger();
        break;
    }
    refuse(slot, value);
}

} // namespace

const Row* StoreObject::row()
{
    if (!_row && !isInserted() && !(_state & kGone)) {
        Operation operation(requireContext());
        operation->fill(*this);
    }
    return _row.get();
}

FieldValue StoreObject::field(const Slot& slot)
{
    if (_overlay)
        if (const Value* value = _overlay->find(slot))
            return fieldOf(*value);
    const Row* stored = row();
    return stored ? stored->value(slot.field) : FieldValue();
}

Value StoreObject::storedValue(const Slot& slot)
{
    if (_overlay)
        if (const Value* value = _overlay->find(slot))
            return *value;
    if (slot.kind == SlotKind::largeAttribute)
        return largeValue(slot);
    if (!slot.hasColumn())
        return {};
    const Row* stored = row();
    return stored ? valueOf(slot, stored->value(slot.field)) : Value();
}

Value StoreObject::largeValue(const Slot& slot)
{
    StoreContext* owner = context();
    if (_key <= 0 || !owner)
        return {};
    row();
    Operation operation(*owner);
    PersistentStore& store = operation->requireStore(_store);
    return readForObject(store, [&]() -> Value {
        Reading reading(*operation, store);
        sqlite::Use find(reading->connection->prepared(
            fmt::format("SELECT value FROM {} WHERE \"_key\" = ?", slot.table)));
        find->bind(1, _key);
        if (!find->step() || find->isNull(0))
            return {};
        return slot.type == AttributeType::string ? Value(find->text(0)) : Value::data(find->bytes(0));
    });
}

Value StoreObject::lazyValue(const Slot& slot)
{
    if (!context())
        return {};
    Value value = slot.lazy(*this);
    keepDerivedValue(slot, value);
    return value;
}

Value StoreObject::value(const Slot& slot)
{
    switch (slot.kind) {
    case SlotKind::attribute:
    case SlotKind::largeAttribute: {
        Value value = storedValue(slot);
        return value.isAbsent() && slot.lazy ? lazyValue(slot) : value;
    }
    case SlotKind::computed:
        return slot.get(*this);
    case SlotKind::toOne:
    case SlotKind::toOneInverse:
        return related(slot);
    default:
        break;
    }
    std::vector<Value> elements;
    for (auto& object : objects(slot))
        elements.push_back(std::move(object));
    return Value::array(std::move(elements));
}

FieldValue StoreObject::fieldOrLazy(const Slot& slot)
{
    if (!slot.hasColumn())
        throw InvalidKey(fmt::format("{}.{} is no stored attribute", slot.entity->name(), slot.key));
    FieldValue found = field(slot);
    if (found.kind != FieldKind::absent || !slot.lazy || !context())
        return found;
    lazyValue(slot);
    return field(slot);
}

namespace {

/// Whether the slot says what its column says.
bool isPlainColumn(const Slot& slot)
{
    return slot.kind == SlotKind::attribute && slot.hasColumn() && !slot.lazy;
}

} // namespace

// Most objects have no unsaved changes: their row answers, without the detour of a field.

std::string_view StoreObject::text(const Slot& slot)
{
    if (_row && !_overlay && isPlainColumn(slot))
        return _row->kind(slot.field) == FieldKind::text ? _row->bytes(slot.field) : std::string_view();
    const FieldValue found = fieldOrLazy(slot);
    return found.kind == FieldKind::text ? found.bytes : std::string_view();
}

std::string_view StoreObject::bytes(const Slot& slot)
{
    const FieldValue found = fieldOrLazy(slot);
    return found.kind == FieldKind::bytes ? found.bytes : std::string_view();
}

std::int64_t StoreObject::integer(const Slot& slot)
{
    if (_row && !_overlay && isPlainColumn(slot))
        return _row->integer(slot.field);
    const FieldValue found = fieldOrLazy(slot);
    return found.kind == FieldKind::real ? static_cast<std::int64_t>(found.real) : found.integer;
}

double StoreObject::real(const Slot& slot)
{
    const FieldValue found = fieldOrLazy(slot);
    return found.kind == FieldKind::integer ? static_cast<double>(found.integer) : found.real;
}

bool StoreObject::boolean(const Slot& slot) { return real(slot) != 0; }

bool StoreObject::isAbsent(const Slot& slot)
{
    if (_row && !_overlay && isPlainColumn(slot))
        return _row->isAbsent(slot.field);
    if (slot.kind == SlotKind::attribute && slot.hasColumn())
        return fieldOrLazy(slot).kind == FieldKind::absent;
    if (slot.kind == SlotKind::toOne)
        return relatedKey(slot) == 0;
    return value(slot).isNothing();
}

Value StoreObject::primitiveValue(const Slot& slot)
{
    if (slot.kind == SlotKind::toOne)
        return related(slot);
    if (slot.kind > SlotKind::largeAttribute)
        throw InvalidKey(fmt::format("{}.{} is not stored", slot.entity->name(), slot.key));
    return storedValue(slot);
}

void StoreObject::keepDerivedValue(const Slot& slot, const Value& value)
{
    if (!_overlay)
        _overlay = std::make_unique<Overlay>();
    _overlay->keep(slot, fitting(slot, value));
}

/// A value that the row has too is no change any more: what another context writes there then counts.
void StoreObject::putAttribute(const Slot& slot, Value value)
{
    Operation operation(requireContext());
    if (!_overlay)
        _overlay = std::make_unique<Overlay>();
    if (slot.isTransient()) {
        _overlay->keep(slot, std::move(value));
        return;
    }
    if (isInserted() || slot.kind == SlotKind::largeAttribute) {
        _overlay->change(slot, std::move(value));
    } else {
        const Row* held = row();
        const Value stored = held ? valueOf(slot, held->value(slot.field)) : Value();
        const bool isStored = held && stored == value && stored.kind() == value.kind();
        if (isStored && !_overlay->isChanged(slot)) {
            _overlay->remove(slot);
            return;
        }
        if (isStored)
            _overlay->remove(slot);
        else
            _overlay->change(slot, std::move(value));
    }
    operation->markChanged(*this);
    operation->noteText(*this, slot);
}

void StoreObject::finishSet(const Slot& slot)
{
    if (slot.didSet)
        slot.didSet(*this);
    didChange(slot);
}

void StoreObject::setValue(const Slot& slot, const Value& value)
{
    switch (slot.kind) {
    case SlotKind::attribute:
    case SlotKind::largeAttribute:
        putAttribute(slot, fitting(slot, value));
        finishSet(slot);
        return;
    case SlotKind::computed:
        if (!slot.set)
            throw InvalidKey(fmt::format("{}.{} cannot be set", slot.entity->name(), slot.key));
        slot.set(*this, value);
        return;
    case SlotKind::toOne:
    case SlotKind::toOneInverse: {
        auto* object = value.as<StoreObject>();
        if (!object && !value.isNothing())
            refuse(slot, value);
        setRelated(slot, object);
        return;
    }
    default:
        break;
    }
    ObjectList objects;
    for (const auto& element : value.asArray()) {
        auto* object = element.as<StoreObject>();
        if (!object)
            refuse(slot, element);
        objects.push_back(ObjectRef(object));
    }
    if (!value.isArray() && !value.isNothing())
        refuse(slot, value);
    setObjects(slot, objects);
}

void StoreObject::setPrimitiveValue(const Slot& slot, const Value& value)
{
    if (slot.kind > SlotKind::largeAttribute)
        throw InvalidKey(fmt::format("{}.{} is no stored attribute", slot.entity->name(), slot.key));
    putAttribute(slot, fitting(slot, value));
}

} // namespace objectstore
