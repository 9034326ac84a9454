// The order of people by name.
#include "core/ZRNameOrder.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Compare.h"
#include "store/ZROSRecord.h"

ZRNameComparison _createCompartorContext()
{
    const auto sorting = ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZRNameSorting);
    return {.byLastName = !sorting.isNumber() || sorting.asInteger() != 0};
}

int ZRComparePeopleName(const ZRPerson& a, const ZRPerson& b, const ZRNameComparison& comparison)
{
    if (&a == &b)
        return 0;
    auto* implA = a.zrDatabaseImpl();
    auto* implB = b.zrDatabaseImpl();
    if (!implA || !implB) {
        if (a.uniqueId() == b.uniqueId())
            return 0;
        return implA ? 1 : -1;
    }
    const auto name = comparison.byLastName ? "sortingLastName" : "sortingFirstName";
    const auto ordering = platform::compare(
        implA->valueForKey(name).asText(), implB->valueForKey(name).asText(), platform::kCompareLocalized);
    return ordering < 0 ? -1 : ordering > 0 ? 1 : 0;
}

int bsd_ZRComparePeopleName(void* comparison, const void* a, const void* b)
{
    return ZRComparePeopleName(*static_cast<const ZRPerson*>(*static_cast<const void* const*>(a)),
        *static_cast<const ZRPerson*>(*static_cast<const void* const*>(b)),
        *static_cast<const ZRNameComparison*>(comparison));
}
