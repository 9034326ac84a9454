// What is compared of two people, and in which way.
#include "merge/ComparePeople.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "merge/MergedProperties.h"
#include "platform/text/Fold.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <cmath>
#include <functional>

using platform::Value;

namespace {

bool isSameValue(const Value& a, const Value& b, std::string_view property)
{
    if (property == zr::kZRPersonFlags)
        return merge::flagsOfPerson(a.asInteger()) == merge::flagsOfPerson(b.asInteger());
    const auto* entries = a.as<ZRMultiValue>();
    const auto* others = b.as<ZRMultiValue>();
    return entries && others ? entries->isEqual(*others, ZRMultiValue::CompareIdentifiers::no) : a == b;
}

/// What is absent comes last.
int comparePresence(const Value& a, const Value& b)
{
    return a.isNothing() == b.isNothing() ? 0 : a.isNothing() ? 1 : -1;
}

int compareTexts(const Value& a, const Value& b)
{
    if (a.isNothing() || b.isNothing())
        return comparePresence(a, b);
    return platform::foldCase(a.asText()).compare(platform::foldCase(b.asText()));
}

const Value& lastNameOf(const Value& dictionary)
{
    const Value& last = dictionary["LastName"];
    return last.isNothing() ? dictionary["Name"] : last;
}

} // namespace

bool peopleAreIdentical(const ZRPerson& a, const ZRPerson& b)
{
    if (a.nts_Roster() != b.nts_Roster())
        return false;
    return locked(*a.nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        const auto types = ZRCustomProperties::propertyTypesForClass(a.recordClass(), *a.nts_Roster(), false);
        return std::ranges::all_of(types, [&](const auto& property) ZR_NTS {
            return merge::isOfOneCardOnly(property.first)
                || isSameValue(a.nts_ValueForProperty(property.first), b.nts_ValueForProperty(property.first),
                    property.first);
        });
    });
}

bool peopleAreSimilar(const ZRPerson& a, const ZRPerson& b)
{
    return a.nts_Roster() == b.nts_Roster() && a.similarNameForHashing() == b.similarNameForHashing();
}

std::size_t identicalHashPerson(const ZRPerson& person)
{
    return std::hash<std::string>{}(person.compositeName());
}

std::size_t similarHashPerson(const ZRPerson& person)
{
    return std::hash<std::string>{}(person.similarNameForHashing());
}

int compareZipCodes(const Value& a, const Value& b)
{
    return compareTexts(a[zr::kZRAddressZIPKey], b[zr::kZRAddressZIPKey]);
}

int compareLastNames(const Value& a, const Value& b) { return compareTexts(lastNameOf(a), lastNameOf(b)); }

bool ZRFuzzyEqualSizes(ZRSize a, ZRSize b)
{
    constexpr float tolerance = 0.5F;
    return std::fabs(a.width - b.width) < tolerance && std::fabs(a.height - b.height) < tolerance;
}
