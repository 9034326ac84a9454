// How several search elements answer as one.
#include "search/ZRSearchElementConjunction.h"

#include "core/ZRGroup.h"
#include "objectstore/StorePredicate.h"
#include "search/SearchPredicates.h"
#include "search/SearchValues.h"

#include <algorithm>

using objectstore::PredicateRef;
using objectstore::StorePredicate;
using platform::Ref;
using platform::Value;

namespace {

/// Adds what is not there yet.
template <class List>
void unite(List& list, const List& more)
{
    for (const auto& element : more)
        if (std::ranges::find(list, element) == list.end())
            list.push_back(element);
}

} // namespace

bool ZRSearchElementConjunction::nts_MatchesRecord(const ZRRecord& record) const
{
    const SearchValues readOnce(record);
    const bool isAnd = _conjunction == kZRConjunctionAnd;
    for (const auto& child : _elements)
        if (child->nts_MatchesRecord(record) != isAnd)
            return !isAnd;
    return isAnd;
}

ZRSearchElement::Predicate ZRSearchElementConjunction::_predicateForImplClass(
    const objectstore::Entity& implClass, ZRManagedObjectContext& context) const
{
    std::vector<PredicateRef> parts;
    for (const auto& child : _elements) {
        parts.push_back(child->_predicateForImplClass(implClass, context));
        if (!parts.back())
            return nullptr;
    }
    try {
        return _conjunction == kZRConjunctionAnd ? StorePredicate::all(std::move(parts))
                                                 : StorePredicate::any(std::move(parts));
    } catch (const std::exception& failure) {
        logFailedConversion(*this, failure);
        return nullptr;
    }
}

std::vector<std::string> ZRSearchElementConjunction::prefetchingRelationshipKeyPathsForImplClass(
    const objectstore::Entity& implClass, ZRRoster& roster) const
{
    std::vector<std::string> paths;
    for (const auto& child : _elements)
        unite(paths, child->prefetchingRelationshipKeyPathsForImplClass(implClass, roster));
    return paths;
}

std::vector<const ZRRecordClass*> ZRSearchElementConjunction::searchRecordClasses() const
{
    std::vector<const ZRRecordClass*> classes;
    for (const auto& child : _elements)
        unite(classes, child->searchRecordClasses());
    return classes;
}

bool ZRSearchElementConjunction::searchPeople() const
{
    return std::ranges::any_of(_elements, [](const auto& child) { return child->searchPeople(); });
}

bool ZRSearchElementConjunction::searchGroups() const
{
    return std::ranges::any_of(_elements, [](const auto& child) { return child->searchGroups(); });
}

bool ZRSearchElementConjunction::searchSubscribed() const
{
    return std::ranges::any_of(_elements, [](const auto& child) { return child->searchSubscribed(); });
}

Value ZRSearchElementConjunction::_withinDate() const
{
    Value earliest;
    for (const auto& child : _elements)
        if (const Value date = child->_withinDate();
            date.isDate() && (!earliest.isDate() || date.asDate() < earliest.asDate()))
            earliest = date;
    return earliest;
}

std::vector<Ref<ZRGroup>> ZRSearchElementConjunction::groupsUsedInDefinition() const
{
    std::vector<Ref<ZRGroup>> groups;
    for (const auto& child : _elements)
        unite(groups, child->groupsUsedInDefinition());
    return groups;
}

bool ZRSearchElementConjunction::usesGroupInDefinition(const ZRGroup& group) const
{
    return std::ranges::any_of(
        _elements, [&](const auto& child) { return child->usesGroupInDefinition(group); });
}

bool ZRSearchElementConjunction::isReferencingGroup(const ZRGroup& group) const
{
    return std::ranges::any_of(
        _elements, [&](const auto& child) { return child->isReferencingGroup(group); });
}

void ZRSearchElementConjunction::setSearchValue(const Value& value)
{
    for (const auto& child : _elements)
        child->setSearchValue(value);
}

std::string ZRSearchElementConjunction::description() const
{
    std::string text;
    for (const auto& child : _elements)
        text += (text.empty()                               ? "("
                        : _conjunction == kZRConjunctionAnd ? " AND ("
                                                            : " OR (")
            + child->description() + ")";
    return text;
}

std::int64_t ZRSearchElementConjunction::encodingVersion() const
{
    std::int64_t version = 1;
    for (const auto& child : _elements)
        version = std::max(version, child->encodingVersion());
    return version;
}
