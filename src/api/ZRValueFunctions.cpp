// How a program makes, reads, compares and releases values.
#include "api/ZRValueFunctions.h"

#include "api/Border.h"
#include "core/ZRGroup.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/value/Unicode.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <cmath>
#include <map>

using border::as;
using border::borrowed;
using border::guarded;
using border::owned;
using border::Refused;
using platform::Object;
using platform::Ref;
using platform::Value;

namespace {

ZRTypeID typeOfObject(const Object* object)
{
    const auto is = [&]<class T>() { return dynamic_cast<const T*>(object) != nullptr; };
    if (is.operator()<ZRRecord>())
        return is.operator()<ZRPerson>()    ? kZRTypePerson
            : is.operator()<ZRSmartGroup>() ? kZRTypeSmartGroup
            : is.operator()<ZRGroup>()      ? kZRTypeGroup
                                            : kZRTypeRecord;
    if (is.operator()<ZRMultiValue>())
        return is.operator()<ZRMutableMultiValue>() ? kZRTypeMutableMultiValue : kZRTypeMultiValue;
    return is.operator()<ZRSearchElement>() ? kZRTypeSearchElement
        : is.operator()<ZRRoster>()         ? kZRTypeRoster
                                            : kZRTypeNone;
}

ZRTypeID typeOf(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::absent:
        return kZRTypeNone;
    case Value::Kind::null:
        return kZRTypeNull;
    case Value::Kind::boolean:
    case Value::Kind::integer:
    case Value::Kind::real:
        return kZRTypeNumber;
    case Value::Kind::date:
        return kZRTypeDate;
    case Value::Kind::string:
        return kZRTypeString;
    case Value::Kind::data:
        return kZRTypeData;
    case Value::Kind::array:
        return kZRTypeArray;
    case Value::Kind::dictionary:
        return kZRTypeDictionary;
    case Value::Kind::object:
        return typeOfObject(value.asObject());
    }
    return kZRTypeNone;
}

/// The bytes of an argument; raises Refused for an address that cannot be one.
std::string_view bytesOf(const void* bytes, std::size_t length)
{
    if (!bytes && length > 0)
        throw Refused();
    return {static_cast<const char*>(bytes), length};
}

/// Checks the arguments that lists of values come in, and answers their length.
std::size_t lengthOf(ZRIndex count, bool areListsThere)
{
    if (count < 0 || (count > 0 && !areListsThere))
        throw Refused();
    return static_cast<std::size_t>(count);
}

/// An element as it was given.
Ref<const Object> elementOf(ZRTypeRef handle)
{
    const Object* const object = border::objectBehind(handle);
    return object ? Ref<const Object>(object) : throw Refused();
}

/// The same in a dictionary, which may hold bare type codes: see ZRAddPropertiesAndTypes.
Ref<const Object> entryOf(ZRTypeRef handle)
{
    return handle && border::isBareWord(handle) ? border::bareWord(reinterpret_cast<std::intptr_t>(handle))
                                                : elementOf(handle);
}

/// The container itself where its elements are objects, or boxed with those that were given.
ZRTypeRef ownedContainer(const Value& container, border::Boxed::Objects elements)
{
    if (border::nestsDeeper(container, border::kDeepestNesting))
        throw Refused();
    if (border::needsBox(container))
        return border::handedOver(platform::makeRef<border::Boxed>(container, std::move(elements)));
    return owned(container);
}

} // namespace

// ---- any handle

ZRTypeRef ZRRetain(ZRTypeRef value)
{
    return guarded([&] { return border::handedOver(Ref<const Object>(border::objectBehind(value))); });
}

void ZRRelease(ZRTypeRef value)
{
    guarded([&] { Ref<const Object>::adopt(border::objectBehind(value)); });
}

bool ZREqual(ZRTypeRef a, ZRTypeRef b)
{
    return guarded([&] {
        const Value left = border::value(a);
        return !left.isAbsent() && left == border::value(b);
    });
}

uint64_t ZRHash(ZRTypeRef value)
{
    return guarded([&]() -> std::uint64_t { return value ? border::value(value).hash() : 0; });
}

ZRTypeID ZRGetTypeID(ZRTypeRef value)
{
    return guarded([&] { return typeOf(border::value(value)); });
}

ZRStringRef ZRCopyDescription(ZRTypeRef value)
{
    return guarded([&] { return value ? owned(border::value(value).description()) : nullptr; });
}

ZRNullRef ZRGetNull()
{
    return guarded([] { return borrowed(border::nullMarker().get()); });
}

// ---- texts

ZRStringRef ZRStringCreateWithUTF8(const char* text)
{
    return guarded([&] { return owned(border::text(text)); });
}

ZRStringRef ZRStringCreateWithBytes(const void* bytes, size_t length)
{
    return guarded([&] {
        const std::string_view text = bytesOf(bytes, length);
        return platform::propertylist::isUTF8(text) ? owned(text) : nullptr;
    });
}

const char* ZRStringGetUTF8(ZRStringRef text)
{
    return guarded([&] { return as<const platform::String>(text).text().data(); }, "");
}

size_t ZRStringGetUTF8Length(ZRStringRef text)
{
    return guarded([&] { return as<const platform::String>(text).text().size(); });
}

// ---- numbers and dates

ZRNumberRef ZRNumberCreateWithInteger(int64_t number)
{
    return guarded([&] { return owned(Value(number)); });
}

ZRNumberRef ZRNumberCreateWithReal(double number)
{
    return guarded([&] { return owned(Value(number)); });
}

ZRNumberRef ZRNumberCreateWithBool(bool truth)
{
    return guarded([&] { return owned(Value(truth)); });
}

int64_t ZRNumberGetInteger(ZRNumberRef number)
{
    return guarded([&] { return border::value(number).asInteger(); });
}

double ZRNumberGetReal(ZRNumberRef number)
{
    return guarded([&] { return border::value(number).asReal(); });
}

ZRDateRef ZRDateCreateWithSecondsSince1970(double seconds)
{
    return guarded([&] { return std::isfinite(seconds) ? owned(Value(platform::Date{seconds})) : nullptr; });
}

double ZRDateGetSecondsSince1970(ZRDateRef date)
{
    return guarded([&] { return border::value(date).asDate().seconds; });
}

// ---- data

ZRDataRef ZRDataCreate(const void* bytes, size_t length)
{
    return guarded([&] { return owned(Value::data(bytesOf(bytes, length))); });
}

const void* ZRDataGetBytes(ZRDataRef data)
{
    return guarded([&]() -> const void* { return as<const platform::Data>(data).bytes().data(); });
}

size_t ZRDataGetLength(ZRDataRef data)
{
    return guarded([&] { return as<const platform::Data>(data).bytes().size(); });
}

// ---- arrays

ZRArrayRef ZRArrayCreate(const ZRTypeRef* values, ZRIndex count)
{
    return guarded([&] {
        border::Boxed::Objects elements(lengthOf(count, values));
        std::vector<Value> array(elements.size());
        for (std::size_t i = 0; i < elements.size(); ++i) {
            elements[i] = elementOf(values[i]);
            array[i] = border::valueOf(elements[i].get());
        }
        return ownedContainer(Value::array(std::move(array)), std::move(elements));
    });
}

ZRIndex ZRArrayGetCount(ZRArrayRef array)
{
    return guarded([&] { return static_cast<ZRIndex>(border::value(array).asArray().size()); });
}

ZRTypeRef ZRArrayGetValueAtIndex(ZRArrayRef array, ZRIndex index)
{
    return guarded([&] {
        const bool isArray = index >= 0 && border::value(array).isArray();
        return isArray ? borrowed(border::elementOf(as<const Object>(array), static_cast<std::size_t>(index)))
                       : nullptr;
    });
}

// ---- dictionaries

ZRDictionaryRef ZRDictionaryCreate(const char* const* keys, const ZRTypeRef* values, ZRIndex count)
{
    return guarded([&] {
        std::map<std::string, Ref<const Object>> byKey;
        for (std::size_t i = 0; i < lengthOf(count, keys && values); ++i)
            byKey.insert_or_assign(std::string(border::text(keys[i])), entryOf(values[i]));
        std::vector<platform::Dictionary::Entry> entries;
        border::Boxed::Objects elements;
        for (const auto& [key, object] : byKey) {
            entries.emplace_back(key, border::valueOf(object.get()));
            elements.push_back(object);
        }
        return ownedContainer(Value::dictionary(std::move(entries)), std::move(elements));
    });
}

ZRIndex ZRDictionaryGetCount(ZRDictionaryRef dictionary)
{
    return guarded([&] {
        const Value value = border::value(dictionary);
        return value.asDictionary() ? static_cast<ZRIndex>(value.asDictionary()->count()) : 0;
    });
}

ZRTypeRef ZRDictionaryGetValue(ZRDictionaryRef dictionary, const char* key)
{
    return guarded([&]() -> ZRTypeRef {
        const Value value = border::value(dictionary);
        if (!value.isDictionary())
            return nullptr;
        const auto& entries = value.asDictionary()->entries();
        const auto at = std::ranges::lower_bound(entries, border::text(key), {},
            [](const auto& entry) -> std::string_view { return entry.first; });
        if (at == entries.end() || at->first != key)
            return nullptr;
        const auto place = static_cast<std::size_t>(at - entries.begin());
        return borrowed(border::elementOf(as<const Object>(dictionary), place));
    });
}

ZRArrayRef ZRDictionaryCopyKeys(ZRDictionaryRef dictionary)
{
    return guarded([&]() -> ZRArrayRef {
        const Value value = border::value(dictionary);
        if (!value.isDictionary())
            return nullptr;
        std::vector<std::string> keys;
        for (const auto& entry : value.asDictionary()->entries())
            keys.push_back(entry.first);
        return owned(keys);
    });
}
