// A world for smart groups: searches by groups, and what a group tells of its members in a line.
#include "search/SmartGroupWorld.h"

#include <algorithm>

namespace test {

Ref<ZRSmartGroup> smartGroup(
    const Ref<ZRRoster>& roster, const std::string& name, const Ref<ZRSearchElement>& element)
{
    auto group = ZRSmartGroup::initWithRoster(roster);
    EXPECT_TRUE(group->setValue(Value(name), kZRGroupNameProperty));
    if (element)
        group->setSearchElement(element);
    return group;
}

Ref<ZRSearchElement> inGroup(const Ref<ZRGroup>& group, ZRSearchComparison comparison)
{
    return where(kZRParentGroupsProperty, comparison, Value(group));
}

Ref<ZRSearchElement> any(const std::vector<Ref<ZRSearchElement>>& children)
{
    return ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, children);
}

Ref<ZRSearchElement> all(const std::vector<Ref<ZRSearchElement>>& children)
{
    return ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, children);
}

std::string changesOf(const ZRSmartGroup& group)
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

Ref<ZRSmartGroup> SmartGroupWorld::groupOf(const Names& names) const
{
    std::vector<Ref<ZRSearchElement>> searches;
    for (const auto& name : names)
        searches.push_back(where(kZRFirstNameProperty, kZREqual, Value(name)));
    return group("of names", any(searches));
}

} // namespace test
