// How items of images become bytes and are read back.
#include "objectstore/ImageStream.h"

#include "objectstore/StoreErrors.h"

#include <algorithm>
#include <cstring>

namespace objectstore {

namespace {

constexpr unsigned kBitsOfByte = 7;
constexpr std::uint64_t kMore = 0x80;

void appendNumber(std::string& to, std::uint64_t number)
{
    for (; number >= kMore; number >>= kBitsOfByte)
        to += static_cast<char>(number | kMore);
    to += static_cast<char>(number);
}

void appendText(std::string& to, std::string_view text)
{
    appendNumber(to, text.size());
    to.append(text);
}

void appendValue(std::string& to, const FieldValue& value)
{
    to += static_cast<char>(value.kind);
    char real[sizeof(double)];
    switch (value.kind) {
    case FieldKind::absent:
        break;
    case FieldKind::integer:
        appendNumber(to,
            (static_cast<std::uint64_t>(value.integer) << 1)
                ^ static_cast<std::uint64_t>(value.integer >> 63));
        break;
    case FieldKind::real:
        std::memcpy(real, &value.real, sizeof real);
        to.append(real, sizeof real);
        break;
    case FieldKind::text:
    case FieldKind::bytes:
        appendText(to, value.bytes);
        break;
    }
}

[[noreturn]] void damaged()
{
    throw StoreFailure(storeError(StoreFault::corrupt, "what the history keeps of a record is damaged"));
}

} // namespace

void appendObject(std::string& to, std::string_view entity)
{
    to += static_cast<char>(ImageItem::Kind::object);
    appendText(to, entity);
}

void appendField(std::string& to, ImageItem::Kind kind, std::string_view key, const FieldValue& value)
{
    to += static_cast<char>(kind);
    appendText(to, key);
    appendValue(to, value);
}

void appendReference(std::string& to, std::string_view key, std::string_view encodedReference)
{
    to += static_cast<char>(ImageItem::Kind::reference);
    appendText(to, key);
    to.append(encodedReference);
}

void appendTie(std::string& to, ImageItem::Kind kind, std::string_view key, std::string_view uniqueId)
{
    to += static_cast<char>(kind);
    appendText(to, key);
    appendText(to, uniqueId);
}

std::string encodedReference(const ImageReference& reference)
{
    std::string bytes(1, static_cast<char>(reference.kind));
    appendText(bytes, reference.entity);
    appendText(bytes, reference.name);
    appendNumber(bytes, reference.fields.size());
    for (const auto& [key, value] : reference.fields) {
        appendText(bytes, key);
        appendValue(bytes, value);
    }
    return bytes;
}

// ---- reading

char ImageItems::byte()
{
    if (_rest.empty())
        damaged();
    const char first = _rest.front();
    _rest.remove_prefix(1);
    return first;
}

std::uint64_t ImageItems::number()
{
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64; shift += kBitsOfByte) {
        const auto part = static_cast<unsigned char>(byte());
        number |= std::uint64_t(part & (kMore - 1)) << shift;
        if ((part & kMore) == 0)
            return number;
    }
    damaged();
}

std::string_view ImageItems::text()
{
    const std::uint64_t size = number();
    if (size > _rest.size())
        damaged();
    const std::string_view text = _rest.substr(0, size);
    _rest.remove_prefix(size);
    return text;
}

FieldValue ImageItems::value()
{
    FieldValue value;
    const auto kind = static_cast<unsigned char>(byte());
    if (kind > static_cast<unsigned char>(FieldKind::bytes))
        damaged();
    value.kind = static_cast<FieldKind>(kind);
    if (value.kind == FieldKind::integer) {
        const std::uint64_t bits = number();
        value.integer = static_cast<std::int64_t>((bits >> 1) ^ (~(bits & 1) + 1));
    } else if (value.kind == FieldKind::real) {
        if (_rest.size() < sizeof value.real)
            damaged();
        std::memcpy(&value.real, _rest.data(), sizeof value.real);
        _rest.remove_prefix(sizeof value.real);
    } else if (value.kind != FieldKind::absent) {
        value.bytes = text();
    }
    return value;
}

void ImageItems::readReference(ImageReference& reference)
{
    reference.kind = static_cast<ImageReference::Kind>(byte());
    reference.entity = text();
    reference.name = text();
    reference.fields.clear();
    for (std::uint64_t count = number(); count > 0; --count) {
        std::string key(text());
        reference.fields.emplace_back(std::move(key), value());
    }
}

bool ImageItems::next(ImageItem& item)
{
    if (_rest.empty())
        return false;
    item.kind = static_cast<ImageItem::Kind>(byte());
    item.key = text();
    switch (item.kind) {
    case ImageItem::Kind::object:
        return true;
    case ImageItem::Kind::field:
    case ImageItem::Kind::large:
        item.value = value();
        return true;
    case ImageItem::Kind::reference:
        readReference(item.reference);
        return true;
    case ImageItem::Kind::link:
    case ImageItem::Kind::pointer:
        item.text = text();
        return true;
    }
    damaged();
}

// ---- comparing

void ImageHash::add(std::string_view countedBytes)
{
    constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15u;
    std::uint64_t hash = countedBytes.size() * multiplier;
    while (!countedBytes.empty()) {
        std::uint64_t word = 0;
        const std::size_t size = std::min(countedBytes.size(), sizeof word);
        std::memcpy(&word, countedBytes.data(), size);
        countedBytes.remove_prefix(size);
        hash = (hash ^ word) * multiplier;
        hash ^= hash >> 32;
    }
    // Sums of near hashes must not be near.
    hash = (hash ^ (hash >> 30)) * 0xbf58476d1ce4e5b9u;
    hash = (hash ^ (hash >> 27)) * 0x94d049bb133111ebu;
    _sum += hash ^ (hash >> 31);
}

std::int64_t ImageHash::value() const { return _sum == 0 ? 1 : static_cast<std::int64_t>(_sum); }

} // namespace objectstore
