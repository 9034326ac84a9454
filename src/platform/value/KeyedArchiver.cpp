// How objects become an archive.
#include "platform/value/KeyedArchive.h"
#include "platform/value/KeyedArchiveForm.h"

#include <fmt/format.h>

namespace platform {

using namespace keyedarchive;

KeyedArchiver::KeyedArchiver(const PropertyListLimits& limits) : _limits(limits) { }

void KeyedArchiver::encodeValue(std::string_view key, const Value& value)
{
    if (value.isAbsent() || _failure)
        return;
    // The fields may move on to another object while this one encodes itself: look them up afterwards.
    Value written = encoded(value);
    _fields->emplace_back(markedKey(key), std::move(written));
}

void KeyedArchiver::fail(Error error)
{
    if (!_failure)
        _failure = std::move(error);
}

void KeyedArchiver::fail(KeyedArchiveFault code, std::string text)
{
    fail(Error{kKeyedArchiveErrorDomain, static_cast<long>(code), std::move(text)});
}

/// What is written can be read: the reader counts in the same way.
void KeyedArchiver::charge(std::size_t nodes)
{
    _nodes += nodes;
    if (_nodes > _limits.nodes)
        fail(KeyedArchiveFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
}

/// Values nest no deeper than the limit, objects included, hence the recursion ends.
Value KeyedArchiver::encoded(const Value& value)
{
    if (_failure)
        return {};
    charge(1);
    if (value.isNull())
        return Value::dictionary({{kNullKey, Value(true)}});
    if (value.isAbsent())
        fail(KeyedArchiveFault::notArchivable, "an absent element");
    if (!value.isArray() && !value.isDictionary() && !value.isObject())
        return value;
    if (_depth == _limits.depth) {
        fail(KeyedArchiveFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
        return {};
    }
    ++_depth;
    Value result = value.isObject() ? encodedObject(value) : encodedContainer(value);
    --_depth;
    return result;
}

Value KeyedArchiver::encodedContainer(const Value& value)
{
    if (value.isArray()) {
        std::vector<Value> elements;
        elements.reserve(value.asArray().size());
        for (const Value& element : value.asArray())
            elements.push_back(encoded(element));
        return Value::array(std::move(elements));
    }
    Entries entries;
    entries.reserve(value.asDictionary()->count());
    for (const auto& [key, element] : value.asDictionary()->entries())
        entries.emplace_back(markedKey(key), encoded(element));
    return Value::dictionary(std::move(entries));
}

/// The reference that stands for an object; the object itself is written when it is met first.
Value KeyedArchiver::encodedObject(const Value& value)
{
    const auto* archivable = value.as<const Archivable>();
    if (!archivable) {
        fail(KeyedArchiveFault::notArchivable, value.description() + " cannot be archived");
        return {};
    }
    const auto [at, isNew] = _written.try_emplace(value.asObject(), Written{_objects.size(), true, 0, value});
    // The map may grow while the object encodes itself; its elements stay where they are.
    Written& written = at->second;
    if (!isNew) {
        if (written.isOpen)
            fail(KeyedArchiveFault::cycle, archivable->archiveClassName() + " holds itself");
        charge(written.cost);
        return Value::dictionary({{kObjectKey, Value(static_cast<std::int64_t>(written.index))}});
    }
    _objects.emplace_back();
    const std::size_t before = _nodes;
    Entries fields;
    Entries* const outer = std::exchange(_fields, &fields);
    archivable->encodeWithCoder(*this);
    _fields = outer;
    fields.emplace_back(kClassKey, Value(archivable->archiveClassName()));
    _objects[written.index] = Value::dictionary(std::move(fields));
    written.cost = _nodes - before;
    written.isOpen = false;
    return Value::dictionary({{kObjectKey, Value(static_cast<std::int64_t>(written.index))}});
}

Result<std::string> KeyedArchiver::finish(PropertyListFormat format)
{
    if (_failure)
        return *_failure;
    return encodePropertyList(
        Value::dictionary({{kVersionKey, Value(kVersion)}, {kRootKey, Value::dictionary(std::move(_root))},
            {kObjectsKey, Value::array(std::move(_objects))}}),
        format, _limits);
}

Result<std::string> archivedValue(const Value& value, PropertyListFormat format)
{
    KeyedArchiver archiver;
    archiver.encodeValue(kRootKey, value);
    return archiver.finish(format);
}

} // namespace platform
