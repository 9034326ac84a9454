// How columns become names, and numbers that are equal where values are.
#include "merge/CardColumns.h"

#include "core/NameParts.h"
#include "merge/ColumnReading.h"
#include "merge/MergedProperties.h"
#include "platform/files/Resources.h"
#include "store/ZRModelSlots.h"
#include "store/ZRPropertyPlaces.h"
#include "store/ZRRoster.h"

#include <algorithm>

using objectstore::AttributeType;
using objectstore::Entity;
using objectstore::FieldKind;
using objectstore::FieldValue;
using objectstore::SlotKind;

using Fields = std::span<const FieldValue>;

namespace merge {

namespace {

std::uint64_t fieldNumber(const FieldValue& field)
{
    if (field.kind == FieldKind::absent)
        return 0;
    return field.kind == FieldKind::integer ? mixed(1, static_cast<std::uint64_t>(field.integer))
                                            : mixed(2, numberOf(field.bytes));
}

/// The columns of a card that its name and its content are made of.
class CardKeys {
public:
    CardKeys()
    {
        const Entity& contact = contactSlots().entity;
        for (const auto& [property, place] : zrPropertiesOf(contact))
            if (isPlain(place) && property != zr::kZRUIDProperty) {
                _properties.push_back(property);
                _keys.push_back(place.key->key);
            }
        _keys.push_back(contactSlots().uniqueId.key);
        _indexOfFlags = indexOf(zr::kZRPersonFlags);
    }

    const std::vector<std::string_view>& keys() const { return _keys; }
    std::size_t count() const { return _properties.size(); }
    std::size_t indexOfUniqueId() const { return _properties.size(); }
    std::size_t indexOfFlags() const { return _indexOfFlags; }
    std::size_t indexOf(std::string_view property) const
    {
        return static_cast<std::size_t>(std::ranges::find(_properties, property) - _properties.begin());
    }

private:
    /// What equal values say equally in their column: texts and whole numbers.
    static bool isPlain(const ZRPropertyPlace& place)
    {
        return !place.entity && place.key->kind == SlotKind::attribute && place.key->hasColumn()
            && !place.key->lazy
            && (place.key->type == AttributeType::string || place.key->type == AttributeType::integer);
    }

    std::vector<std::string_view> _properties;
    std::vector<std::string_view> _keys;
    std::size_t _indexOfFlags = 0;
};

/// A row as the rules of names see it.
class NamedRow {
public:
    NamedRow(const CardKeys& keys, std::int64_t defaultOrdering)
        : _first(keys.indexOf(zr::kZRFirstNameProperty))
        , _middle(keys.indexOf(zr::kZRMiddleNameProperty))
        , _last(keys.indexOf(zr::kZRLastNameProperty))
        , _title(keys.indexOf(zr::kZRTitleProperty))
        , _suffix(keys.indexOf(zr::kZRSuffixProperty))
        , _organization(keys.indexOf(zr::kZROrganizationProperty))
        , _nickname(keys.indexOf(zr::kZRNicknameProperty))
        , _flags(keys.indexOf(zr::kZRPersonFlags))
        , _defaultOrdering(defaultOrdering)
    {
    }

    void set(Fields fields) { _fields = fields; }

    std::string text(std::string_view property) const
    {
        return std::string(_fields[indexOf(property)].bytes);
    }
    bool isCompany() const { return (flags() & nameParts::kShowAsMask) == nameParts::kShowAsCompany; }
    bool isLastNameFirst() const
    {
        const std::int64_t ordering = flags() & nameParts::kNameOrderingMask;
        return (ordering != 0 ? ordering : _defaultOrdering) == nameParts::kLastNameFirst;
    }
    std::string fullName(bool auxiliary) const ZR_NTS { return nameParts::fullName(*this, auxiliary); }
    /// As far as the card's own columns say it.
    std::string alternateName() const
    {
        const auto& column = _fields[hasNickname() ? _nickname : _organization];
        return std::string(column.bytes);
    }
    bool isNameless() const ZR_NTS { return nameParts::realCompositeName(*this, false).empty(); }
    /// Whether what the card is called, if anything, stands in its entries.
    bool isUnnamed() const ZR_NTS
    {
        return isNameless() && !hasNickname() && _fields[_organization].kind == FieldKind::absent;
    }

private:
    bool hasNickname() const { return _fields[_nickname].kind != FieldKind::absent; }
    std::int64_t flags() const { return _fields[_flags].integer; }
    std::size_t indexOf(std::string_view property) const
    {
        return property == zr::kZRFirstNameProperty ? _first
            : property == zr::kZRLastNameProperty   ? _last
            : property == zr::kZRMiddleNameProperty ? _middle
            : property == zr::kZRSuffixProperty     ? _suffix
            : property == zr::kZRTitleProperty      ? _title
                                                    : _organization;
    }

    const std::size_t _first, _middle, _last, _title, _suffix, _organization, _nickname, _flags;
    const std::int64_t _defaultOrdering;
    Fields _fields;
};

std::uint64_t contentOf(const CardKeys& keys, Fields fields)
{
    std::uint64_t content = 0;
    for (std::size_t i = 0; i < keys.count(); ++i)
        content = mixed(content,
            i == keys.indexOfFlags() ? static_cast<std::uint64_t>(flagsOfPerson(fields[i].integer))
                                     : fieldNumber(fields[i]));
    return content;
}

} // namespace

CardTable::CardTable(ZRRoster& roster) : _roster(roster)
{
    const CardKeys keys;
    NamedRow row(keys, roster.defaultNameOrdering());
    const std::string nameless = platform::StringTables::shared().string("NO_NAME", "ZRStrings");
    std::vector<std::uint32_t> unnamed;
    readColumns(roster, contactSlots().entity, keys.keys(), [&](std::int64_t key, Fields fields) ZR_NTS {
        row.set(fields);
        const auto index = static_cast<std::uint32_t>(_cards.size());
        _indexes.emplace(key, index);
        if (row.isUnnamed())
            unnamed.push_back(index);
        _cards.push_back({std::string(fields[keys.indexOfUniqueId()].bytes),
            nameParts::similarName(row, nameless), row.isNameless(), contentOf(keys, fields)});
    });
    nameTheRest(unnamed);
}

// They are called by their first e-mail or messaging address, or by nothing.
void CardTable::nameTheRest(const std::vector<std::uint32_t>& unnamed)
{
    std::unordered_map<std::string, std::uint32_t> indexes;
    std::vector<std::string> ids;
    for (const auto index : unnamed) {
        ids.push_back(_cards[index].uniqueId);
        indexes.emplace(ids.back(), index);
    }
    forEachPerson(_roster, ids, {zr::kZREmailProperty, zr::kZRAIMInstantProperty}, [&](const auto& person) {
        CardColumns& card = _cards[indexes.at(person->uniqueId())];
        card.similarName = person->similarNameForHashing();
        card.isNameless = person->_realCompositeNameIncludingAuxiliaryElements(false).empty();
        return true;
    });
}

void CardTable::forEachEntry(const EntryKind& kind, const Visitor& visit) const
{
    EntryColumns entry;
    readColumns(_roster, kind.entity(), kind.keys(), [&](std::int64_t, Fields fields) {
        const auto card = _indexes.find(fields[0].integer);
        if (card != _indexes.end() && kind.read(fields, entry))
            visit(card->second, entry);
    });
}

} // namespace merge
