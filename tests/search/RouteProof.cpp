// How the routes are run and compared.
#include "search/RouteProof.h"

#include "store/ZRRecordObjectStoreFactoryImpl.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace test {

namespace {

using Ids = std::set<std::string>;

Ids without(const Ids& all, const Ids& some)
{
    Ids rest;
    std::ranges::set_difference(all, some, std::inserter(rest, rest.end()));
    return rest;
}

std::string textOf(const NaiveRecord& record)
{
    std::string text = fmt::format("{} in [{}]", record.id, fmt::join(record.parents, ", "));
    for (const auto& [property, value] : record.values)
        text += fmt::format(" | {}={}", property, test::textOf(value));
    for (const auto& [property, entries] : record.entries)
        for (const auto& [label, value] : entries)
            text += fmt::format(" | {}[{}]={}", property, label, test::textOf(value));
    return text;
}

std::string textOf(const Condition& search)
{
    if (search.children.empty()) {
        const auto* group = search.value.as<ZRRecord>();
        return fmt::format("{} of {}{}{}: comparison {}{} with {}", search.property.value_or("card"),
            search.ofPeople ? "people" : "groups", search.label ? " [" + *search.label + "]" : "",
            search.key ? " {" + *search.key + "}" : "", search.comparison,
            search.ignoresDiacritics ? " without diacritics" : "",
            group ? group->uniqueId() : test::textOf(search.value));
    }
    std::vector<std::string> children;
    for (const auto& child : search.children)
        children.push_back("(" + textOf(child) + ")");
    return fmt::to_string(fmt::join(children, search.conjunction == kZRConjunctionAnd ? " AND " : " OR "));
}

} // namespace

void RouteProof::check(const Condition& search) { tellOf(search, &RouteProof::compareRosters); }
void RouteProof::checkEachRecord(const Condition& search) { tellOf(search, &RouteProof::compareRecords); }

// Of a tree that fails the smallest part that fails too is told.
void RouteProof::tellOf(const Condition& search, void (RouteProof::*compareIn)(const Condition&))
{
    _complaints.clear();
    (this->*compareIn)(search);
    if (_complaints.empty())
        return;
    const int failures = ++_failures;
    const std::string complaints = fmt::to_string(fmt::join(_complaints, "\n"));
    for (const auto& child : search.children)
        tellOf(child, compareIn);
    constexpr int told = 10;
    if (_failures == failures && _failures <= told)
        ADD_FAILURE() << textOf(search) << "\n" << complaints;
}

void RouteProof::compareRosters(const Condition& search)
{
    const NaiveSearch naive(_twin.plain(), {platform::Clock::current().now()});
    const auto element = elementOf(search);
    const auto unasked = naive.whyUnasked(search);
    if (unasked)
        ++_unasked.at(static_cast<std::size_t>(*unasked));
    if (hasPredicate(*element) == unasked.has_value())
        _complaints.emplace_back(unasked ? "The store is asked, though it cannot be."
                                         : "The store is not asked, though it can be.");
    const Ids inMemory = naive.inMemory(search);
    const Ids inStore = unasked ? inMemory : naive.inStore(search);
    if (!unasked) {
        ++_asked;
        _found += static_cast<int>(inStore.size());
    }
    compare("store", idsOf(_twin.roster()->recordsMatchingSearchElement(element)), inStore);
    compare("memory", idsOf(_twin.roster()->recordsMatchingSearchElementNoHinting(element)), inMemory);
    noteDifferences(naive, search, inStore, inMemory);
}

void RouteProof::compareRecords(const Condition& search)
{
    const NaiveSearch naive(_twin.plain(), {platform::Clock::current().now()});
    const auto element = elementOf(search);
    Ids byMemory, byPredicate, inMemory, inStore;
    const auto note = [](Ids& ids, const std::string& id, bool matches) {
        if (matches)
            ids.insert(id);
    };
    for (const auto& [id, plain] : _twin.plain().records) {
        note(byMemory, id, element->matchesRecord(*_twin.record(id)));
        note(inMemory, id, naive.matchesInMemory(plain, search));
        note(byPredicate, id, element->predicateMatchesRecord(*_twin.record(id)));
        note(inStore, id, naive.matchesInStore(plain, search));
    }
    compare("each record", byMemory, inMemory);
    compare("each stored object", byPredicate, inStore);
}

void RouteProof::compare(const std::string& route, const Ids& found, const Ids& expected)
{
    if (found == expected)
        return;
    const auto list = [&](const char* what, const Ids& ids) {
        int shown = 2;
        std::string text = ids.empty() ? "" : fmt::format("\n  {} {}", ids.size(), what);
        for (auto id = ids.begin(); id != ids.end() && shown-- > 0; ++id) {
            const auto record = _twin.plain().records.find(*id);
            text += "\n    " + (record == _twin.plain().records.end() ? *id : textOf(record->second));
        }
        return text;
    };
    _complaints.push_back(
        route + list("missing", without(expected, found)) + list("not wanted", without(found, expected)));
}

void RouteProof::noteDifferences(
    const NaiveSearch& naive, const Condition& search, const Ids& inStore, const Ids& inMemory)
{
    Ids differing = without(inStore, inMemory);
    differing.merge(without(inMemory, inStore));
    for (const auto& id : differing) {
        const auto causes = naive.causes(_twin.plain().records.at(id), search);
        for (std::size_t i = 0; i < causes.size(); ++i)
            _seen.at(i) += causes.test(i);
    }
}

bool RouteProof::hasPredicate(const ZRSearchElement& element) const
{
    using Factory = ZRRecordObjectStoreFactoryImpl;
    ZRRoster& roster = *_twin.roster();
    return locked(roster, ZRAccess::read, [&]() ZR_NTS {
        for (const auto* recordClass : element.searchRecordClasses())
            if (!element._predicateForImplClass(
                    *Factory::implClassForPublicRecordClass(*recordClass), roster))
                return false;
        return true;
    });
}

void RouteProof::expectEveryDifference() const
{
    for (std::size_t i = 0; i < kDifferences.size(); ++i)
        EXPECT_GT(_seen.at(i), 0) << "no longer differs: " << kDifferences.at(i);
    for (std::size_t i = 0; i < kUnasked.size(); ++i)
        EXPECT_GT(_unasked.at(i), 0) << "always asked: " << kUnasked.at(i);
}

} // namespace test
