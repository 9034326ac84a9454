// How values are made, compared, hashed and described.
#include "platform/value/Value.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <typeinfo>

namespace platform {

namespace {

const Value absentValue;

std::size_t mixed(std::size_t seed, std::size_t hash)
{
    return seed ^ (hash + 0x9e3779b97f4a7c15 + (seed << 6) + (seed >> 2));
}

/// The kind of Value that an object gets: its own for the four containers, whose classes are final.
Value::Kind kindOf(const Object* object)
{
    if (!object)
        return Value::Kind::object;
    const std::type_info& type = typeid(*object);
    if (type == typeid(String))
        return Value::Kind::string;
    if (type == typeid(Data))
        return Value::Kind::data;
    if (type == typeid(Array))
        return Value::Kind::array;
    if (type == typeid(Dictionary))
        return Value::Kind::dictionary;
    return Value::Kind::object;
}

/// Entries as a Dictionary keeps them: keys ascending, each once, none without a value.
bool areInOrder(const std::vector<Dictionary::Entry>& entries)
{
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (entries[i].second.isAbsent() || (i > 0 && entries[i - 1].first >= entries[i].first))
            return false;
    return true;
}

/// The entries as a Dictionary keeps them; of several of one key the last one stays.
std::vector<Dictionary::Entry> inOrder(std::vector<Dictionary::Entry> entries)
{
    std::vector<Dictionary::Entry*> order;
    order.reserve(entries.size());
    for (auto& entry : entries)
        order.push_back(&entry);
    std::ranges::stable_sort(
        order, {}, [](const auto* entry) -> auto& { return entry->first; });
    std::vector<Dictionary::Entry> kept;
    kept.reserve(entries.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool isLast = i + 1 == order.size() || order[i]->first != order[i + 1]->first;
        if (isLast && !order[i]->second.isAbsent())
            kept.push_back(std::move(*order[i]));
    }
    return kept;
}

/// Whole numbers compare as whole numbers, so that large ones do not lose their low digits.
bool equalNumbers(const Value& a, const Value& b)
{
    if (!a.isReal() && !b.isReal())
        return a.asInteger() == b.asInteger() && a.isWideUnsigned() == b.isWideUnsigned();
    return a.asReal() == b.asReal();
}

} // namespace

Value::Value(std::string_view text) { setObject(Kind::string, String::make(text).leak()); }
Value::Value(Ref<const String> string) { setObject(Kind::string, string.leak()); }
Value::Value(Ref<const Data> data) { setObject(Kind::data, data.leak()); }
Value::Value(Ref<const Array> array) { setObject(Kind::array, array.leak()); }
Value::Value(Ref<const Dictionary> dictionary) { setObject(Kind::dictionary, dictionary.leak()); }

Value::Value(Ref<const Object> object)
{
    const Kind kind = kindOf(object.get());
    setObject(kind, object.leak());
}

Value Value::data(std::string_view bytes) { return Value(Data::make(bytes)); }
Value Value::array(std::vector<Value> elements)
{
    return Value(Ref<const Array>(makeRef<Array>(std::move(elements))));
}
Value Value::dictionary(std::vector<std::pair<std::string, Value>> entries)
{
    return Value(Ref<const Dictionary>(makeRef<Dictionary>(std::move(entries))));
}

std::int64_t Value::asInteger() const
{
    if (_kind == Kind::boolean || _kind == Kind::integer)
        return _payload.integer;
    if (_kind != Kind::real || std::isnan(_payload.real))
        return 0;
    if (_payload.real >= 9223372036854775807.0)
        return INT64_MAX;
    if (_payload.real <= -9223372036854775808.0)
        return INT64_MIN;
    return static_cast<std::int64_t>(_payload.real);
}

double Value::asReal() const
{
    if (_kind == Kind::real)
        return _payload.real;
    if (_kind != Kind::boolean && _kind != Kind::integer)
        return 0;
    return _wideUnsigned ? static_cast<double>(static_cast<std::uint64_t>(_payload.integer))
                         : static_cast<double>(_payload.integer);
}

std::string_view Value::asText() const
{
    return isString() ? static_cast<const String*>(_payload.object)->text() : std::string_view();
}

std::string_view Value::asBytes() const
{
    return isData() ? static_cast<const Data*>(_payload.object)->bytes() : std::string_view();
}

const std::vector<Value>& Value::asArray() const
{
    static const std::vector<Value> none;
    return isArray() ? static_cast<const Array*>(_payload.object)->elements() : none;
}

const Dictionary* Value::asDictionary() const
{
    return isDictionary() ? static_cast<const Dictionary*>(_payload.object) : nullptr;
}

const Value& Value::operator[](std::string_view key) const
{
    const auto* dictionary = asDictionary();
    return dictionary ? (*dictionary)[key] : absentValue;
}

// A friend is no part of its exported class.
PLATFORM_EXPORT bool operator==(const Value& a, const Value& b)
{
    if (a.isNumber() && b.isNumber())
        return equalNumbers(a, b);
    if (a._kind != b._kind)
        return false;
    if (a.isDate())
        return a._payload.real == b._payload.real;
    if (a.holdsObject())
        return a._payload.object == b._payload.object || a._payload.object->isEqual(*b._payload.object);
    return true;
}

std::size_t Value::hash() const
{
    if (isNumber() || isDate())
        return std::hash<double>{}(isDate() ? _payload.real : asReal());
    return holdsObject() ? _payload.object->hash() : static_cast<std::size_t>(_kind);
}

std::string Value::description() const
{
    switch (_kind) {
    case Kind::absent:
        return "(absent)";
    case Kind::null:
        return "<null>";
    case Kind::boolean:
        return _payload.integer ? "true" : "false";
    case Kind::integer:
        return _wideUnsigned ? fmt::format("{}", static_cast<std::uint64_t>(_payload.integer))
                             : fmt::format("{}", _payload.integer);
    case Kind::real:
        return fmt::format("{}", _payload.real);
    case Kind::date:
        return fmt::format("@{}", _payload.real);
    default:
        return _payload.object->description();
    }
}

Bytes::Bytes(std::string_view bytes) : _size(bytes.size())
{
    char* const begin = reinterpret_cast<char*>(this + 1);
    *std::copy(bytes.begin(), bytes.end(), begin) = '\0';
}

Ref<const String> String::make(std::string_view text)
{
    return Ref<const String>::adopt(new (text.size()) String(text));
}

Ref<const Data> Data::make(std::string_view bytes)
{
    return Ref<const Data>::adopt(new (bytes.size()) Data(bytes));
}

bool String::isEqual(const Object& other) const
{
    const auto* string = dynamic_cast<const String*>(&other);
    return string && string->text() == text();
}

bool Data::isEqual(const Object& other) const
{
    const auto* data = dynamic_cast<const Data*>(&other);
    return data && data->bytes() == bytes();
}

std::string Data::description() const
{
    constexpr std::size_t shown = 24;
    std::string text = "<";
    for (const char byte : bytes().substr(0, shown))
        fmt::format_to(std::back_inserter(text), "{:02x}", static_cast<unsigned char>(byte));
    return fmt::format("{}{} {} bytes>", text, bytes().size() > shown ? "…" : "", bytes().size());
}

bool Array::isEqual(const Object& other) const
{
    const auto* array = dynamic_cast<const Array*>(&other);
    return array && array->_elements == _elements;
}

std::size_t Array::hash() const
{
    std::size_t hash = _elements.size();
    for (const auto& element : _elements)
        hash = mixed(hash, element.hash());
    return hash;
}

std::string Array::description() const
{
    std::string text = "(";
    for (const auto& element : _elements)
        text += (text.size() > 1 ? ", " : "") + element.description();
    return text + ")";
}

Dictionary::Dictionary(std::vector<Entry> entries)
    : _entries(areInOrder(entries) ? std::move(entries) : inOrder(std::move(entries)))
{
}

const Value& Dictionary::operator[](std::string_view key) const
{
    const auto at = std::lower_bound(_entries.begin(), _entries.end(), key,
        [](const Entry& entry, std::string_view wanted) { return std::string_view(entry.first) < wanted; });
    return at != _entries.end() && at->first == key ? at->second : absentValue;
}

bool Dictionary::isEqual(const Object& other) const
{
    const auto* dictionary = dynamic_cast<const Dictionary*>(&other);
    return dictionary && dictionary->_entries == _entries;
}

std::size_t Dictionary::hash() const
{
    std::size_t hash = _entries.size();
    for (const auto& [key, value] : _entries)
        hash = mixed(mixed(hash, std::hash<std::string>{}(key)), value.hash());
    return hash;
}

std::string Dictionary::description() const
{
    std::string text = "{";
    for (const auto& [key, value] : _entries)
        text += (text.size() > 1 ? ", " : "") + key + " = " + value.description();
    return text + "}";
}

} // namespace platform
