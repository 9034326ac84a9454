// What the store cannot be asked, and why.
#include "search/NaiveQuestion.h"

#include "core/ZRGroup.h"

#include <algorithm>

namespace test {

std::optional<Unasked> NaiveSearch::whyUnasked(const Condition& search) const
{
    for (const Kind kind : {Kind::person, Kind::group, Kind::smartGroup})
        if (asksFor(search, kind))
            if (const auto reason = whyUnasked(search, kind, {}))
                return reason;
    return std::nullopt;
}

std::optional<Unasked> NaiveSearch::whyUnasked(
    const Condition& search, Kind kind, const Visited& visited) const
{
    if (search.children.empty())
        return whyLeafUnasked(search, kind, visited);
    for (const auto& child : search.children)
        if (const auto reason = whyUnasked(child, kind, visited))
            return reason;
    return std::nullopt;
}

std::optional<Unasked> NaiveSearch::whyLeafUnasked(
    const Condition& condition, Kind kind, const Visited& visited) const
{
    if (condition.ofPeople != (kind == Kind::person))
        return std::nullopt;
    if (condition.property.value_or("").empty())
        return condition.value.isString() && kind == Kind::person ? std::nullopt
                                                                  : std::optional(Unasked::notText);
    const Rule& rule = ruleOf(condition.comparison);
    if (isNoValue(condition.value)) {
        if (!rule.isEquality() && !rule.isTextNegation())
            return std::nullopt;
    } else if (rule.isMembership()) {
        return whyMembershipUnasked(condition.value, kind, visited);
    }
    return whyPropertyUnasked(condition, kind);
}

std::optional<Unasked> NaiveSearch::whyMembershipUnasked(
    const Value& group, Kind kind, const Visited& visited) const
{
    std::vector<std::string> smartGroups;
    if (const auto* one = group.as<ZRGroup>()) {
        if (_roster.smartGroups.contains(one->uniqueId()))
            smartGroups = {one->uniqueId()};
    } else {
        for (const auto& [id, search] : _roster.smartGroups)
            if (!isAnyGroup(search.value))
                smartGroups.push_back(id);
    }
    for (const auto& id : smartGroups) {
        Visited inside = visited;
        if (inside.insert(id).second && whyUnasked(_roster.smartGroups.at(id), kind, inside))
            return Unasked::smartGroup;
    }
    return std::nullopt;
}

std::optional<Unasked> NaiveSearch::whyPropertyUnasked(const Condition& condition, Kind kind) const
{
    const ZRPropertyType type = typeOf(_roster, *condition.property, kind);
    const std::string key = condition.key.value_or("");
    const bool isAddress =
        *condition.property == zr::kZRAddressProperty && !isCustom(_roster, *condition.property, kind);
    if (type == kZRPropertyTypeUnknown)
        return Unasked::unknownProperty;
    if (!key.empty() && !(isAddress && std::ranges::find(kAddressParts, key) != kAddressParts.end()))
        return Unasked::dictionaryKey;
    const ZRPropertyType base = zrBaseType(type);
    if (!isAddress && (base == kZRPropertyTypeArray || base == kZRPropertyTypeDictionary))
        return Unasked::packedValue;
    if (isNoValue(condition.value))
        return std::nullopt;
    if (condition.comparison == kZRBitsInBitFieldMatch)
        return Unasked::bits;
    if (ruleOf(condition.comparison).isInterval()
        && (base != kZRPropertyTypeDate || !condition.value.isNumber()))
        return Unasked::noInterval;
    return std::nullopt;
}

} // namespace test
