// How a value that is no object of its own becomes one, so that a handle can stand for it.
#include "api/Boxed.h"

#include "core/ZRMultiValue.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>

using platform::Object;
using platform::Ref;
using platform::Value;

namespace border {

namespace {

/// Calls `visit` for each element of an array or value of a dictionary, until one answers true.
template <class Visit>
bool anyElement(const Value& container, Visit visit)
{
    if (const auto* dictionary = container.asDictionary())
        return std::ranges::any_of(
            dictionary->entries(), [&](const auto& entry) { return visit(entry.second); });
    return std::ranges::any_of(container.asArray(), visit);
}

bool isContainer(const Value& value) { return value.isArray() || value.isDictionary(); }

Ref<const Object> boxedContainer(const Value& container)
{
    Boxed::Objects objects;
    anyElement(container, [&](const Value& element) {
        objects.push_back(objectOf(element));
        return false;
    });
    return platform::makeRef<Boxed>(container, std::move(objects));
}

} // namespace

bool Boxed::isEqual(const Object& other) const { return _value == valueOf(&other); }

bool needsBox(const Value& value)
{
    return isContainer(value) ? anyElement(value, needsBox) : value.asObject() == nullptr;
}

Ref<const Object> bareWord(std::int64_t word)
{
    return platform::makeRef<Boxed>(Value(word), Boxed::Origin::bareWord);
}

bool isBare(const Object& object)
{
    const auto* boxed = dynamic_cast<const Boxed*>(&object);
    return boxed && boxed->origin() == Boxed::Origin::bareWord;
}

Ref<const Object> objectOf(const Value& value)
{
    if (value.isAbsent())
        return nullptr;
    if (value.isNull())
        return nullMarker();
    if (!needsBox(value)) {
        if (const auto* multiValue = value.as<ZRMultiValue>())
            multiValue->primaryIdentifier();
        return Ref<const Object>(value.asObject());
    }
    return isContainer(value) ? boxedContainer(value) : Ref<const Object>(platform::makeRef<Boxed>(value));
}

Value valueOf(const Object* object)
{
    const auto* boxed = dynamic_cast<const Boxed*>(object);
    return boxed ? boxed->value() : Value(Ref<const Object>(object));
}

const Object* elementOf(const Object& container, std::size_t index)
{
    if (const auto* boxed = dynamic_cast<const Boxed*>(&container))
        return index < boxed->elements().size() ? boxed->elements()[index].get() : nullptr;
    if (const auto* array = dynamic_cast<const platform::Array*>(&container))
        return index < array->elements().size() ? array->elements()[index].asObject() : nullptr;
    const auto* dictionary = dynamic_cast<const platform::Dictionary*>(&container);
    return dictionary && index < dictionary->count() ? dictionary->entries()[index].second.asObject()
                                                     : nullptr;
}

const Ref<const Object>& nullMarker()
{
    static const platform::NeverDestroyed<Value> null(platform::NullMarker{});
    static const platform::NeverDestroyed<Ref<const Object>> marker(platform::makeRef<Boxed>(*null));
    return *marker;
}

bool nestsDeeper(const Value& value, int levels)
{
    if (!isContainer(value))
        return false;
    return levels == 0
        || anyElement(value, [&](const Value& element) { return nestsDeeper(element, levels - 1); });
}

} // namespace border
