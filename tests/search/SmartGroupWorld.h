// A world for smart groups: searches by groups, and what a group tells of its members in a line.
#pragma once

#include "search/SearchWorld.h"
#include "search/ZRSmartGroup.h"

namespace test {

/// A smart group of `roster`; without an element it has no search.
Ref<ZRSmartGroup> smartGroup(
    const Ref<ZRRoster>& roster, const std::string& name, const Ref<ZRSearchElement>& element = nullptr);

/// A search for the people in a group, or for those who are not.
Ref<ZRSearchElement> inGroup(const Ref<ZRGroup>& group, ZRSearchComparison comparison = kZRMemberOfGroup);
Ref<ZRSearchElement> any(const std::vector<Ref<ZRSearchElement>>& children);
Ref<ZRSearchElement> all(const std::vector<Ref<ZRSearchElement>>& children);

/// "modified, in came: Ana Bo", "modified, in came: nobody", or "as before": what is stored, with ids as
/// first names. It asks for no members.
std::string changesOf(const ZRSmartGroup& group);

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
    Ref<ZRSmartGroup> groupOf(const Names& names) const;
};

} // namespace test
