// How a value is laid out in the binary form: each distinct text, number and date once, containers as they
// come.
#include "platform/value/PropertyListCodec.h"
#include "platform/value/Unicode.h"

#include <bit>
#include <limits>
#include <unordered_map>

namespace platform::propertylist {

namespace {

using Index = std::uint32_t;

/// A number, boolean or date as what makes it distinct: its kind and its bits.
struct ScalarBits {
    Value::Kind kind;
    bool wide;
    std::uint64_t bits;
    friend bool operator==(const ScalarBits&, const ScalarBits&) = default;
};

struct ScalarBitsHash {
    std::size_t operator()(const ScalarBits& scalar) const
    {
        return std::hash<std::uint64_t>{}(
            scalar.bits * 31 + static_cast<unsigned>(scalar.kind) * 2 + scalar.wide);
    }
};

/// One object of the file to be: a text, or a value; a container with the objects it refers to, of a
/// dictionary key and value by turns. It borrows from the value that is being encoded.
struct Flat {
    const Value* value;
    std::string_view text;
    std::vector<Index> references;
};

/// First pass: numbers the objects, the root first.
class Flattener : public Sink {
public:
    void open(const Value& container) override
    {
        _open.push_back(refer(add({&container, {}, {}})));
        _flats.back().references.reserve(
            container.isArray() ? container.asArray().size() : 2 * container.asDictionary()->count());
    }
    void close(const Value&) override { _open.pop_back(); }
    std::optional<std::string> key(const std::string& key) override
    {
        refer(unique(_texts, std::string_view(key), {nullptr, key, {}}));
        return std::nullopt;
    }
    std::optional<std::string> scalar(const Value& value) override
    {
        if (value.isString())
            refer(unique(_texts, value.asText(), {nullptr, value.asText(), {}}));
        else if (value.isData())
            refer(unique(_datas, value.asBytes(), {&value, {}, {}}));
        else
            refer(unique(_scalars, bitsOf(value), {&value, {}, {}}));
        return std::nullopt;
    }
    std::size_t size() const override { return 0; }

    const std::vector<Flat>& flats() const { return _flats; }

private:
    static ScalarBits bitsOf(const Value& value)
    {
        if (value.isReal() || value.isDate())
            return {value.kind(), false,
                std::bit_cast<std::uint64_t>(value.isReal() ? value.asReal() : value.asDate().seconds)};
        return {value.kind(), value.isWideUnsigned(), static_cast<std::uint64_t>(value.asInteger())};
    }

    Index add(Flat flat)
    {
        _flats.push_back(std::move(flat));
        return static_cast<Index>(_flats.size() - 1);
    }

    template <class Map, class Key>
    Index unique(Map& known, const Key& key, Flat flat)
    {
        const auto [at, isNew] = known.try_emplace(key, static_cast<Index>(_flats.size()));
        return isNew ? add(std::move(flat)) : at->second;
    }

    Index refer(Index index)
    {
        if (!_open.empty())
            _flats[_open.back()].references.push_back(index);
        return index;
    }

    std::vector<Flat> _flats;
    std::vector<Index> _open;
    std::unordered_map<std::string_view, Index> _texts, _datas;
    std::unordered_map<ScalarBits, Index, ScalarBitsHash> _scalars;
};

/// The smallest of 1, 2, 4, 8 bytes that holds `number`.
int widthOf(std::uint64_t number)
{
    return number <= 0xFF ? 1 : number <= 0xFFFF ? 2 : number <= 0xFFFFFFFF ? 4 : 8;
}

/// Second pass: the bytes.
class Layout {
public:
    std::string of(const std::vector<Flat>& flats)
    {
        _referenceWidth = widthOf(flats.size() - 1);
        std::vector<std::uint64_t> offsets;
        offsets.reserve(flats.size());
        for (const Flat& flat : flats) {
            offsets.push_back(_bytes.size());
            object(flat);
        }
        const std::uint64_t table = _bytes.size();
        const int offsetWidth = widthOf(table);
        for (const auto offset : offsets)
            number(offset, offsetWidth);
        _bytes.append(6, '\0');
        number(static_cast<std::uint64_t>(offsetWidth), 1);
        number(static_cast<std::uint64_t>(_referenceWidth), 1);
        number(flats.size(), 8);
        number(0, 8); // the root
        number(table, 8);
        return std::move(_bytes);
    }

private:
    void object(const Flat& flat)
    {
        if (!flat.value)
            return text(flat.text);
        switch (flat.value->kind()) {
        case Value::Kind::boolean:
            return number(flat.value->asBoolean() ? 0x09 : 0x08, 1);
        case Value::Kind::integer:
            return integer(flat.value->asInteger(), flat.value->isWideUnsigned());
        case Value::Kind::real:
            number(0x23, 1);
            return number(std::bit_cast<std::uint64_t>(flat.value->asReal()), 8);
        case Value::Kind::date:
            number(0x33, 1);
            return number(std::bit_cast<std::uint64_t>(flat.value->asDate().seconds - kEpoch), 8);
        case Value::Kind::data:
            marker(0x40, flat.value->asBytes().size());
            _bytes += flat.value->asBytes();
            return;
        case Value::Kind::array:
            marker(0xA0, flat.references.size());
            return references(flat.references, 0, 1);
        default:
            marker(0xD0, flat.references.size() / 2);
            references(flat.references, 0, 2);
            return references(flat.references, 1, 2);
        }
    }

    void text(std::string_view text)
    {
        if (isASCII(text)) {
            marker(0x50, text.size());
            _bytes += text;
            return;
        }
        const std::string units = bigEndianUTF16FromUTF8(text);
        marker(0x60, units.size() / 2);
        _bytes += units;
    }

    /// One, two and four bytes are read as unsigned, eight as signed: what fits neither takes sixteen.
    void integer(std::int64_t value, bool wideUnsigned)
    {
        if (wideUnsigned) {
            number(0x14, 1);
            number(0, 8);
            return number(static_cast<std::uint64_t>(value), 8);
        }
        const int width = value < 0 ? 8 : widthOf(static_cast<std::uint64_t>(value));
        number(0x10u | static_cast<unsigned>(std::countr_zero(static_cast<unsigned>(width))), 1);
        number(static_cast<std::uint64_t>(value), width);
    }

    /// The kind, and the count: in the same byte below 15, else as an integer of its own.
    void marker(unsigned kind, std::size_t count)
    {
        number(kind | (count < 15 ? static_cast<unsigned>(count) : 15u), 1);
        if (count >= 15)
            integer(static_cast<std::int64_t>(count), false);
    }

    void references(const std::vector<Index>& all, std::size_t first, std::size_t stride)
    {
        for (std::size_t at = first; at < all.size(); at += stride)
            number(all[at], _referenceWidth);
    }

    void number(std::uint64_t value, int width)
    {
        for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
            _bytes += static_cast<char>(value >> shift & 0xFF);
    }

    std::string _bytes = "bplist00";
    int _referenceWidth = 1;
};

} // namespace

Result<std::string> encodeBinary(const Value& root, const PropertyListLimits& limits)
{
    Flattener flattener;
    if (auto walked = walk(root, limits, flattener); !walked)
        return walked.error();
    return Layout().of(flattener.flats());
}

} // namespace platform::propertylist
