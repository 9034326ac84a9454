// How columns become names, and numbers that are equal where values are.
#include "merge/CardColumns.h"

#include "core/NamedColumns.h"
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

/// The columns of a card that its name and its content are made of, and its id.
class CardKeys {
public:
    CardKeys() : _keys(NamedColumns::keys.begin(), NamedColumns::keys.end())
    {
        for (const auto& [property, place] : zrPropertiesOf(contactSlots().entity))
            if (isPlain(place) && property != zr::kZRUIDProperty
                && std::ranges::find(_keys, place.key->key) == _keys.end())
                _keys.push_back(place.key->key);
        _keys.push_back(contactSlots().uniqueId.key);
    }

    const std::vector<std::string_view>& keys() const { return _keys; }
    /// How many there are of the content, which come first.
    std::size_t count() const { return _keys.size() - 1; }

private:
    /// What equal values say equally in their column: texts and whole numbers.
    static bool isPlain(const ZRPropertyPlace& place)
    {
        return !place.entity && place.key->kind == SlotKind::attribute && place.key->hasColumn()
            && !place.key->lazy
            && (place.key->type == AttributeType::string || place.key->type == AttributeType::integer);
    }

    std::vector<std::string_view> _keys;
};

std::uint64_t contentOf(const CardKeys& keys, Fields fields)
{
    std::uint64_t content = 0;
    for (std::size_t i = 0; i < keys.count(); ++i)
        content = mixed(content,
            i == NamedColumns::indexOfFlags ? static_cast<std::uint64_t>(flagsOfPerson(fields[i].integer))
                                            : fieldNumber(fields[i]));
    return content;
}

} // namespace

CardTable::CardTable(ZRRoster& roster) : _roster(roster)
{
    const CardKeys keys;
    NamedColumns row(roster.defaultNameOrdering());
    const std::string nameless = platform::StringTables::shared().string("NO_NAME", "ZRStrings");
    std::vector<std::uint32_t> unnamed;
    readColumns(roster, contactSlots().entity, keys.keys(), [&](std::int64_t key, Fields fields) ZR_NTS {
        row.set(fields);
        const auto index = static_cast<std::uint32_t>(_cards.size());
        _indexes.emplace(key, index);
        if (row.isUnnamed())
            unnamed.push_back(index);
        _cards.push_back({std::string(fields.back().bytes), nameParts::similarName(row, nameless),
            nameParts::realCompositeName(row, false).empty(), contentOf(keys, fields)});
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
