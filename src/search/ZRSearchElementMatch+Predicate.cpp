// What a comparison asks of the store.
#include "core/ZRConstants.h"
#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"
#include "search/ZRSearchElementMatch.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"

#include <algorithm>

using objectstore::Comparator;
using objectstore::PredicateRef;
using objectstore::StorePredicate;
using platform::Value;

namespace {

/// Everything of a card is in its index text, folded.
PredicateRef wholeCard(const objectstore::Entity& entity, const Value& value, bool isNegation)
{
    if (!value.isString() || !entity.slot("contactIndex"))
        return nullptr;
    auto contains = StorePredicate::compare("contactIndex.stringForIndexing", Comparator::contains,
        Value(ZROSRecord::newNormalizedSearchString(value.asText())));
    return isNegation ? StorePredicate::negation(std::move(contains)) : contains;
}

} // namespace

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForImplClass(
    const objectstore::Entity& implClass, ZRManagedObjectContext&) const
{
    const auto* recordClass = ZRRecordObjectStoreFactoryImpl::publicRecordClassForImplClass(implClass);
    const auto classes = searchRecordClasses();
    if (std::ranges::find(classes, recordClass) == classes.end())
        return StorePredicate::never();
    if (isWholeCard())
        return wholeCard(implClass, _definition.value, _isNegation());
    const auto* place = ZROSRecord::keyForProperty(_propertyOrEmpty(), implClass);
    if (place && !place->entity && _definition.comparison == kZREqual && !_definition.value.isNothing())
        return StorePredicate::compare(place->key->key, Comparator::equal, _definition.value);
    return nullptr;
}

std::vector<std::string> ZRSearchElementMatch::prefetchingRelationshipKeyPathsForImplClass(
    const objectstore::Entity&, ZRRoster&) const
{
    return {};
}
