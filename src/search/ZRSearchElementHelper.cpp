// How a search reads as the rows of a rule editor.
#include "search/ZRSearchElementHelper.h"

#include "core/ZRConstants.h"
#include "platform/run/NeverDestroyed.h"
#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"

#include <algorithm>
#include <array>
#include <cmath>

using platform::NeverDestroyed;
using platform::Ref;
using platform::Value;
using Strings = std::vector<std::string>;

namespace {

/// A unit longer than a day, and how far from a whole number of them an interval may be.
struct Unit {
    ZRDateUnit unit;
    double seconds;
    double tolerance;
};
constexpr double oneDay = 86400;
constexpr std::array units{Unit{ZRDateUnit::years, 365 * oneDay + 1, 0.085},
    Unit{ZRDateUnit::months, 31 * oneDay + 1, 0.05}, Unit{ZRDateUnit::weeks, 7 * oneDay + 1, 0.15}};

Strings strings(std::initializer_list<std::string_view> texts) { return {texts.begin(), texts.end()}; }

const ZRSearchElementMatch* asMatch(const Ref<ZRSearchElement>& element)
{
    return dynamic_cast<const ZRSearchElementMatch*>(element.get());
}

ZRSearchRule ruleOf(const ZRSearchElementMatch& match)
{
    return {match._searchProperty().value_or(""), match._label(), match._key(), match._value(),
        match._comparison()};
}

/// Whether all children are comparisons that ask the same.
bool asksTheSame(const ZRSearchElementConjunction& conjunction)
{
    const auto& children = conjunction._children();
    const auto* first = asMatch(children.front());
    return first && std::ranges::all_of(children, [&](const auto& child) {
        const auto* match = asMatch(child);
        return match && match->_comparison() == first->_comparison() && match->_value() == first->_value()
            && match->_label() == first->_label();
    });
}

/// Whether the comparisons are of an address and go through its keys.
bool goesThroughAddress(const ZRSearchElementConjunction& conjunction)
{
    Strings keys;
    for (const auto& child : conjunction._children())
        if (const auto* match = asMatch(child); match && match->_searchProperty() == zr::kZRAddressProperty)
            keys.push_back(match->_key().value_or(""));
    return keys == ZRSearchElementHelper::AddressKeys();
}

/// The row of a conjunction that is there only because a rule goes through several properties.
std::optional<ZRSearchRule> ruleOfFamily(const ZRSearchElementConjunction& conjunction)
{
    if (!asksTheSame(conjunction))
        return {};
    const Strings properties = ZRSearchElementHelper::propertiesOfSearchElements(conjunction._children());
    const bool isAddress = goesThroughAddress(conjunction);
    if (!isAddress && properties != ZRSearchElementHelper::nameProperties()
        && properties != ZRSearchElementHelper::IMProperties())
        return {};
    ZRSearchRule rule = ruleOf(*asMatch(conjunction._children().front()));
    if (isAddress)
        rule.key = std::nullopt;
    return rule;
}

/// The row of a conjunction of names, one word each.
std::optional<ZRSearchRule> ruleOfNames(const ZRSearchElementConjunction& conjunction)
{
    const auto isName = [](const Ref<ZRSearchElement>& child) {
        const auto rule = ZRSearchElementHelper::isSingleSearchElement(*child, 0);
        return rule && !asMatch(child) && rule->property == ZRSearchElementHelper::nameProperties().front();
    };
    if (!std::ranges::all_of(conjunction._children(), isName))
        return {};
    ZRSearchRule rule{ZRSearchElementHelper::nameProperties().front(), {}, {}, {}, kZREqual};
    rule.value = ZRSearchElementHelper::nameValueForConjoinedSearchElement(conjunction, rule.comparison);
    return rule;
}

} // namespace

const Strings& ZRSearchElementHelper::nameProperties()
{
    static const NeverDestroyed<const Strings> names(
        strings({zr::kZRFirstNameProperty, zr::kZRMiddleNameProperty, zr::kZRLastNameProperty,
            zr::kZRNicknameProperty, zr::kZRMaidenNameProperty, zr::kZRFirstNamePhoneticProperty,
            zr::kZRMiddleNamePhoneticProperty, zr::kZRLastNamePhoneticProperty}));
    return *names;
}

const Strings& ZRSearchElementHelper::AddressKeys()
{
    static const NeverDestroyed<const Strings> keys(
        strings({zr::kZRAddressStreetKey, zr::kZRAddressCityKey, zr::kZRAddressStateKey, zr::kZRAddressZIPKey,
            zr::kZRAddressCountryKey, zr::kZRAddressCountryCodeKey}));
    return *keys;
}

const Strings& ZRSearchElementHelper::IMProperties()
{
    static const NeverDestroyed<const Strings> services(
        strings({zr::kZRAIMInstantProperty, zr::kZRICQInstantProperty, zr::kZRYahooInstantProperty,
            zr::kZRMSNInstantProperty, zr::kZRJabberInstantProperty}));
    return *services;
}

Strings ZRSearchElementHelper::propertiesOfSearchElements(const std::vector<Ref<ZRSearchElement>>& elements)
{
    Strings properties;
    for (const auto& element : elements)
        if (const auto* match = asMatch(element); match && match->_searchProperty())
            properties.push_back(*match->_searchProperty());
    return properties;
}

Value ZRSearchElementHelper::nameValueForConjoinedSearchElement(
    const ZRSearchElement& element, ZRSearchComparison& comparison)
{
    const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element);
    if (!conjunction)
        return {};
    const auto& children = conjunction->_children();
    if (const auto* first = asMatch(children.front());
        first && propertiesOfSearchElements(children) == nameProperties()) {
        comparison = first->_comparison();
        return first->_value();
    }
    std::string names;
    for (const auto& child : children)
        if (const Value name = nameValueForConjoinedSearchElement(*child, comparison); name.isString())
            names.append(names.empty() ? "" : " ").append(name.asText());
    return names.empty() ? Value() : Value(names);
}

std::optional<ZRSearchRule> ZRSearchElementHelper::isSingleSearchElement(
    const ZRSearchElement& element, std::int64_t level)
{
    if (const auto* match = dynamic_cast<const ZRSearchElementMatch*>(&element))
        return ruleOf(*match);
    const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element);
    if (!conjunction)
        return {};
    if (auto rule = ruleOfFamily(*conjunction))
        return rule;
    return level > 0 || conjunction->isRuleGrouping() ? ruleOfNames(*conjunction) : std::nullopt;
}

void ZRSearchElementHelper::buildRepresentationFromSearchElement(
    const ZRSearchElement& element, ZRSearchRuleBuilder& builder, std::int64_t order, std::int64_t level)
{
    if (const auto rule = isSingleSearchElement(element, level))
        return builder.addRule(*rule, order, level);
    const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element);
    if (!conjunction)
        return;
    builder.beginList(conjunction->conjunction(), order, level);
    std::int64_t place = 0;
    for (const auto& child : conjunction->_children())
        buildRepresentationFromSearchElement(*child, builder, place++, level + 1);
    builder.endList(order, level);
}

ZRDateSpan ZRSearchElementHelper::calculateBestDateType(double seconds)
{
    for (const auto& [unit, length, tolerance] : units) {
        const double count = seconds / length, whole = std::round(count);
        if (count >= 1 && std::abs(count - whole) < tolerance)
            return {unit, whole};
    }
    return {ZRDateUnit::days, seconds / oneDay};
}
