// How the rows of multi-values become numbers.
#include "merge/EntryColumns.h"

#include "core/ZRConstants.h"
#include "core/ZRStringAdditions.h"
#include "merge/ColumnReading.h"
#include "platform/text/Fold.h"
#include "store/ZRModelSlots.h"
#include "store/ZRPropertyPlaces.h"

#include <cmath>
#include <set>

using objectstore::AttributeType;
using objectstore::Entity;
using objectstore::FieldKind;
using objectstore::FieldValue;
using objectstore::Slot;

using Fields = std::span<const FieldValue>;

namespace merge {

using Form = EntryKind::Form;

namespace {

/// Where each column of `EntryKind::keys` stands.
enum Place : std::size_t { kOwner, kLabel, kIdentifier, kDiscriminator, kFirstValue };

/// Dates are days, whatever the hour that is stored.
std::uint64_t dayOf(const FieldValue& date)
{
    constexpr double secondsADay = 86'400;
    const double seconds = date.kind == FieldKind::integer ? static_cast<double>(date.integer) : date.real;
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(std::floor(seconds / secondsADay)));
}

/// Parts that are empty are not there.
template <class Number>
std::uint64_t addressNumber(Fields parts, Number number)
{
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (!parts[i].bytes.empty())
            all = mixed(all, mixed(i, number(parts[i].bytes)));
    return all;
}

std::uint64_t reducedNumber(std::string_view property, std::string_view text)
{
    return numberOf(
        platform::foldCase(property == zr::kZRPhoneProperty ? zrStandardizedPhoneNumber(text)
                                                            : zrStringByRemovingPunctuation(text)));
}

std::uint64_t foldedNumber(std::string_view text) { return numberOf(platform::foldCase(text)); }

Form formOf(const ZRPropertyPlace& place)
{
    if (!place.entityKey)
        return Form::address;
    return place.entityKey->type == AttributeType::date ? Form::day : Form::text;
}

std::vector<EntryKind> makeKinds()
{
    std::vector<EntryKind> kinds;
    std::set<const Entity*> seen;
    for (const auto& [property, place] : zrPropertiesOf(contactSlots().entity))
        if (place.isMultiValue && place.entity && seen.insert(place.entity).second)
            kinds.emplace_back(*place.entity, formOf(place),
                place.service.empty() ? property : std::string_view(),
                place.entityKey ? std::string_view(place.entityKey->key) : std::string_view());
    kinds.emplace_back(customValueSlots().entity, Form::custom, std::string_view(), std::string_view());
    return kinds;
}

} // namespace

EntryKind::EntryKind(const Entity& entity, Form form, std::string_view property, std::string_view valueKey)
    : _entity(&entity), _form(form), _property(property), _keys{"owner", "label", "uniqueId"}
{
    const Slot* const discriminator = entity.unit().discriminator;
    _hasDiscriminator = discriminator != nullptr;
    _keys.push_back(_hasDiscriminator ? std::string_view(discriminator->key) : "owner");
    if (!valueKey.empty())
        _keys.push_back(valueKey);
    if (form == Form::address)
        for (const Slot* slot : entity.slots())
            if (slot->entity == &entity && slot->type == AttributeType::string && slot->hasColumn())
                _keys.push_back(slot->key);
}

bool EntryKind::read(Fields fields, EntryColumns& entry) const
{
    const auto isAbsent = [&](std::size_t at) { return fields[at].kind == FieldKind::absent; };
    if (isAbsent(kDiscriminator))
        return false;
    const std::uint64_t kind = mixed(
        _entity->index(), _hasDiscriminator ? static_cast<std::uint64_t>(fields[kDiscriminator].integer) : 0);
    entry = {.owner = fields[kOwner].integer, .property = _property, .exact = kind, .similar = kind};
    // Whether custom values are alike is left to their card: they are of any type, and few.
    if (_form == Form::custom)
        return true;
    if (isAbsent(kLabel) || isAbsent(kIdentifier) || (_form != Form::address && isAbsent(kFirstValue)))
        return false;
    const Fields values = fields.subspan(kFirstValue);
    if (_form == Form::text)
        entry.text = values[0].bytes;
    const auto number = [&](auto ofText) {
        return _form == Form::address ? addressNumber(values, ofText)
            : _form == Form::day      ? dayOf(values[0])
                                      : ofText(entry.text);
    };
    entry.exact = mixed(kind, number([](std::string_view text) { return numberOf(text); }));
    entry.similar =
        mixed(kind, _form == Form::text ? reducedNumber(_property, entry.text) : number(foldedNumber));
    return true;
}

const std::vector<EntryKind>& entryKindsOfPeople()
{
    static const auto* const kinds = new std::vector<EntryKind>(makeKinds());
    return *kinds;
}

} // namespace merge
