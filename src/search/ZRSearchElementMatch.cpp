// What a comparison says of itself: its making, its kind, its text, and the groups that it names.
#include "search/ZRSearchElementMatch.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/run/Clock.h"
#include "platform/text/Dates.h"
#include "search/SearchedGroups.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <array>

using platform::Ref;
using platform::Value;

namespace {

using Text = ZRSearchElementMatch::Text;

/// How a comparison reads, by its code.
constexpr std::array<std::string_view, 27> comparisonTexts{" == ", " != ", " < ", " <= ", " > ",
    " >= ", " .equal case insensitive. ", " .contains substring. ", " .contains substring insensitive. ",
    " .prefix. ", " .prefix insensitive. ", " .bits in bit field match. ", " .does not contain substring. ",
    " .does not contain substring insensitive. ", " .not equal case insensitive. ", " .suffix. ",
    " .suffix insensitive. ", " .within interval around today. ", " .within interval around today yearless. ",
    " .not within interval around today. ", " .not within interval around today yearless. ",
    " .within interval from today. ", " .within interval from today yearless. ",
    " .not within interval from today. ", " .not within interval from today yearless. ", "member",
    "not member"};

std::string comparisonText(ZRSearchComparison code)
{
    if (code < 0 || static_cast<std::size_t>(code) >= comparisonTexts.size())
        return fmt::format(" .{}. ", code);
    const auto text = comparisonTexts[static_cast<std::size_t>(code)];
    return text.starts_with(' ') ? std::string(text) : fmt::format(" {} ", text);
}

Text copied(ZRSearchElementMatch::TextView text) { return text ? Text(*text) : Text(); }

bool isMembership(ZRSearchComparison comparison)
{
    return comparison == kZRMemberOfGroup || comparison == kZRNotMemberOfGroup;
}

} // namespace

Ref<ZRSearchElementMatch> ZRSearchElementMatch::initWithProperty(TextView property, TextView label,
    TextView key, const Value& value, bool searchPeople, ZRSearchComparison comparison)
{
    return initWithProperty(property, label, key, value, searchPeople, false, comparison);
}

Ref<ZRSearchElementMatch> ZRSearchElementMatch::initWithProperty(TextView property, TextView label,
    TextView key, const Value& value, bool searchPeople, bool searchSubscribed, ZRSearchComparison comparison)
{
    auto element = platform::makeRef<ZRSearchElementMatch>(Definition{.property = copied(property),
        .label = copied(label),
        .key = copied(key),
        .searchPeople = searchPeople,
        .searchSubscribed = searchSubscribed,
        .comparison = comparison});
    element->setSearchValue(value);
    return element;
}

void ZRSearchElementMatch::setSearchValue(const Value& value)
{
    const std::string property = _propertyOrEmpty();
    const bool isDay = property == zr::kZRBirthdayProperty || property == zr::kZROtherDatesProperty;
    const auto local = platform::TimeZone::local();
    _definition.value =
        value.isDate() && isDay ? Value(platform::noonOfSameDay(value.asDate(), local, local)) : value;
}

bool ZRSearchElementMatch::isWholeCard() const { return _propertyOrEmpty().empty(); }

bool ZRSearchElementMatch::isSimpleSearch() const
{
    return !_definition.property && !_definition.label && !_definition.key;
}

bool ZRSearchElementMatch::_isNegation() const
{
    return _definition.comparison == kZRNotEqual || _definition.comparison == kZRDoesNotContainSubString
        || _definition.comparison == kZRDoesNotContainSubStringCaseInsensitive;
}

std::vector<const ZRRecordClass*> ZRSearchElementMatch::searchRecordClasses() const
{
    if (_definition.searchPeople)
        return {_definition.searchSubscribed ? &ZRSubscribedPerson::recordClassDescription
                                             : &ZRPerson::recordClassDescription};
    if (_definition.searchSubscribed)
        return {&ZRSubscribedGroup::recordClassDescription};
    return {&ZRGroup::recordClassDescription, &ZRSmartGroup::recordClassDescription};
}

Value ZRSearchElementMatch::_withinDate() const
{
    const auto comparison = _definition.comparison;
    if (comparison < kZRWithinIntervalAroundToday || comparison > kZRNotWithinIntervalAroundTodayYearless)
        return {};
    return Value(platform::Date{platform::Clock::current().now() - _definition.value.asReal()});
}

std::vector<Ref<ZRGroup>> ZRSearchElementMatch::groupsUsedInDefinition() const
{
    Ref<ZRGroup> group(_definition.value.as<ZRGroup>());
    if (!group || !_definition.searchPeople || !isMembership(_definition.comparison))
        return {};
    return {std::move(group)};
}

bool ZRSearchElementMatch::usesGroupInDefinition(const ZRGroup& group) const
{
    const auto* named = _definition.value.asObject();
    return _definition.searchPeople && named && named->isEqual(group);
}

bool ZRSearchElementMatch::isReferencingGroup(const ZRGroup& group) const
{
    const Ref<ZRGroup> named(_definition.value.as<ZRGroup>());
    if (!named)
        return false;
    if (named->uniqueId() == group.uniqueId())
        return true;
    if (!named->recordClass().isKindOf(ZRSmartGroup::recordClassDescription))
        return false;
    const SmartGroupSearches kept;
    if (!SmartGroupSearches::ofThisThread()->isFirstLook(named->uniqueId(), group.uniqueId()))
        return false;
    const SmartGroupVisit visit(named->uniqueId());
    if (!visit.isEntered())
        return false;
    const auto element =
        locked(*named->roster(), ZRAccess::read, [&]() ZR_NTS { return nts_searchOfSmartGroup(*named); });
    return element && element->isReferencingGroup(group);
}

bool ZRSearchElementMatch::isEqual(const platform::Object& other) const
{
    if (!ZRSearchElement::isEqual(other))
        return false;
    const auto& definition = static_cast<const ZRSearchElementMatch&>(other)._definition;
    return _definition.property == definition.property && _definition.label == definition.label
        && _definition.key == definition.key && _definition.comparison == definition.comparison;
}

std::size_t ZRSearchElementMatch::hash() const
{
    const std::hash<Text> hashed;
    return ZRSearchElement::hash() ^ hashed(_definition.property) * 3 ^ hashed(_definition.label) * 5
        ^ hashed(_definition.key) * 7 ^ static_cast<std::size_t>(_definition.comparison) * 11;
}

std::string ZRSearchElementMatch::description() const
{
    std::string text = _definition.property.value_or("(whole card)");
    if (_definition.label)
        text += fmt::format(" [{}]", *_definition.label);
    if (_definition.key)
        text += fmt::format(" {{{}}}", *_definition.key);
    return text + comparisonText(_definition.comparison) + _definition.value.description();
}

std::int64_t ZRSearchElementMatch::encodingVersion() const
{
    const std::string property = _propertyOrEmpty();
    const bool isMembershipSearch =
        property == zr::kZRParentGroupsProperty || property == zr::kZRSmartGroupAnyGroupMembershipProperty;
    constexpr std::int64_t knowsMembership = 105;
    return isMembershipSearch ? knowsMembership : baseVersion();
}
