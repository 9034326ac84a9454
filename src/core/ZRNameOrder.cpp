// The order of people by name.
#include "core/ZRNameOrder.h"

#include "core/ZRConstants.h"
#include "core/ZRRecord.h"
#include "objectstore/StoreErrors.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Compare.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <optional>

using platform::Value;

namespace {

constexpr std::int64_t byLastName = 1;

/// What `read` answers; absent where the row is gone or the store cannot be read.
template <class Read>
auto unlessGone(Read read) -> std::optional<decltype(read())>
{
    try {
        return read();
    } catch (const objectstore::InaccessibleObject&) {
        return {};
    } catch (const objectstore::StoreFailure&) {
        return {};
    }
}

std::optional<Value> sortName(const ZRRecord& record, const ZRNameComparison& comparison)
{
    auto* const impl = record.zrDatabaseImpl();
    if (!impl)
        return {};
    return unlessGone(
        [&] { return impl->valueForKey(comparison.byLastName ? "sortingLastName" : "sortingFirstName"); });
}

int compareGone(const ZRRecord& a, bool isGoneA, const ZRRecord& b)
{
    if (a.uniqueId() == b.uniqueId())
        return 0;
    return isGoneA ? -1 : 1;
}

/// Whether the collation keys in the row of `impl` are of this process's locale.
bool hasStoredKey(ZROSRecord& impl)
{
    const auto* context = impl.managedObjectContext();
    return context && context->writesCollationKeys() && impl.entity().isKindOf(contactSlots().entity);
}

} // namespace

std::int64_t zrNameSorting()
{
    const auto sorting = ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZRNameSorting);
    return sorting.isNumber() ? sorting.asInteger() : byLastName;
}

ZRNameComparison _createCompartorContext() { return {.byLastName = zrNameSorting() != 0}; }

ZRNameComparison zrComparisonInOrder(ZRNameOrder order)
{
    return order == ZRNameOrder::preferred ? _createCompartorContext()
                                           : ZRNameComparison{.byLastName = order == ZRNameOrder::lastName};
}

int ZRComparePeopleName(const ZRRecord& a, const ZRRecord& b, const ZRNameComparison& comparison)
{
    if (&a == &b)
        return 0;
    const auto nameA = sortName(a, comparison), nameB = sortName(b, comparison);
    if (!nameA || !nameB)
        return compareGone(a, !nameA, b);
    const auto ordering = platform::compare(nameA->asText(), nameB->asText(), platform::kCompareLocalized);
    return ordering < 0 ? -1 : ordering > 0 ? 1 : 0;
}

int bsd_ZRComparePeopleName(void* comparison, const void* a, const void* b)
{
    return ZRComparePeopleName(*static_cast<const ZRRecord*>(*static_cast<const void* const*>(a)),
        *static_cast<const ZRRecord*>(*static_cast<const void* const*>(b)),
        *static_cast<const ZRNameComparison*>(comparison));
}

int ZRComparePeopleName(const ZRNamedRecord& a, const ZRNamedRecord& b)
{
    if (a.record == b.record)
        return 0;
    if (a.isGone || b.isGone)
        return compareGone(*a.record, a.isGone, *b.record);
    const int ordering = a.key.compare(b.key);
    return ordering < 0 ? -1 : ordering > 0 ? 1 : 0;
}

bool nts_appendNameKey(const ZRRecord& record, const ZRNameComparison& comparison, std::string& bytes)
{
    auto* const impl = record.zrDatabaseImpl();
    if (!impl || !hasStoredKey(*impl)) {
        const auto name = sortName(record, comparison);
        if (name)
            bytes += platform::collationKey(name->asText());
        return name.has_value();
    }
    const auto& slots = contactSlots();
    const auto key = unlessGone(
        [&] { return impl->bytes(comparison.byLastName ? slots.sortingLastKey : slots.sortingFirstKey); });
    bytes += key.value_or(std::string_view());
    return key.has_value();
}
