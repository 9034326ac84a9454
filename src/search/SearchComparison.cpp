// How two values compare in memory: the order and the text tests that searches of live records use.
#include "search/SearchComparison.h"

#include "core/ZRRecord.h"
#include "objectstore/ValueComparison.h"
#include "platform/text/Utf.h"

#include <compare>

using objectstore::Comparator;
using platform::Value;

namespace {

int sign(std::weak_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

/// Of two values that are neither texts nor records: numbers and dates by amount.
int orderOfAmounts(const Value& receiver, const Value& argument)
{
    if (objectstore::compares(receiver, Comparator::equal, argument))
        return 0;
    return objectstore::compares(receiver, Comparator::greater, argument) ? 1 : -1;
}

int ascendingOrder(const Value& receiver, const Value& argument, std::uint32_t options)
{
    if (receiver.isNull())
        return argument.isNull() ? 0 : -1;
    if (const auto* record = receiver.as<ZRRecord>())
        return argument.asObject() && record->isEqual(*argument.asObject()) ? 0 : -1;
    if (argument.isNull())
        return 1;
    if (receiver.isString() && argument.isString())
        return sign(
            platform::compare(receiver.asText(), argument.asText(), options | platform::kCompareLocalized));
    return orderOfAmounts(receiver, argument);
}

bool isFound(const Value& receiver, const Value& argument, std::uint32_t options)
{
    return receiver.isString() && argument.isString()
        && platform::contains(receiver.asText(), argument.asText(), options);
}

} // namespace

int _abCompare(const Value& receiver, const Value& argument, bool ascending, std::uint32_t options)
{
    // Before a marker everything comes last, whichever way the rest is sorted.
    if (argument.isNull() && !receiver.isNull() && !receiver.as<ZRRecord>())
        return 1;
    const int order = ascendingOrder(receiver, argument, options);
    return ascending ? order : -order;
}

bool _abCompareContainsSubString(const Value& receiver, const Value& argument, std::uint32_t options)
{
    if (!receiver.isString() || !argument.isString())
        return false;
    const auto range = platform::rangeOf(argument.asText(), receiver.asText(), options);
    const std::size_t found = range ? platform::utf16Length(range->of(receiver.asText())) : 0;
    return found == platform::utf16Length(argument.asText());
}

bool _abComparePrefixMatch(const Value& receiver, const Value& argument, std::uint32_t options)
{
    return isFound(receiver, argument, options | platform::kCompareAnchored);
}

bool _abCompareSuffixMatch(const Value& receiver, const Value& argument, std::uint32_t options)
{
    return isFound(receiver, argument, options | platform::kCompareAnchored | platform::kCompareBackwards);
}
