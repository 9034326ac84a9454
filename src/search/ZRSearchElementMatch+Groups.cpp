// How membership in a group is asked of the store.
#include "core/ZRGroup.h"
#include "objectstore/StorePredicate.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElementMatch.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

using objectstore::PredicateRef;
using objectstore::Rows;
using objectstore::StorePredicate;
using platform::Ref;

namespace {

/// The members of a smart group; of one without a search there are none, nor of one that is being looked
/// into already. Absent when its search cannot be asked of the store, or only by too many conditions.
PredicateRef nts_ofSmartGroup(
    const ZRGroup& group, const objectstore::Entity& implClass, ZRManagedObjectContext& context) ZR_NTS
{
    auto* kept = SmartGroupSearches::ofThisThread();
    if (kept && !kept->mayConvert(group.nts_UniqueId(), implClass))
        return nullptr;
    const SmartGroupVisit visit(group.nts_UniqueId());
    const auto search = visit.isEntered() ? nts_searchOfSmartGroup(group) : nullptr;
    return search ? search->_predicateForImplClass(implClass, context) : StorePredicate::never();
}

PredicateRef nts_ofGroup(const ZRGroup& group, ZRManagedObjectContext& context) ZR_NTS
{
    const auto stored = context.zrGroupsForUniqueIDs({group.nts_UniqueId()});
    auto* last = stored.empty() ? nullptr : dynamic_cast<ZROSGroup*>(stored.back().get());
    return last ? last->contactMembershipRecursivePredicate() : StorePredicate::never();
}

/// Whether the group's search is for members of any group: it must not count itself.
bool nts_asksForAnyGroup(const ZRGroup& group) ZR_NTS
{
    const auto search = platform::refCast<ZRSearchElementMatch>(nts_searchOfSmartGroup(group));
    return search && isAnyGroupMarker(search->_value());
}

PredicateRef nts_ofAnyGroup(const objectstore::Entity& implClass, ZRManagedObjectContext& context) ZR_NTS
{
    std::vector<PredicateRef> parts{StorePredicate::rows("parentGroups", Rows::some)};
    const Ref<ZRRoster> roster =
        context.owningRoster() ? Ref<ZRRoster>(context.owningRoster()) : ZRRoster::nts_SharedRoster();
    if (!roster)
        return parts.front();
    for (const auto& record : roster->nts_AllRecordsForClass(ZRSmartGroup::recordClassDescription)) {
        const auto& group = static_cast<const ZRGroup&>(*record);
        if (nts_asksForAnyGroup(group))
            continue;
        parts.push_back(nts_ofSmartGroup(group, implClass, context));
        if (!parts.back())
            return nullptr;
    }
    return StorePredicate::any(std::move(parts));
}

} // namespace

ZRSearchElement::Predicate ZRSearchElementMatch::nts_predicateForMembership(
    const objectstore::Entity& implClass, ZRManagedObjectContext& context) const
{
    const auto* group = _definition.value.as<ZRGroup>();
    PredicateRef members;
    if (!group)
        members = nts_ofAnyGroup(implClass, context);
    else if (group->recordClass().isKindOf(ZRSmartGroup::recordClassDescription))
        members = nts_ofSmartGroup(*group, implClass, context);
    else
        members = nts_ofGroup(*group, context);
    if (!members || _definition.comparison == kZRMemberOfGroup)
        return members;
    return StorePredicate::any(
        {StorePredicate::rows("parentGroups", Rows::none), StorePredicate::negation(std::move(members))});
}
