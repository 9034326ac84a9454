// How a roster finds the records that match a search element: in the store where it can, else one by one.
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

using platform::Ref;
using Factory = ZRRecordObjectStoreFactoryImpl;

namespace {

/// A class of records with what the store is asked for it.
struct ClassSearch {
    const ZRRecordClass* recordClass;
    const objectstore::Entity* entity;
    ZRSearchElement::Predicate predicate;
};

/// Logs what a search was, which way it went and how long it took, where "ZRSearchDebug" asks for it.
class SearchLog {
public:
    explicit SearchLog(const ZRSearchElement& search) : _search(search) { }

    void matched(const ZRRecordList& records, const std::vector<ClassSearch>& plan = {}) const
    {
        if (!_isOn)
            return;
        std::string predicates;
        for (const auto& part : plan)
            predicates += (predicates.empty() ? "" : ", ") + part.predicate->description();
        platform::log(
            fmt::format("Search element:\n  ---> SE[ {} ]\n{}  ---> Matched {} records in {:4.4f} sec",
                _search.description(), plan.empty() ? "" : fmt::format("  ===>  P[ {} ]\n", predicates),
                records.size(), platform::Clock::current().monotonic() - _start));
    }

private:
    const ZRSearchElement& _search;
    const bool _isOn = platform::UserDefaults::standard().boolForKey("ZRSearchDebug");
    const double _start = platform::Clock::current().monotonic();
};

/// What to ask the store, class by class; empty when it cannot be asked for one of them.
std::vector<ClassSearch> nts_plan(const ZRSearchElement& search, ZRRoster& roster) ZR_NTS
{
    std::vector<ClassSearch> plan;
    for (const ZRRecordClass* recordClass : search.searchRecordClasses()) {
        const auto* entity = Factory::implClassForPublicRecordClass(*recordClass);
        auto predicate = entity ? search._predicateForImplClass(*entity, roster) : nullptr;
        if (!predicate)
            return {};
        plan.push_back({recordClass, entity, std::move(predicate)});
    }
    return plan;
}

void append(ZRRecordList& records, ZRRecordList more)
{
    std::ranges::move(more, std::back_inserter(records));
}

/// People before groups; what is looked for otherwise keeps its order.
std::vector<const ZRRecordClass*> classesToWalk(const ZRSearchElement& search)
{
    auto classes = search.searchRecordClasses();
    std::stable_partition(classes.begin(), classes.end(),
        [](const auto* recordClass) { return recordClass->isKindOf(ZRPerson::recordClassDescription); });
    return classes;
}

/// Collects the relationships that evaluating an element on live records reads, so that each is one query.
struct PathsRead {
    const objectstore::Entity& entity;
    ZRRoster& roster;
    std::vector<std::string> paths = {};

    void add(const std::string& path)
    {
        if (entity.slot(path) && std::ranges::find(paths, path) == paths.end())
            paths.push_back(path);
    }

    void nts_addElement(const ZRSearchElement& element) ZR_NTS
    {
        if (const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element))
            for (const auto& child : conjunction->_children())
                nts_addElement(*child);
        else if (const auto* match = dynamic_cast<const ZRSearchElementMatch*>(&element))
            nts_addMatch(*match);
    }

    void nts_addMatch(const ZRSearchElementMatch& match) ZR_NTS
    {
        for (const auto& path : match.prefetchingRelationshipKeyPathsForImplClass(entity, roster))
            add(path);
        const std::string property = match._searchProperty().value_or("");
        if (property.empty())
            add("contactIndex");
        else if (property == zr::kZRParentGroupsProperty)
            nts_addMembership(match._value().as<ZRGroup>());
        else if (!ZROSRecord::keyForProperty(property, entity))
            add("customProperties");
    }

    void nts_addMembership(const ZRGroup* group) ZR_NTS
    {
        add("parentGroups");
        if (!group || !group->recordClass().isKindOf(ZRSmartGroup::recordClassDescription))
            return;
        const SmartGroupVisit visit(group->nts_UniqueId());
        if (const auto search = visit.isEntered() ? nts_searchOfSmartGroup(*group) : nullptr)
            nts_addElement(*search);
    }
};

ZRRecordList nts_walk(const ZRSearchElement& search, ZRRoster& roster) ZR_NTS
{
    const SmartGroupSearches kept;
    ZRRecordList matching;
    for (const ZRRecordClass* recordClass : classesToWalk(search)) {
        const auto* entity = Factory::implClassForPublicRecordClass(*recordClass);
        PathsRead read{*entity, roster};
        read.nts_addElement(search);
        ZRRecordList all = roster.recordsForClass(*recordClass, nullptr, read.paths, false);
        std::erase_if(all, [&](const auto& record) ZR_NTS { return !search.nts_MatchesRecord(*record); });
        append(matching, std::move(all));
    }
    return matching;
}

ZRRecordList nts_search(const Ref<ZRSearchElement>& search, ZRRoster& roster) ZR_NTS
{
    const SmartGroupSearches kept;
    const SearchLog log(*search);
    const auto plan =
        roster.isPredicateSearchingEnabled() ? nts_plan(*search, roster) : std::vector<ClassSearch>();
    if (plan.empty())
        return roster.recordsMatchingSearchElementNoHinting(search, false);
    ZRRecordList matching;
    for (const auto& [recordClass, entity, predicate] : plan)
        append(matching,
            roster.recordsForClass(*recordClass, predicate,
                search->prefetchingRelationshipKeyPathsForImplClass(*entity, roster), false));
    log.matched(matching, plan);
    return matching;
}

ZRSearchRoute nts_routeOf(const ClassSearch& part, ZRRoster& roster) ZR_NTS
{
    ZRSearchRoute route{std::string(part.recordClass->name), part.predicate->description(), {}, {}};
    objectstore::StoreFetch fetch(*part.entity, part.predicate);
    fetch.includesSubentities = false;
    const auto plans = roster.managedObjectContext()->explainFetch(fetch);
    for (const auto& plan : plans ? *plans : std::vector<objectstore::FetchPlan>()) {
        route.sql += (route.sql.empty() ? "" : "; ") + plan.sql;
        route.plan.insert(route.plan.end(), plan.steps.begin(), plan.steps.end());
    }
    return route;
}

void requireElement(const Ref<ZRSearchElement>& search)
{
    zrRequire(bool(search), "search != nil && [search isKindOfClass:[ZRSearchElement class]]");
}

} // namespace

bool ZRRoster::isPredicateSearchingEnabled() { return bool(managedObjectContext()); }

ZRRecordList ZRRoster::recordsMatchingSearchElement(const Ref<ZRSearchElement>& search)
{
    return recordsMatchingSearchElement(search, true);
}

ZRRecordList ZRRoster::recordsMatchingSearchElement(const Ref<ZRSearchElement>& search, bool takeLock)
{
    requireElement(search);
    if (takeLock)
        return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_search(search, *this); });
    zrGlobalLockIsHeld();
    return nts_search(search, *this);
}

ZRRecordList ZRRoster::recordsMatchingSearchElementNoHinting(const Ref<ZRSearchElement>& search)
{
    return recordsMatchingSearchElementNoHinting(search, true);
}

ZRRecordList ZRRoster::recordsMatchingSearchElementNoHinting(
    const Ref<ZRSearchElement>& search, bool takeLock)
{
    requireElement(search);
    if (!nts_hasSharedInstance())
        return {};
    const SearchLog log(*search);
    const auto walk = [&]() ZR_NTS { return nts_walk(*search, *this); };
    ZRRecordList matching;
    if (takeLock) {
        matching = locked(*this, ZRAccess::read, walk);
    } else {
        zrGlobalLockIsHeld();
        matching = walk();
    }
    log.matched(matching);
    return matching;
}

std::vector<ZRSearchRoute> ZRRoster::explainSearch(const Ref<ZRSearchElement>& search)
{
    requireElement(search);
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        std::vector<ZRSearchRoute> routes;
        const auto plan =
            isPredicateSearchingEnabled() ? nts_plan(*search, *this) : std::vector<ClassSearch>();
        for (const auto& part : plan)
            routes.push_back(nts_routeOf(part, *this));
        if (plan.empty())
            for (const auto* recordClass : classesToWalk(*search))
                routes.push_back({std::string(recordClass->name), {}, {}, {}});
        return routes;
    });
}
