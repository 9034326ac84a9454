// Do trees of comparisons find what their rules say, of whatever roster, while it is being edited?
#include "search/NaiveSearch.h"
#include "search/RouteProof.h"
#include "search/SearchSamples.h"
#include "search/SearchWorld.h"

#include <algorithm>
#include <cstdlib>

namespace test {

namespace {

using Kind = NaiveRecord::Kind;

int chosenSize(const char* variable, int usual)
{
    const char* const chosen = std::getenv(variable);
    return chosen ? std::atoi(chosen) : usual;
}

/// A roster with random cards and groups, and random searches of it.
class RandomSearches {
public:
    explicit RandomSearches(unsigned seed) : _random(seed), _twin(ZRRoster::emptyMemoryBackedRoster())
    {
        _properties = searchedProperties(_twin);
        for (auto count = 3 + below(10); count > 0; --count)
            addRandomCard(_twin, _random, _properties);
        for (auto count = 1 + below(4); count > 0; --count)
            _twin.add(
                Kind::group, "GroupName=" + pick(ofProperty(zr::kZRGroupNameProperty).contents, _random));
        for (auto count = below(3); count > 0; --count)
            _twin.addSmartGroup("smart", leafOfPeople());
        for (int i = 0; i < 10; ++i)
            changeMembership();
        _properties = searchedProperties(_twin);
    }

    TwinRoster& twin() { return _twin; }

    Condition tree(int depth)
    {
        if (depth == 1 || below(4) == 0)
            return leaf();
        Condition tree{.conjunction = below(2) ? kZRConjunctionAnd : kZRConjunctionOr};
        for (auto count = 2 + below(2); count > 0; --count)
            tree.children.push_back(this->tree(depth - 1));
        return tree;
    }

    /// One change as a user makes them, or a save.
    void edit()
    {
        const auto people = _twin.idsOfKind(Kind::person), groups = _twin.idsOfKind(Kind::group);
        switch (below(10)) {
        case 0:
            return _twin.save();
        case 1:
            addRandomCard(_twin, _random, _properties);
            return;
        case 2:
            if (people.size() > 2)
                _twin.remove(pick(people, _random));
            return;
        case 3:
            if (groups.size() > 1)
                removeGroup(pick(groups, _random));
            return;
        case 4:
        case 5:
            return changeMembership();
        case 6:
            return editRandomly(_twin, pick(groups, _random), _random, _properties);
        default:
            return editRandomly(_twin, pick(people, _random), _random, _properties);
        }
    }

private:
    std::size_t below(std::size_t count) { return _random() % count; }

    const Searched& ofProperty(std::string_view property) const
    {
        return *std::ranges::find(_properties, property, &Searched::property);
    }

    /// Nearly always one that the store can be asked: a single other one sends a whole tree through memory.
    Condition leaf()
    {
        const bool isAny = below(50) == 0;
        for (;;) {
            auto leaf = randomLeaf();
            const NaiveSearch naive(_twin.plain(), {platform::Clock::current().now()});
            if (isAny || !naive.whyUnasked(leaf))
                return leaf;
        }
    }

    Condition randomLeaf()
    {
        const Searched& searched =
            below(6) ? pick(_properties, _random) : ofProperty(zr::kZRParentGroupsProperty);
        Condition leaf{.property = searched.property,
            .label = pick(searched.labels, _random),
            .key = pick(searched.keys, _random),
            .value = pick(searched.values, _random),
            .ofPeople = searched.isOfPeople,
            .ignoresDiacritics = below(4) == 0};
        leaf.comparison = static_cast<ZRSearchComparison>(below(kZRNotMemberOfGroup + 1));
        if (searched.property == zr::kZRParentGroupsProperty)
            leaf.comparison = below(2) ? kZRMemberOfGroup : kZRNotMemberOfGroup;
        else if (typeIsDate(searched) && leaf.value.isNumber())
            leaf.comparison = static_cast<ZRSearchComparison>(
                kZRWithinIntervalAroundToday + static_cast<ZRSearchComparison>(below(8)));
        return leaf;
    }

    /// One that means the same when it was archived: it names no group, whose roster is in no file.
    Condition leafOfPeople()
    {
        for (;;) {
            auto found = leaf();
            const bool isOfGroups = found.property == zr::kZRParentGroupsProperty
                && found.value.asText() != zr::kZRSmartGroupAnyGroupMembershipProperty;
            if (found.ofPeople && !isOfGroups && !found.value.isObject())
                return found;
        }
    }

    bool typeIsDate(const Searched& searched)
    {
        const auto kind = searched.isOfPeople ? Kind::person : Kind::group;
        return zrBaseType(typeOf(_twin.plain(), searched.property, kind)) == kZRPropertyTypeDate;
    }

    void changeMembership()
    {
        const auto groups = _twin.idsOfKind(Kind::group);
        const auto id = pick(below(4) ? _twin.idsOfKind(Kind::person) : groups, _random);
        const auto group = pick(groups, _random);
        const bool isMember = _twin.plain().records.at(id).parents.contains(group);
        if (isMember || _twin.isPerson(id)
            || std::ranges::find(groups, id) < std::ranges::find(groups, group))
            _twin.changeMembership(id, group);
    }

    /// Later searches must not name it.
    void removeGroup(const std::string& id)
    {
        _twin.remove(id);
        _properties = searchedProperties(_twin);
    }

    std::mt19937 _random;
    TwinRoster _twin;
    std::vector<Searched> _properties;
};

} // namespace

class RandomTrees : public SearchWorld { };

TEST_F(RandomTrees, FindWhatTheirRulesSay)
{
    constexpr int treesPerRoster = 40, treesPerEdit = 2, depth = 4;
    const int trees = chosenSize("ROSTER_TREES", 400);
    const auto firstSeed = static_cast<unsigned>(chosenSize("ROSTER_TEST_SEED", 1));
    int asked = 0, found = 0;
    const PlaceAndTime here("Europe/Berlin", {.day = {2027, 2, 26}, .hour = 20});
    for (int done = 0; done < trees; done += treesPerRoster) {
        const unsigned seed = firstSeed + static_cast<unsigned>(done / treesPerRoster);
        SCOPED_TRACE(
            "ROSTER_TEST_SEED=" + std::to_string(seed) + " ROSTER_TREES=" + std::to_string(treesPerRoster));
        RandomSearches searches(seed);
        RouteProof proof(searches.twin());
        for (int i = 0; i < treesPerRoster; ++i) {
            if (i % treesPerEdit == 0)
                searches.edit();
            const Condition search = searches.tree(depth);
            proof.check(search);
            proof.checkEachRecord(search);
            if (proof.failures() > 0)
                return;
        }
        asked += proof.asked();
        found += proof.found();
    }
    // Trees that all went through memory, or found nothing, would prove nothing.
    EXPECT_GT(asked, trees / 2);
    EXPECT_GT(found, trees);
}

} // namespace test
