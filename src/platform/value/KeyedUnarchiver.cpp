// How an archive becomes objects again, whoever wrote it.
#include "platform/value/KeyedArchive.h"
#include "platform/value/KeyedArchiveForm.h"

#include <fmt/format.h>

namespace platform {

using namespace keyedarchive;

void ArchiveClasses::add(std::string className, Factory factory)
{
    _factories.insert_or_assign(std::move(className), std::move(factory));
}

const ArchiveClasses::Factory* ArchiveClasses::find(std::string_view className) const
{
    const auto at = _factories.find(className);
    return at == _factories.end() ? nullptr : &at->second;
}

KeyedUnarchiver::KeyedUnarchiver(
    std::string_view archive, const ArchiveClasses& classes, const PropertyListLimits& limits)
    : _classes(classes), _limits(limits)
{
    if (auto list = decodePropertyList(archive, limits))
        open(*list);
    else
        fail(list.error());
}

void KeyedUnarchiver::open(const Value& archive)
{
    const Value& version = archive[kVersionKey];
    if (!version.isInteger() || !archive[kRootKey].isDictionary() || !archive[kObjectsKey].isArray())
        return fail(KeyedArchiveFault::notArchive, "a property list, but no archive");
    if (version.isWideUnsigned() || version.asInteger() > kVersion)
        return fail(KeyedArchiveFault::newerArchive,
            fmt::format("archive version {}, known is {}", version.description(), kVersion));
    _archive = archive;
    _fields = _archive[kRootKey];
    _slots.resize(_archive[kObjectsKey].asArray().size());
}

void KeyedUnarchiver::fail(Error error)
{
    if (!_failure)
        _failure = std::move(error);
}

void KeyedUnarchiver::fail(KeyedArchiveFault code, std::string text)
{
    fail(Error{kKeyedArchiveErrorDomain, static_cast<long>(code), std::move(text)});
}

void KeyedUnarchiver::failWithType(std::string_view key, std::string_view wanted)
{
    const std::string_view className = _fields[kClassKey].asText();
    fail(KeyedArchiveFault::wrongType,
        fmt::format("{}{}\"{}\": {}", className, className.empty() ? "" : ", ", key, wanted));
}

bool KeyedUnarchiver::charge(std::size_t nodes)
{
    _nodes += nodes;
    if (_nodes > _limits.nodes)
        fail(KeyedArchiveFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
    return !_failure;
}

const Value& KeyedUnarchiver::field(std::string_view key) const
{
    static const Value missing;
    return _failure ? missing : _fields[markedKey(key)];
}

bool KeyedUnarchiver::contains(std::string_view key) const { return !field(key).isAbsent(); }

Value KeyedUnarchiver::scalar(std::string_view key, bool (*fits)(const Value&), const char* wanted)
{
    const Value& value = field(key);
    if (value.isAbsent() || fits(value))
        return value;
    failWithType(key, fmt::format("not {}", wanted));
    return {};
}

std::int64_t KeyedUnarchiver::decodeInteger(std::string_view key)
{
    const auto fits = [](const Value& value) { return value.isInteger() && !value.isWideUnsigned(); };
    return scalar(key, fits, "an integer").asInteger();
}

double KeyedUnarchiver::decodeDouble(std::string_view key)
{
    const auto fits = [](const Value& value) { return value.isReal() || value.isInteger(); };
    return scalar(key, fits, "a number").asReal();
}

bool KeyedUnarchiver::decodeBool(std::string_view key)
{
    const auto fits = [](const Value& value) { return value.isBoolean(); };
    return scalar(key, fits, "a boolean").asBoolean();
}

std::string KeyedUnarchiver::decodeString(std::string_view key)
{
    const auto fits = [](const Value& value) { return value.isString(); };
    return std::string(scalar(key, fits, "text").asText());
}

Value KeyedUnarchiver::decodeValue(std::string_view key)
{
    const Value value = field(key);
    return value.isAbsent() ? Value() : decoded(value);
}

/// Values nest no deeper than the limit, objects included, hence the recursion ends.
Value KeyedUnarchiver::decoded(const Value& value)
{
    if (!charge(1))
        return {};
    if (!value.isArray() && !value.isDictionary())
        return value;
    if (_depth == _limits.depth) {
        fail(KeyedArchiveFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
        return {};
    }
    ++_depth;
    Value result = value[kObjectKey].isAbsent() ? decodedContainer(value) : decodedObject(value[kObjectKey]);
    --_depth;
    return _failure ? Value() : result;
}

Value KeyedUnarchiver::decodedContainer(const Value& value)
{
    if (value.isArray()) {
        std::vector<Value> elements;
        elements.reserve(value.asArray().size());
        for (const Value& element : value.asArray())
            elements.push_back(decoded(element));
        return Value::array(std::move(elements));
    }
    if (!value[kNullKey].isAbsent())
        return NullMarker{};
    std::vector<Dictionary::Entry> entries;
    entries.reserve(value.asDictionary()->count());
    for (const auto& [key, element] : value.asDictionary()->entries()) {
        const bool isMarked = key.starts_with(kMark);
        if (isMarked && !key.starts_with(std::string(2, kMark)))
            fail(KeyedArchiveFault::notArchive, fmt::format("\"{:.40}\" has no place in a dictionary", key));
        entries.emplace_back(key.substr(isMarked ? 1 : 0), decoded(element));
    }
    return Value::dictionary(std::move(entries));
}

/// The object of a reference: made when it is met first, the same one ever after.
Value KeyedUnarchiver::decodedObject(const Value& reference)
{
    const std::int64_t index = reference.asInteger();
    if (!reference.isInteger() || reference.isWideUnsigned() || index < 0
        || static_cast<std::size_t>(index) >= _slots.size()) {
        fail(KeyedArchiveFault::notArchive,
            fmt::format("a reference to none of the {} objects", _slots.size()));
        return {};
    }
    Slot& slot = _slots[static_cast<std::size_t>(index)];
    if (slot.isOpen) {
        fail(KeyedArchiveFault::cycle, fmt::format("object {} holds itself", index));
        return {};
    }
    if (!slot.object.isAbsent()) {
        charge(slot.cost);
        return slot.object;
    }
    const std::size_t before = _nodes;
    slot.isOpen = true;
    slot.object = made(_archive[kObjectsKey].asArray()[static_cast<std::size_t>(index)]);
    slot.isOpen = false;
    slot.cost = _nodes - before;
    return slot.object;
}

Value KeyedUnarchiver::made(const Value& fields)
{
    const std::string className(fields[kClassKey].asText());
    const auto* factory = _classes.find(className);
    if (!factory) {
        fail(KeyedArchiveFault::unknownClass, fmt::format("the class \"{:.80}\" is unknown", className));
        return {};
    }
    const Value outer = std::exchange(_fields, fields);
    const Ref<const Object> object = (*factory)(*this);
    _fields = outer;
    if (!object)
        fail(KeyedArchiveFault::notArchive, fmt::format("no {} can be made of its fields", className));
    return _failure ? Value() : Value(object);
}

Result<Value> unarchivedValue(std::string_view archive, const ArchiveClasses& classes)
{
    KeyedUnarchiver unarchiver(archive, classes);
    Value value = unarchiver.decodeValue(kRootKey);
    if (unarchiver.failure())
        return *unarchiver.failure();
    return value;
}

} // namespace platform
