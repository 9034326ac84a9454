// What every search element does: being made, being asked, and what it answers when its class knows nothing.
#include "search/ZRSearchElement.h"

#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "objectstore/PredicateMatch.h"
#include "objectstore/StoreContext.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElementConjunction.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <typeinfo>

using objectstore::StoreFetch;
using objectstore::StorePredicate;
using platform::Ref;

namespace {

std::atomic<bool> testsPredicatesInStore = false;

/// Whether a fetch in a context of its own finds the object.
bool isFoundInStore(ZROSRecord& object, const ZRSearchElement::Predicate& predicate)
{
    const auto context =
        platform::makeRef<objectstore::StoreContext>(object.managedObjectContext()->coordinator());
    StoreFetch fetch(object.entity(),
        StorePredicate::all(
            {StorePredicate::isObject(platform::Value(Ref<objectstore::StoreObject>(&object))), predicate}));
    const auto count = context->countFetch(fetch);
    return count && *count == 1;
}

} // namespace

ZRIncompatibleSearchElementVersionException::ZRIncompatibleSearchElementVersionException(std::int64_t version)
    : _text(fmt::format("{}: the search element is of version {}", name, version))
{
}

ZRIncompatibleSearchElementVersionException::~ZRIncompatibleSearchElementVersionException() = default;

Ref<ZRSearchElement> ZRSearchElement::searchElementForConjunction(
    ZRSearchConjunction conjunction, const std::vector<Ref<ZRSearchElement>>& children)
{
    zrRequire(!children.empty(), "[children count] > 0");
    zrRequire(std::ranges::all_of(children, [](const auto& child) { return bool(child); }), "child != nil");
    if (children.size() == 1)
        return children.front();
    return platform::makeRef<ZRSearchElementConjunction>(conjunction, children);
}

bool ZRSearchElement::matchesRecord(const ZRRecord& record) const
{
    return locked(*record.roster(), ZRAccess::read, [&]() ZR_NTS { return nts_MatchesRecord(record); });
}

bool ZRSearchElement::nts_MatchesRecord(const ZRRecord&) const { return false; }

bool ZRSearchElement::predicateMatchesRecord(const ZRRecord& record) const
{
    return locked(
        *record.roster(), ZRAccess::read, [&]() ZR_NTS { return nts_PredicateMatchesRecord(record); });
}

bool ZRSearchElement::nts_PredicateMatchesRecord(const ZRRecord& record) const
{
    const SmartGroupSearches kept;
    ZROSRecord* object = record.zrDatabaseImpl();
    ZRManagedObjectContext* context = object ? object->managedObjectContext() : nullptr;
    const Predicate predicate = context ? _predicateForImplClass(object->entity(), *context) : nullptr;
    if (!predicate)
        return nts_MatchesRecord(record);
    return testsPredicatesInStore ? isFoundInStore(*object, predicate)
                                  : objectstore::matches(*predicate, *object);
}

void ZRSearchElement::_setTestPredicatesMatchRecordInStore(bool inStore) { testsPredicatesInStore = inStore; }

ZRSearchElement::Predicate ZRSearchElement::_predicateForImplClass(
    const objectstore::Entity&, ZRManagedObjectContext&) const
{
    return nullptr;
}

ZRSearchElement::Predicate ZRSearchElement::_predicateForImplClass(
    const objectstore::Entity& implClass, ZRRoster& roster) const
{
    const SmartGroupSearches kept;
    const auto context = ZROSRecord::managedObjectContextForRoster(roster, implClass);
    return context ? _predicateForImplClass(implClass, *context) : nullptr;
}

std::vector<std::string> ZRSearchElement::prefetchingRelationshipKeyPathsForImplClass(
    const objectstore::Entity&, ZRRoster&) const
{
    return {};
}

std::vector<Ref<ZRGroup>> ZRSearchElement::groupsUsedInDefinition() const { return {}; }

bool ZRSearchElement::usesGroupInDefinition(const ZRGroup&) const { return false; }

bool ZRSearchElement::isReferencingGroup(const ZRGroup&) const { return false; }

void ZRSearchElement::setSearchValue(const platform::Value&)
{
    throw ZRUnimplementedOperation("ZRSearchElement", "setSearchValue:");
}

void ZRSearchElement::setDiacriticInsensitiveOption(bool)
{
    throw ZRUnimplementedOperation(archiveClassName(), "setDiacriticInsensitiveOption:");
}

bool ZRSearchElement::isEqual(const platform::Object& other) const
{
    const auto* element = dynamic_cast<const ZRSearchElement*>(&other);
    return element && typeid(*this) == typeid(*element) && searchPeople() == element->searchPeople()
        && isSimpleSearch() == element->isSimpleSearch() && _isNegation() == element->_isNegation();
}

std::size_t ZRSearchElement::hash() const
{
    return std::size_t(searchPeople()) | std::size_t(isSimpleSearch()) << 1 | std::size_t(_isNegation()) << 2;
}
