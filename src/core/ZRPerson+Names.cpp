// How a card's name is made of its fields: full, composite, alternate and phonetic.
#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/files/Resources.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <string>
#include <string_view>

using platform::Value;

namespace {

constexpr std::string_view fullNameKey = "ZRFullName";
constexpr std::string_view compositeNameKey = "ZRCompositeName";

constexpr std::int64_t showAsMask = 7;
constexpr std::int64_t showAsCompany = 1;
constexpr std::int64_t nameOrderingMask = 56;
constexpr std::int64_t lastNameFirst = 16;

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

/// A name part counts as present by the low eight bits of its length: one of 256 characters is empty to us,
/// as it always was to programs that store these names.
bool isPresent(std::string_view part) { return (platform::utf16Length(part) & 0xFF) != 0; }

void appendWithBlankBefore(std::string& name, std::string_view part)
{
    if (isPresent(part))
        name.append(" ").append(part);
}

void appendWithBlankAfter(std::string& name, std::string_view part)
{
    if (isPresent(part))
        name.append(part).append(" ");
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

} // namespace

std::string ZRPerson::nts__fullNameIncludingAuxiliaryElements(bool auxiliary) const
{
    if (auxiliary)
        if (const Value cached = nts_ValueInTemporaryCacheForProperty(fullNameKey); cached.isString())
            return std::string(cached.asText());

    const std::string first = text(*this, kZRFirstNameProperty), last = text(*this, kZRLastNameProperty);
    std::string name;
    if (!isPresent(first))
        name = isPresent(last) ? last : std::string();
    else if (!isPresent(last))
        name = first;
    else {
        const std::string middle = text(*this, kZRMiddleNameProperty),
                          suffix = text(*this, kZRSuffixProperty);
        if (auxiliary)
            appendWithBlankAfter(name, text(*this, kZRTitleProperty));
        if (nts__isLastNameFirst()) {
            name.append(last).append(" ").append(first);
            appendWithBlankBefore(name, suffix);
            appendWithBlankBefore(name, middle);
        } else {
            name.append(first).append(" ");
            appendWithBlankAfter(name, middle);
            name.append(last);
            appendWithBlankBefore(name, suffix);
        }
    }
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
        appendWithBlankBefore(name, middle);
        return name;
    }
    // No blank directly after the first name: readings run together unless a middle one stands between.
    name.append(first);
    appendWithBlankAfter(name, middle);
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
    const bool isCompany = nts__isCompany();
    std::string name;
    if (isCompany)
        name = text(*this, kZROrganizationProperty);
    if (name.empty())
        name = nts__fullNameIncludingAuxiliaryElements(isCompany || auxiliary);
    if (name.empty())
        name = nts_AlternateName();
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
    return name.empty() ? platform::StringTables::shared().string("NO_NAME", "ZRStrings") : name;
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

bool ZRPerson::nts__isCompany() const { return (flags(*this) & showAsMask) == showAsCompany; }

bool ZRPerson::_isCompany() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts__isCompany(); });
}

bool ZRPerson::nts__isLastNameFirst() const
{
    const std::int64_t ordering = flags(*this) & nameOrderingMask;
    return (ordering != 0 ? ordering : nts_Roster()->defaultNameOrdering()) == lastNameFirst;
}

// Unlike the form under the lock, which stays with the first answer of the process, this one sees a changed
// preference at once.
bool ZRPerson::_isLastNameFirst() const
{
    const std::int64_t ordering =
        locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return flags(*this) & nameOrderingMask; });
    if (ordering != 0)
        return ordering == lastNameFirst;
    return nts_Roster()->localizedDefaults()[kZRNameDisplay].asInteger() == 1;
}

std::string ZRPerson::similarNameForHashing() const
{
    std::string name = _compositeNameIncludingAuxiliaryElements(false);
    if (_isCompany())
        name += _fullName();
    return platform::foldCase(name);
}
