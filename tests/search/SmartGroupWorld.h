// A world for smart groups: searches by groups, and what a group tells of its members in a line.
#pragma once

#include "search/SearchWorld.h"
#include "search/ZRSmartGroup.h"

#include <algorithm>

namespace test {

/// A smart group of `roster`; without an element it has no search.
inline Ref<ZRSmartGroup> smartGroup(
    const Ref<ZRRoster>& roster, const std::string& name, const Ref<ZRSearchElement>& element = nullptr)
{
    auto group = ZRSmartGroup::initWithRoster(roster);
    EXPECT_TRUE(group->setValue(Value(name), kZRGroupNameProperty));
    if (element)
        group->setSearchElement(element);
    return group;
}

/// A search for the people in a group, or for those who are not.
inline Ref<ZRSearchElement> inGroup(
    const Ref<ZRGroup>& group, ZRSearchComparison comparison = kZRMemberOfGroup)
{
    return where(kZRParentGroupsProperty, comparison, Value(group));
}

inline Ref<ZRSearchElement> any(const std::vector<Ref<ZRSearchElement>>& children)
{
    return ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, children);
}
inline Ref<ZRSearchElement> all(const std::vector<Ref<ZRSearchElement>>& children)
{
    return ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, children);
}

/// "modified, in came: Ana Bo", "modified, in came: nobody", or "as before": what is stored, with ids as
/// first names. It asks for no members.
inline std::string changesOf(const ZRSmartGroup& group)
{
    const std::int64_t flags = group.valueForProperty(kZRSmartGroupFlagsProperty).asInteger();
    const Value ids = group.valueForProperty(kZRSmartGroupModifiedUIDsProperty);
    if ((flags & 1) == 0)
        return ids.isArray() ? "as before, but with ids" : "as before";
    Names names;
    for (const Value& id : ids.asArray()) {
        const auto record = group.roster()->recordForUniqueId(id.asText());
        names.emplace_back(record ? record->valueForProperty(kZRFirstNameProperty).asText() : "a stranger");
    }
    std::ranges::sort(names);
    std::string text = "modified, in came:";
    for (const auto& name : names)
        text += " " + name;
    return text + (!ids.isArray() ? " unknown" : names.empty() ? " nobody" : "");
}

/// Forgets that the process has looked after its groups, and stops no timer.
class SmartGroupWorld : public SearchWorld {
protected:
    SmartGroupWorld() { __checkedSmartGroups = false; }

    Ref<ZRPerson> card(const std::string& firstName) const
    {
        return person(roster, {{kZRFirstNameProperty, Value(firstName)}});
    }
    Ref<ZRSmartGroup> group(const std::string& name, const Ref<ZRSearchElement>& element = nullptr) const
    {
        return smartGroup(roster, name, element);
    }
    /// A group of those whose first name is one of `names`.
    Ref<ZRSmartGroup> groupOf(const Names& names) const
    {
        std::vector<Ref<ZRSearchElement>> searches;
        for (const auto& name : names)
            searches.push_back(where(kZRFirstNameProperty, kZREqual, Value(name)));
        return group("of names", any(searches));
    }
};

} // namespace test
