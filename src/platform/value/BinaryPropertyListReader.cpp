// How the binary form is read, whoever wrote it: nothing it claims is believed before it is compared with
// what is there.
//
// Two rules keep a hostile file cheap. All objects together may not be longer than the file, so that objects
// which overlap cannot be read over and over. And what an object stands for is counted as often as something
// refers to it, so that a few arrays that hold one another twice do not unfold without end.
#include "platform/value/PropertyListCodec.h"
#include "platform/value/Unicode.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace platform::propertylist {

namespace {

constexpr std::size_t kHeaderLength = 8;
constexpr std::size_t kTrailerLength = 32;

enum class State : std::uint8_t { untouched, open, done };

/// An object of the file: its value once it is read, and what it costs whoever refers to it.
struct Slot {
    Value value;
    std::uint64_t nodes = 1;
    std::uint64_t bytes = 0;
    std::uint16_t height = 0;
    State state = State::untouched;
};

/// A container that is being read. Of a dictionary the keys are read at once, the values one by one.
struct Frame {
    std::size_t object;
    std::size_t references;
    std::size_t count;
    bool isDictionary;
    std::vector<Value> elements;
    std::vector<Dictionary::Entry> entries;
    std::size_t next = 0;
};

/// Ends a reading from within; the reader's border turns it into an Error. It never leaves this file.
struct Refusal {
    PropertyListFault code;
    std::string reason;
};

[[noreturn]] void refuse(PropertyListFault code, std::string reason)
{
    throw Refusal{code, std::move(reason)};
}
[[noreturn]] void refuseMalformed(std::string reason)
{
    refuse(PropertyListFault::malformed, std::move(reason));
}

class Reader {
public:
    Reader(std::string_view bytes, const PropertyListLimits& limits) : _bytes(bytes), _limits(limits) { }

    Result<Value> read()
    {
        try {
            readTrailer();
            begin(_top);
            while (!_frames.empty())
                advance();
            return std::move(_slots[_top].value);
        } catch (const Refusal& refusal) {
            return fault(refusal.code, place() + refusal.reason);
        }
    }

private:
    void readTrailer();
    void begin(std::size_t object);
    void advance();
    void finish();
    void beginContainer(std::size_t object, bool isDictionary, std::size_t children);
    void readKeys(Frame& frame);
    Value scalar(unsigned marker);
    Value integer(std::size_t width);
    std::size_t count(unsigned marker);
    std::size_t childOf(const Frame& frame, std::size_t at);
    void charge(Slot& parent, const Slot& child);

    std::string place() const
    {
        return _current ? fmt::format("object {} at byte {}: ", *_current, offsetOf(*_current)) : "";
    }
    std::uint64_t numberAt(std::size_t at, std::size_t width) const
    {
        std::uint64_t number = 0;
        for (const char byte : _bytes.substr(at, width))
            number = number << 8 | static_cast<unsigned char>(byte);
        return number;
    }
    std::uint64_t offsetOf(std::size_t object) const
    {
        return numberAt(_table + object * _offsetWidth, _offsetWidth);
    }
    /// The next `length` bytes of the current object.
    std::string_view take(std::size_t length)
    {
        if (length > _table - _at)
            refuseMalformed("goes past the end of the objects");
        if (length > _allowance)
            refuseMalformed("the objects overlap");
        _allowance -= length;
        _at += length;
        return _bytes.substr(_at - length, length);
    }
    std::uint64_t takeNumber(std::size_t width)
    {
        const std::size_t at = _at;
        take(width);
        return numberAt(at, width);
    }

    const std::string_view _bytes;
    const PropertyListLimits& _limits;
    std::size_t _offsetWidth = 0;
    std::size_t _referenceWidth = 0;
    std::size_t _table = 0;
    std::size_t _top = 0;
    std::vector<Slot> _slots;
    std::vector<Frame> _frames;
    /// The object that is being read, and where in it.
    std::optional<std::size_t> _current;
    std::size_t _at = 0;
    /// How many bytes all objects together may still take.
    std::size_t _allowance = 0;
    /// How many references all containers read so far hold.
    std::size_t _referred = 0;
};

void Reader::readTrailer()
{
    if (!_bytes.starts_with("bplist00"))
        refuse(PropertyListFault::unsupported, "unknown version of the binary form");
    if (_bytes.size() < kHeaderLength + 1 + kTrailerLength)
        refuseMalformed("too short for a binary property list");
    const std::size_t trailer = _bytes.size() - kTrailerLength;
    _offsetWidth = numberAt(trailer + 6, 1);
    _referenceWidth = numberAt(trailer + 7, 1);
    const std::uint64_t objects = numberAt(trailer + 8, 8);
    const std::uint64_t top = numberAt(trailer + 16, 8);
    const std::uint64_t table = numberAt(trailer + 24, 8);
    if (_offsetWidth < 1 || _offsetWidth > 8 || _referenceWidth < 1 || _referenceWidth > 8)
        refuseMalformed("trailer: offsets or references are not 1 to 8 bytes wide");
    if (table <= kHeaderLength || table > trailer)
        refuseMalformed(fmt::format("trailer: no offset table at byte {}", table));
    if (objects > (trailer - table) / _offsetWidth)
        refuseMalformed(fmt::format("trailer: no room for {} offsets", objects));
    if (top >= objects)
        refuseMalformed(fmt::format("trailer: object {} of {} as root", top, objects));
    if (objects > _limits.nodes)
        refuse(PropertyListFault::tooLarge, fmt::format("{} objects, more than {}", objects, _limits.nodes));
    _table = table;
    _top = top;
    _allowance = table;
    _slots.resize(objects);
}

/// Reads an object for the first time: a scalar wholly, of a container the start.
void Reader::begin(std::size_t object)
{
    _current = object;
    const std::uint64_t offset = offsetOf(object);
    if (offset < kHeaderLength || offset >= _table)
        refuseMalformed("lies outside the objects");
    _at = offset;
    const auto marker = static_cast<unsigned>(takeNumber(1));
    const unsigned kind = marker & 0xF0;
    if (kind == 0xA0 || kind == 0xD0)
        return beginContainer(object, kind == 0xD0, count(marker));
    Slot& slot = _slots[object];
    slot.value = scalar(marker);
    slot.bytes = slot.value.asText().size() + slot.value.asBytes().size();
    slot.state = State::done;
}

void Reader::beginContainer(std::size_t object, bool isDictionary, std::size_t children)
{
    const std::size_t width = _referenceWidth * (isDictionary ? 2 : 1);
    if (children > _allowance / width || children > (_table - _at) / width)
        refuseMalformed(fmt::format("no room for {} references", children));
    // Whoever refers to more than is allowed is not given room for it first.
    _referred += isDictionary ? 2 * children : children;
    if (_referred > _limits.nodes)
        refuse(PropertyListFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
    if (_frames.size() == _limits.depth)
        refuse(PropertyListFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
    const std::size_t references = _at;
    take(children * width);
    _slots[object].state = State::open;
    _frames.push_back({object, references, children, isDictionary, {}, {}});
    if (isDictionary)
        readKeys(_frames.back());
    else
        _frames.back().elements.reserve(children);
}

std::size_t Reader::childOf(const Frame& frame, std::size_t at)
{
    const std::uint64_t child = numberAt(frame.references + at * _referenceWidth, _referenceWidth);
    if (child >= _slots.size())
        refuseMalformed(fmt::format("refers to object {} of {}", child, _slots.size()));
    return child;
}

/// One more reference to `child`, which is done.
void Reader::charge(Slot& parent, const Slot& child)
{
    parent.nodes += child.nodes;
    parent.bytes += child.bytes;
    parent.height = std::max(parent.height, child.height);
    if (parent.nodes > _limits.nodes)
        refuse(PropertyListFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
    if (parent.bytes > _limits.bytes)
        refuse(PropertyListFault::tooLarge, fmt::format("more than {} bytes of text", _limits.bytes));
    if (_frames.size() + child.height > _limits.depth)
        refuse(PropertyListFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
}

/// Keys are text, so they are read on the spot; each is copied, hence charged, as often as it is used.
void Reader::readKeys(Frame& frame)
{
    const std::size_t dictionary = frame.object;
    frame.entries.reserve(frame.count);
    for (std::size_t at = 0; at < frame.count; ++at) {
        const std::size_t key = childOf(frame, at);
        if (_slots[key].state == State::untouched) {
            const std::uint64_t offset = offsetOf(key);
            const unsigned kind = offset < _table ? static_cast<unsigned char>(_bytes[offset]) & 0xF0u : 0u;
            if (kind != 0x50 && kind != 0x60)
                refuseMalformed(fmt::format("key {} (object {}) is no text", at, key));
            begin(key);
            _current = dictionary;
        }
        if (!_slots[key].value.isString())
            refuseMalformed(fmt::format("key {} (object {}) is no text", at, key));
        charge(_slots[dictionary], _slots[key]);
        frame.entries.emplace_back(_slots[key].value.asText(), Value());
    }
}

/// One step with the innermost container: takes its next child when that is read, else starts reading it.
void Reader::advance()
{
    Frame& frame = _frames.back();
    _current = frame.object;
    if (frame.next == frame.count)
        return finish();
    const std::size_t object = childOf(frame, frame.next + (frame.isDictionary ? frame.count : 0));
    const Slot& child = _slots[object];
    if (child.state == State::open)
        refuseMalformed(fmt::format("holds itself through object {}", object));
    if (child.state == State::untouched)
        return begin(object);
    charge(_slots[frame.object], child);
    if (frame.isDictionary)
        frame.entries[frame.next].second = child.value;
    else
        frame.elements.push_back(child.value);
    ++frame.next;
}

void Reader::finish()
{
    Frame& frame = _frames.back();
    Slot& slot = _slots[frame.object];
    slot.value = frame.isDictionary ? Value::dictionary(std::move(frame.entries))
                                    : Value::array(std::move(frame.elements));
    ++slot.height;
    slot.state = State::done;
    _frames.pop_back();
}

/// The count of a marker: in its low half, or behind it as an integer.
std::size_t Reader::count(unsigned marker)
{
    if ((marker & 0x0F) != 0x0F)
        return marker & 0x0F;
    const auto length = static_cast<unsigned>(takeNumber(1));
    if ((length & 0xF0) != 0x10 || (length & 0x0F) > 3)
        refuseMalformed("the count is no integer");
    const std::uint64_t counted = takeNumber(std::size_t(1) << (length & 0x0F));
    if (counted > _bytes.size())
        refuseMalformed(fmt::format("counts {} in {} bytes", counted, _bytes.size()));
    return counted;
}

Value Reader::integer(std::size_t width)
{
    if (width < 8)
        return Value(static_cast<std::int64_t>(takeNumber(width)));
    if (width == 8)
        return Value(static_cast<std::int64_t>(takeNumber(8)));
    const std::uint64_t high = takeNumber(8), low = takeNumber(8);
    if (high == 0)
        return Value(low);
    if (high != UINT64_MAX || static_cast<std::int64_t>(low) >= 0)
        refuse(PropertyListFault::unsupported, "the integer has more than 64 bits");
    return Value(static_cast<std::int64_t>(low));
}

Value Reader::scalar(unsigned marker)
{
    switch (marker) {
    case 0x08:
        return Value(false);
    case 0x09:
        return Value(true);
    case 0x10:
    case 0x11:
    case 0x12:
    case 0x13:
    case 0x14:
        return integer(std::size_t(1) << (marker & 0x0F));
    case 0x22:
        return Value(static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(takeNumber(4)))));
    case 0x23:
        return Value(std::bit_cast<double>(takeNumber(8)));
    case 0x33: {
        const double seconds = std::bit_cast<double>(takeNumber(8)) + kEpoch;
        if (!std::isfinite(seconds))
            refuseMalformed("the date is not finite");
        return Value(Date{seconds});
    }
    default:
        break;
    }
    const unsigned kind = marker & 0xF0;
    if (kind == 0x40)
        return Value::data(take(count(marker)));
    if (kind == 0x50) {
        const auto text = take(count(marker));
        if (!isASCII(text))
            refuseMalformed("the text is not ASCII");
        return Value(text);
    }
    if (kind == 0x60)
        return Value(UTF8FromBigEndianUTF16(take(2 * count(marker))));
    refuse(PropertyListFault::unsupported, fmt::format("unknown kind {:#04x}", marker));
}

} // namespace

Result<Value> decodeBinary(std::string_view bytes, const PropertyListLimits& limits)
{
    return Reader(bytes, limits).read();
}

} // namespace platform::propertylist
