// The forms that a search compares: normalised texts, and conditions on flags and on absent values.
#include "platform/text/Fold.h"
#include "store/ZROSRecord.h"

using objectstore::PredicateRef;
using objectstore::StorePredicate;

std::string ZROSRecord::newNormalizedSortString(std::string_view text) { return platform::foldCase(text); }

std::string ZROSRecord::newNormalizedSearchString(std::string_view text)
{
    return platform::foldCaseAndDiacritics(text);
}

std::string ZROSRecord::newIncrementedSearchString(std::string_view text)
{
    return platform::incremented(text);
}

PredicateRef ZROSRecord::bitwiseAndPredicateForKey(std::string_view key, std::int64_t number,
    std::int64_t comparedNumber, objectstore::Comparator comparisonType)
{
    return StorePredicate::compareBits(key, number, comparisonType, platform::Value(comparedNumber));
}

PredicateRef ZROSRecord::compoundPredicateForKey(
    std::string_view key, ZRNullOption option, PredicateRef subPredicate)
{
    if (option == ZRNullOption::andNotNull)
        return StorePredicate::all({StorePredicate::isPresent(key), std::move(subPredicate)});
    return StorePredicate::any({StorePredicate::isAbsent(key), std::move(subPredicate)});
}

PredicateRef ZROSGroup::contactMembershipRecursivePredicate()
{
    return StorePredicate::memberOfGroupOrBelow(
        platform::Value(objectstore::ObjectRef(this)), "contacts", "childGroups");
}
