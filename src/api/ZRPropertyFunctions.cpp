// What a program asks about properties, and how it declares its own.
#include "api/Border.h"
#include "api/ZRRosterFunctions.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRPerson.h"
#include "platform/run/Log.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

using border::as;
using border::guarded;
using border::owned;
using platform::Object;

namespace {

const ZRRecordClass& classNamed(const char* recordType)
{
    const auto* recordClass = ZRRecordClass::named(border::text(recordType));
    return recordClass ? *recordClass : throw border::Refused();
}

/// Type codes that a caller put into the dictionary bare count as the numbers that they should have been.
void tellOfBareTypes(const Object& typesByName, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (const Object* type = border::elementOf(typesByName, i); type && border::isBare(*type))
            platform::log(fmt::format("Bare ZRPropertyType received (not wrapped in number).  Assuming value "
                                      "of '{}' and continuing.",
                border::valueOf(type).asInteger()));
}

} // namespace

ZRIndex ZRAddPropertiesAndTypes(ZRRosterRef roster, const char* recordType, ZRDictionaryRef typesByName)
{
    return guarded([&]() -> ZRIndex {
        auto& target = as<ZRRoster>(roster);
        const auto& recordClass = classNamed(recordType);
        const platform::Value types = border::value(typesByName);
        if (!types.isDictionary())
            return 0;
        tellOfBareTypes(as<const Object>(typesByName), types.asDictionary()->count());
        if (recordClass.isKindOf(ZRPerson::recordClassDescription))
            return ZRPerson::addPropertiesAndTypes(types, &target);
        return recordClass.isKindOf(ZRGroup::recordClassDescription)
            ? ZRGroup::addPropertiesAndTypes(types, &target)
            : 0;
    });
}

ZRIndex ZRRemoveProperties(ZRRosterRef roster, const char* recordType, ZRArrayRef names)
{
    return guarded([&]() -> ZRIndex {
        const auto& recordClass = classNamed(recordType);
        const auto listed = border::value(names);
        return locked(as<ZRRoster>(roster), ZRAccess::write, [&]() -> ZRIndex {
            if (recordClass.isKindOf(ZRPerson::recordClassDescription))
                return ZRPerson::removeProperties(listed);
            return recordClass.isKindOf(ZRGroup::recordClassDescription) ? ZRGroup::removeProperties(listed)
                                                                         : 0;
        });
    });
}

ZRArrayRef ZRCopyArrayOfPropertiesForRecordType(ZRRosterRef roster, const char* recordType)
{
    return guarded(
        [&] { return owned(ZRRecord::propertiesWithRoster(classNamed(recordType), &as<ZRRoster>(roster))); });
}

ZRPropertyType ZRTypeOfProperty(ZRRosterRef roster, const char* recordType, const char* property)
{
    return guarded([&] {
        return as<ZRRoster>(roster).typeOfProperty(border::text(property), border::text(recordType));
    });
}

ZRStringRef ZRCopyLocalizedPropertyOrLabel(const char* key)
{
    return guarded([&] { return owned(ZRLocalizedPropertyOrLabel(border::text(key))); });
}
