// The one dynamic value: what a property holds, what a preference holds, what crosses the C border.
#pragma once

#include "platform/value/Export.h"
#include "platform/value/Object.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

class String;
class Data;
class Array;
class Dictionary;

/// Seconds since 1 January 1970 UTC.
struct Date {
    double seconds = 0;
    friend auto operator<=>(const Date&, const Date&) = default;
};

/// The null marker: "no value", where a container needs something to hold.
struct NullMarker {
    friend bool operator==(NullMarker, NullMarker) { return true; }
};

/// One immutable value of any kind, or none ("absent", the default).
///
/// Text, data, arrays and dictionaries are Objects of their own, shared by reference: copying a Value copies
/// no bytes. A number remembers how it was made: boolean, whole or floating.
///
/// Ownership: shares its payload.
/// Threads:   a payload never changes; one Value is used by one thread at a time, like any plain value.
/// Errors:    none; a reader of the wrong kind answers absent, zero or empty.
class PLATFORM_EXPORT Value {
public:
    enum class Kind : std::uint8_t {
        absent,
        null,
        boolean,
        integer,
        real,
        date,
        string,
        data,
        array,
        dictionary,
        object
    };

    Value() = default;
    Value(NullMarker) { _kind = Kind::null; }
    Value(bool boolean) { _kind = Kind::boolean, _payload.integer = boolean; }
    Value(double real) { _kind = Kind::real, _payload.real = real; }
    Value(Date date) { _kind = Kind::date, _payload.real = date.seconds; }
    template <std::signed_integral T>
    Value(T integer)
    {
        _kind = Kind::integer, _payload.integer = integer;
    }
    /// A number above the largest signed one stays what it is: `isWideUnsigned`.
    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) Value(T integer)
    {
        _kind = Kind::integer, _payload.integer = static_cast<std::int64_t>(integer);
        _wideUnsigned = static_cast<std::uint64_t>(integer) > static_cast<std::uint64_t>(INT64_MAX);
    }
    Value(std::string_view text);
    Value(const std::string& text) : Value(std::string_view(text)) { }
    Value(const char* text) : Value(text ? Value(std::string_view(text)) : Value()) { }
    Value(Ref<const String> string);
    Value(Ref<const Data> data);
    Value(Ref<const Array> array);
    Value(Ref<const Dictionary> dictionary);
    /// Any other object. An empty Ref gives absent; a String, Data, Array or Dictionary gets its own kind.
    Value(Ref<const Object> object);
    template <class T>
    requires std::derived_from<T, Object> Value(const Ref<T>& object) : Value(Ref<const Object>(object)) { }

    Value(const Value& other) noexcept
        : _payload(other._payload), _kind(other._kind), _wideUnsigned(other._wideUnsigned)
    {
        if (holdsObject())
            _payload.object->retain();
    }
    Value(Value&& other) noexcept
        : _payload(other._payload)
        , _kind(std::exchange(other._kind, Kind::absent))
        , _wideUnsigned(other._wideUnsigned)
    {
    }
    ~Value()
    {
        if (holdsObject())
            _payload.object->release();
    }
    Value& operator=(Value other) noexcept
    {
        std::swap(_payload, other._payload);
        std::swap(_kind, other._kind);
        std::swap(_wideUnsigned, other._wideUnsigned);
        return *this;
    }

    /// Bytes that are no text.
    static Value data(std::string_view bytes);
    static Value array(std::vector<Value> elements);
    static Value dictionary(std::vector<std::pair<std::string, Value>> entries);

    Kind kind() const { return _kind; }
    bool isAbsent() const { return _kind == Kind::absent; }
    bool isNull() const { return _kind == Kind::null; }
    /// Absent or the null marker: both mean "no value" to whoever stores.
    bool isNothing() const { return _kind <= Kind::null; }
    bool isBoolean() const { return _kind == Kind::boolean; }
    bool isInteger() const { return _kind == Kind::integer; }
    bool isWideUnsigned() const { return _kind == Kind::integer && _wideUnsigned; }
    bool isReal() const { return _kind == Kind::real; }
    bool isNumber() const { return _kind >= Kind::boolean && _kind <= Kind::real; }
    bool isDate() const { return _kind == Kind::date; }
    bool isString() const { return _kind == Kind::string; }
    bool isData() const { return _kind == Kind::data; }
    bool isArray() const { return _kind == Kind::array; }
    bool isDictionary() const { return _kind == Kind::dictionary; }
    /// An object that is none of the four containers.
    bool isObject() const { return _kind == Kind::object; }

    /// Of any number; a real is cut towards zero and kept within the range of the type.
    std::int64_t asInteger() const;
    double asReal() const;
    bool asBoolean() const { return isNumber() && asReal() != 0; }
    Date asDate() const { return {isDate() ? _payload.real : 0}; }
    /// The UTF-8 text, alive as long as this value; empty when this is no string.
    std::string_view asText() const;
    /// The bytes, alive as long as this value; empty when this is no data.
    std::string_view asBytes() const;
    /// The elements; none when this is no array.
    const std::vector<Value>& asArray() const;
    /// The entry of a dictionary, or absent.
    const Value& operator[](std::string_view key) const;
    const Dictionary* asDictionary() const;
    const Object* asObject() const { return holdsObject() ? _payload.object : nullptr; }
    /// The object as a T, or null when it is none.
    template <class T>
    T* as() const
    {
        return holdsObject() ? dynamic_cast<T*>(const_cast<Object*>(_payload.object)) : nullptr;
    }

    /// Equal in content. Whole and floating numbers of one amount are equal; a date is no number.
    friend bool operator==(const Value& a, const Value& b);
    std::size_t hash() const;
    /// Text for people who debug: the text itself, numbers in decimal, containers in braces.
    std::string description() const;

private:
    bool holdsObject() const { return _kind >= Kind::string; }
    void setObject(Kind kind, const Object* owned)
    {
        _kind = owned ? kind : Kind::absent;
        _payload.object = owned;
    }

    union Payload {
        std::int64_t integer;
        double real;
        const Object* object;
    } _payload{0};
    Kind _kind = Kind::absent;
    bool _wideUnsigned = false;
};

static_assert(sizeof(Value) == 16);

/// Immutable bytes that lie in one block with their object: a card has dozens of texts, most of them short.
/// A zero stands behind the last byte.
class PLATFORM_EXPORT Bytes : public Object {
public:
    std::string_view view() const { return {reinterpret_cast<const char*>(this + 1), _size}; }
    std::size_t hash() const override { return std::hash<std::string_view>{}(view()); }
    static void operator delete(void* block) { ::operator delete(block); }

protected:
    explicit Bytes(std::string_view bytes);
    ~Bytes() override = default;
    static void* operator new(std::size_t size, std::size_t count)
    {
        return ::operator new(size + count + 1);
    }
    static void operator delete(void* block, std::size_t) { ::operator delete(block); }

private:
    const std::size_t _size;
};

/// Immutable UTF-8 text.
class PLATFORM_EXPORT String final : public Bytes {
public:
    static Ref<const String> make(std::string_view text);
    std::string_view text() const { return view(); }
    bool isEqual(const Object& other) const override;
    std::string description() const override { return std::string(view()); }

private:
    using Bytes::Bytes;
    ~String() override = default;
};

/// Immutable bytes that are no text.
class PLATFORM_EXPORT Data final : public Bytes {
public:
    static Ref<const Data> make(std::string_view bytes);
    std::string_view bytes() const { return view(); }
    bool isEqual(const Object& other) const override;
    std::string description() const override;

private:
    using Bytes::Bytes;
    ~Data() override = default;
};

static_assert(sizeof(String) == sizeof(Bytes) && sizeof(Data) == sizeof(Bytes), "the bytes lie right behind");

/// An immutable list of values. Elements may be absent only where a caller put them so.
class PLATFORM_EXPORT Array final : public Object {
public:
    explicit Array(std::vector<Value> elements) : _elements(std::move(elements)) { }
    const std::vector<Value>& elements() const { return _elements; }
    bool isEqual(const Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override;

private:
    ~Array() override = default;
    std::vector<Value> _elements;
};

/// An immutable map from text to values, kept in ascending order of the keys' bytes.
class PLATFORM_EXPORT Dictionary final : public Object {
public:
    using Entry = std::pair<std::string, Value>;

    /// Of several entries of one key the last counts; an entry without a value is left out.
    explicit Dictionary(std::vector<Entry> entries);
    const std::vector<Entry>& entries() const { return _entries; }
    std::size_t count() const { return _entries.size(); }
    /// The value, or absent.
    const Value& operator[](std::string_view key) const;
    bool isEqual(const Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override;

private:
    ~Dictionary() override = default;
    std::vector<Entry> _entries;
};

} // namespace platform

template <>
struct std::hash<platform::Value> {
    std::size_t operator()(const platform::Value& value) const { return value.hash(); }
};
