// How objects are read and changed by keys, and by keys joined with dots.
#include "objectstore/ContextState.h"

#include <fmt/format.h>

namespace objectstore {

using platform::Value;

Value StoreObject::valueForKey(std::string_view key)
{
    const Slot* slot = _entity->slot(key);
    return slot ? value(*slot) : valueForUndefinedKey(key);
}

void StoreObject::setValueForKey(std::string_view key, const Value& value) { setValue(slot(key), value); }

namespace {

Value valueBehind(const Value& start, std::string_view path)
{
    if (start.isArray()) {
        std::vector<Value> found;
        for (const auto& element : start.asArray()) {
            Value value = valueBehind(element, path);
            if (value.isArray())
                found.insert(found.end(), value.asArray().begin(), value.asArray().end());
            else if (!value.isAbsent())
                found.push_back(std::move(value));
        }
        return Value::array(std::move(found));
    }
    if (auto* object = start.as<StoreObject>())
        return object->valueForKeyPath(path);
    return start.isDictionary() ? start[path] : Value();
}

} // namespace

Value StoreObject::valueForKeyPath(std::string_view path)
{
    const std::size_t dot = path.find('.');
    if (dot == path.npos)
        return valueForKey(path);
    return valueBehind(valueForKey(path.substr(0, dot)), path.substr(dot + 1));
}

void StoreObject::setValueForKeyPath(std::string_view path, const Value& value)
{
    const std::size_t dot = path.find('.');
    if (dot == path.npos) {
        setValueForKey(path, value);
        return;
    }
    const Value next = valueForKey(path.substr(0, dot));
    if (auto* object = next.as<StoreObject>())
        object->setValueForKeyPath(path.substr(dot + 1), value);
    else if (!next.isNothing())
        throw InvalidKey(fmt::format("{}.{} leads to no object", _entity->name(), path));
}

} // namespace objectstore
