// How a card's name is made of its fields: full, composite, alternate and phonetic.
#include "core/NameParts.h"
#include "core/PersonFlags.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/files/Resources.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <string>
#include <string_view>

using nameParts::isPresent;
using platform::Value;

namespace {

constexpr std::string_view fullNameKey = "ZRFullName";
constexpr std::string_view compositeNameKey = "ZRCompositeName";

/// Names are read often, and what stands in a column of its own comes without a value around it. Null for
/// what does not, or is not here.
const objectstore::Slot* columnOf(const ZRPerson& person, std::string_view property)
{
    ZROSRecord* const stored = person.zrDatabaseImpl();
    if (!stored || !stored->context() || stored->isFault())
        return nullptr;
    const auto* const place = stored->keyForProperty(property);
    return place && !place->entity && place->key->hasColumn() ? place->key : nullptr;
}

std::string text(const ZRPerson& person, std::string_view property) ZR_NTS
{
    if (const auto* const column = columnOf(person, property))
        return std::string(person.zrDatabaseImpl()->text(*column));
    return std::string(person.nts_ValueForProperty(property).asText());
}

std::int64_t flags(const ZRPerson& person) ZR_NTS
{
    if (const auto* const column = columnOf(person, kZRPersonFlags))
        return person.zrDatabaseImpl()->integer(*column);
    return person.nts_ValueForProperty(kZRPersonFlags).asInteger();
}

std::string firstEntry(const ZRPerson& person, std::string_view property) ZR_NTS
{
    const Value value = person.nts_ValueForProperty(property);
    const auto* entries = value.as<ZRMultiValue>();
    return entries && entries->count() > 0 ? std::string(entries->valueAtIndex(0).asText()) : std::string();
}

/// A record as the rules of names see it.
struct NamedRecord {
    std::string text(std::string_view property) const ZR_NTS { return ::text(person, property); }
    bool isCompany() const ZR_NTS { return person.nts__isCompany(); }
    bool isLastNameFirst() const ZR_NTS { return person.nts__isLastNameFirst(); }
    std::string fullName(bool auxiliary) const ZR_NTS
    {
        return person.nts__fullNameIncludingAuxiliaryElements(auxiliary);
    }
    std::string alternateName() const ZR_NTS { return person.nts_AlternateName(); }
    const ZRPerson& person;
};

std::string nameOfNobody() { return platform::StringTables::shared().string("NO_NAME", "ZRStrings"); }

} // namespace

std::string ZRPerson::nts__fullNameIncludingAuxiliaryElements(bool auxiliary) const
{
    if (auxiliary)
        if (const Value cached = nts_ValueInTemporaryCacheForProperty(fullNameKey); cached.isString())
            return std::string(cached.asText());

    std::string name = nameParts::fullName(NamedRecord{*this}, auxiliary);
    if (auxiliary)
        nts_SetValueInTemporaryCache(Value(name), fullNameKey);
    return name;
}

std::string ZRPerson::nts__fullName() const { return nts__fullNameIncludingAuxiliaryElements(true); }

std::string ZRPerson::nts__fullPhoneticName() const
{
    const std::string first = text(*this, kZRFirstNamePhoneticProperty);
    const std::string last = text(*this, kZRLastNamePhoneticProperty);
    if (!isPresent(first))
        return last;
    if (!isPresent(last))
        return first;
    const std::string middle = text(*this, kZRMiddleNamePhoneticProperty);
    std::string name;
    if (nts__isLastNameFirst()) {
        name.append(last).append(" ").append(first);
        nameParts::appendWithBlankBefore(name, middle);
        return name;
    }
    // No blank directly after the first name: readings run together unless a middle one stands between.
    name.append(first);
    nameParts::appendWithBlankAfter(name, middle);
    return name.append(last);
}

std::string ZRPerson::nts_AlternateName() const
{
    for (const char* property : {kZRNicknameProperty, kZROrganizationProperty})
        if (const Value value = nts_ValueForProperty(property); !value.isNothing())
            return std::string(value.asText());
    for (const char* property : {kZREmailProperty, kZRAIMInstantProperty})
        if (const Value value = nts_ValueForProperty(property); !value.isNothing())
            return firstEntry(*this, property);
    return {};
}

std::string ZRPerson::nts_realCompositeNameIncludingAuxiliaryElements(bool auxiliary) const
{
    if (auxiliary)
        if (const Value cached = nts_ValueInTemporaryCacheForProperty(compositeNameKey); cached.isString())
            return std::string(cached.asText());
    std::string name = nameParts::realCompositeName(NamedRecord{*this}, auxiliary);
    if (auxiliary)
        nts_SetValueInTemporaryCache(Value(name), compositeNameKey);
    return name;
}

std::string ZRPerson::_realCompositeNameIncludingAuxiliaryElements(bool auxiliary) const
{
    return locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return nts_realCompositeNameIncludingAuxiliaryElements(auxiliary); });
}

// The looser form: an empty organization of a company stands, and the alternate name is never asked.
std::string ZRPerson::nts__RealCompositeName() const
{
    if (const Value cached = nts_ValueInTemporaryCacheForProperty(compositeNameKey); cached.isString())
        return std::string(cached.asText());
    if (nts__isCompany())
        if (const Value organization = nts_ValueForProperty(kZROrganizationProperty);
            !organization.isNothing())
            return std::string(organization.asText());
    return nts__fullName();
}

std::string ZRPerson::_compositeNameIncludingAuxiliaryElements(bool auxiliary) const
{
    const std::string name = _realCompositeNameIncludingAuxiliaryElements(auxiliary);
    return name.empty() ? nameOfNobody() : name;
}

std::string ZRPerson::_fullName() const { return _fullNameIncludingAuxiliaryElements(true); }
std::string ZRPerson::compositeName() const { return _compositeNameIncludingAuxiliaryElements(true); }
std::string ZRPerson::_realCompositeName() const
{
    return _realCompositeNameIncludingAuxiliaryElements(true);
}

std::string ZRPerson::_fullNameIncludingAuxiliaryElements(bool auxiliary) const
{
    return locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return nts__fullNameIncludingAuxiliaryElements(auxiliary); });
}

std::string ZRPerson::_fullPhoneticName() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts__fullPhoneticName(); });
}

std::string ZRPerson::alternateName() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_AlternateName(); });
}

bool ZRPerson::nts__isCompany() const
{
    return (flags(*this) & personFlags::kShowAsMask) == personFlags::kShowAsCompany;
}

bool ZRPerson::_isCompany() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts__isCompany(); });
}

bool ZRPerson::nts__isLastNameFirst() const
{
    const std::int64_t ordering = flags(*this) & personFlags::kNameOrderingMask;
    return (ordering != 0 ? ordering : nts_Roster()->defaultNameOrdering()) == personFlags::kLastNameFirst;
}

// Unlike the form under the lock, which stays with the first answer of the process, this one sees a changed
// preference at once.
bool ZRPerson::_isLastNameFirst() const
{
    const std::int64_t ordering = locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return flags(*this) & personFlags::kNameOrderingMask; });
    if (ordering != 0)
        return ordering == personFlags::kLastNameFirst;
    return nts_Roster()->localizedDefaults()[kZRNameDisplay].asInteger() == 1;
}

std::string ZRPerson::similarNameForHashing() const
{
    return locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return nameParts::similarName(NamedRecord{*this}, nameOfNobody()); });
}
