// The rules of a search, one after the other.
#include "search/NaiveSearch.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "platform/text/Compare.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"

#include <algorithm>
#include <cmath>

namespace test {

/// One comparison under the rules of one side.
struct NaiveSearch::Asked {
    const Condition& condition;
    Differences differences;
    std::string property;
    Value value;
    ZRSearchComparison comparison;
    bool isCustom = false;
    /// Which part of an address; absent for the whole of it and for everything else.
    std::optional<std::string> part = {};

    bool differs(Difference difference) const
    {
        return differences.test(static_cast<std::size_t>(difference));
    }
    bool hasLabel() const { return !condition.label.value_or("").empty(); }
    bool hasValue() const { return !value.isNothing(); }
    bool is(std::initializer_list<ZRSearchComparison> codes) const
    {
        return std::ranges::find(codes, comparison) != codes.end();
    }
    bool isTextNegation() const
    {
        return is({kZRNotEqual, kZRDoesNotContainSubString, kZRDoesNotContainSubStringCaseInsensitive,
            kZRNotEqualCaseInsensitive});
    }
    bool isNegation() const
    {
        return isTextNegation()
            || is({kZRNotWithinIntervalAroundToday, kZRNotWithinIntervalAroundTodayYearless,
                kZRNotWithinIntervalFromToday, kZRNotWithinIntervalFromTodayYearless});
    }
    /// Those that "no value" answers when nothing is asked for.
    bool isEquality() const
    {
        return is(
            {kZREqual, kZREqualCaseInsensitive, kZRContainsSubString, kZRContainsSubStringCaseInsensitive});
    }
    bool isDay() const
    {
        return property == zr::kZRBirthdayProperty || property == zr::kZROtherDatesProperty;
    }
};

namespace {

/// Nothing to ask for: the store takes an empty text for it too.
bool isNoValue(const Value& value)
{
    return value.isNothing() || (value.isString() && value.asText().empty());
}

bool isIntervalComparison(ZRSearchComparison comparison)
{
    return comparison >= kZRWithinIntervalAroundToday && comparison <= kZRNotWithinIntervalFromTodayYearless;
}

bool isYearless(ZRSearchComparison comparison)
{
    return comparison == kZRWithinIntervalAroundTodayYearless
        || comparison == kZRNotWithinIntervalAroundTodayYearless
        || comparison == kZRWithinIntervalFromTodayYearless
        || comparison == kZRNotWithinIntervalFromTodayYearless;
}

bool isFromToday(ZRSearchComparison comparison) { return comparison >= kZRWithinIntervalFromToday; }

bool isMembership(ZRSearchComparison comparison)
{
    return comparison == kZRMemberOfGroup || comparison == kZRNotMemberOfGroup;
}

bool isAnyGroup(const Value& value) { return value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty; }

bool isOneKind(const Value& a, const Value& b)
{
    return (a.isString() && b.isString()) || (a.isNumber() && b.isNumber()) || (a.isDate() && b.isDate())
        || (a.isData() && b.isData());
}

Value valueOf(const NaiveRecord& record, std::string_view property)
{
    const auto at = record.values.find(property);
    return at == record.values.end() ? Value() : at->second;
}

std::vector<NaiveEntry> entriesOf(const NaiveRecord& record, std::string_view property)
{
    const auto at = record.entries.find(property);
    return at == record.entries.end() ? std::vector<NaiveEntry>() : at->second;
}

/// The elements or parts of a value that has several; the value itself otherwise.
std::vector<Value> partsOf(const Value& value)
{
    if (value.isArray())
        return value.asArray();
    if (!value.isDictionary())
        return {value};
    std::vector<Value> parts;
    for (const auto& [key, part] : value.asDictionary()->entries())
        parts.push_back(part);
    return parts;
}

std::weak_ordering orderOf(const Value& a, const Value& b)
{
    const auto order = [](const auto& left, const auto& right) {
        return left < right ? std::weak_ordering::less
            : right < left  ? std::weak_ordering::greater
                            : std::weak_ordering::equivalent;
    };
    if (a.isDate())
        return order(a.asDate(), b.asDate());
    return a.isData() ? order(a.asBytes(), b.asBytes()) : order(a.asReal(), b.asReal());
}

bool isOrdered(std::weak_ordering order, ZRSearchComparison comparison)
{
    switch (comparison) {
    case kZREqual:
    case kZREqualCaseInsensitive:
        return order == 0;
    case kZRLessThan:
        return order < 0;
    case kZRLessThanOrEqual:
        return order <= 0;
    case kZRGreaterThan:
        return order > 0;
    case kZRGreaterThanOrEqual:
        return order >= 0;
    default:
        return false;
    }
}

/// The comparison that a negative one inverts.
ZRSearchComparison positiveOf(ZRSearchComparison comparison)
{
    switch (comparison) {
    case kZRNotEqual:
        return kZREqual;
    case kZRNotEqualCaseInsensitive:
        return kZREqualCaseInsensitive;
    case kZRDoesNotContainSubString:
        return kZRContainsSubString;
    case kZRDoesNotContainSubStringCaseInsensitive:
        return kZRContainsSubStringCaseInsensitive;
    default:
        return comparison;
    }
}

/// Whether a part of the text is there: anywhere, at its beginning, at its end.
bool containsText(std::string_view text, std::string_view part, ZRSearchComparison comparison)
{
    switch (comparison) {
    case kZRPrefixMatch:
    case kZRPrefixMatchCaseInsensitive:
        return text.starts_with(part);
    case kZRSuffixMatch:
    case kZRSuffixMatchCaseInsensitive:
        return text.ends_with(part);
    default:
        return text.find(part) != std::string_view::npos;
    }
}

bool ignoresCase(ZRSearchComparison comparison)
{
    return comparison == kZREqualCaseInsensitive || comparison == kZRContainsSubStringCaseInsensitive
        || comparison == kZRPrefixMatchCaseInsensitive || comparison == kZRSuffixMatchCaseInsensitive;
}

platform::FoldOptions foldOf(ZRSearchComparison comparison, const Condition& condition)
{
    if (!ignoresCase(comparison))
        return platform::kFoldNothing;
    return condition.ignoresDiacritics ? platform::kFoldCaseAndDiacritics : platform::kFoldCase;
}

unsigned optionsOf(platform::FoldOptions fold)
{
    return (fold & platform::kFoldCase ? platform::kCompareCaseInsensitive : 0U)
        | (fold & platform::kFoldDiacritics ? platform::kCompareDiacriticInsensitive : 0U);
}

constexpr double kDay = 86400;

/// How many days the day of 1976 (a leap year) is behind 1 January; of other years, before or after it.
double dayIn1976(platform::CalendarDay day, int year)
{
    const bool isSkipped = day.month == 2 && day.day == 29 && year != 1976;
    const platform::CalendarDay there =
        isSkipped ? platform::CalendarDay{year, 3, 1} : platform::CalendarDay{year, day.month, day.day};
    return (platform::noonOf(there, platform::TimeZone::gmt())->seconds - platform::startOfYear(1976).seconds)
        / kDay;
}

} // namespace

// ---- the tree

bool NaiveSearch::asksFor(const Condition& search, Kind kind)
{
    if (search.children.empty())
        return search.ofPeople == (kind == Kind::person);
    return std::ranges::any_of(search.children, [&](const auto& child) { return asksFor(child, kind); });
}

NaiveSearch::Ids NaiveSearch::found(const Condition& search, Differences differences) const
{
    Ids ids;
    for (const auto& [id, record] : _roster.records)
        if (asksFor(search, record.kind) && matches(record, search, differences, {}))
            ids.insert(id);
    return ids;
}

bool NaiveSearch::matchesInMemory(const NaiveRecord& record, const Condition& search) const
{
    return matches(record, search, {}, {});
}

bool NaiveSearch::matchesInStore(const NaiveRecord& record, const Condition& search) const
{
    const bool isAsked = !whyUnasked(search, record.kind, {});
    return matches(record, search, isAsked ? Differences().set() : Differences(), {});
}

NaiveSearch::Differences NaiveSearch::causes(const NaiveRecord& record, const Condition& search) const
{
    const bool inMemory = matches(record, search, {}, {});
    Differences causes;
    for (std::size_t i = 0; i < causes.size(); ++i)
        causes.set(i, matches(record, search, Differences().set(i), {}) != inMemory);
    return causes;
}

bool NaiveSearch::matches(
    const NaiveRecord& record, const Condition& search, Differences differences, const Visited& visited) const
{
    const auto matchesChild = [&](const Condition& child) {
        return matches(record, child, differences, visited);
    };
    if (search.children.empty())
        return matchesLeaf(record, search, differences, visited);
    return search.conjunction == kZRSearchAnd ? std::ranges::all_of(search.children, matchesChild)
                                              : std::ranges::any_of(search.children, matchesChild);
}

bool NaiveSearch::matchesLeaf(const NaiveRecord& record, const Condition& condition, Differences differences,
    const Visited& visited) const
{
    Asked asked{.condition = condition,
        .differences = differences,
        .property = condition.property.value_or(""),
        .value = condition.value,
        .comparison = condition.comparison,
        .isCustom = test::isCustom(_roster, condition.property.value_or(""), record.kind)};
    const bool isOther = record.isPerson() != condition.ofPeople;
    if (asked.property.empty())
        return !(isOther && asked.differs(Difference::wholeCardOfOthers)) && wholeCard(record, asked);
    if (isOther)
        return false;
    if (asked.isDay() && asked.value.isDate()) {
        const auto local = platform::TimeZone::local();
        asked.value = Value(platform::noonOfSameDay(asked.value.asDate(), local, local));
    }
    const bool isOfGroups = asked.property == zr::kZRParentGroupsProperty;
    if (isOfGroups || (isMembership(asked.comparison) && asked.differs(Difference::membershipOfOthers)))
        return membership(record, asked, visited);
    if (asked.differs(Difference::emptyText) && isNoValue(asked.value))
        asked.value = Value();
    return ofProperty(record, asked);
}

// ---- whole cards

// The text of a card is kept folded. The store looks for a folded text in it, memory for the text as it is.
bool NaiveSearch::wholeCard(const NaiveRecord& record, const Asked& asked)
{
    const bool inverts =
        asked.is({kZRNotEqual, kZRDoesNotContainSubString, kZRDoesNotContainSubStringCaseInsensitive});
    const std::string card =
        record.isPerson() ? platform::foldCaseAndDiacritics(indexTextOf(record)) : std::string();
    const std::string_view text = asked.value.asText();
    if (!asked.value.isString() || (card.empty() && !asked.differs(Difference::cardWithoutText)))
        return inverts;
    if (text.empty())
        return !inverts;
    const bool folds = asked.differs(Difference::wholeCardText) || asked.condition.ignoresDiacritics;
    const std::string sought = folds ? platform::foldCaseAndDiacritics(text) : platform::foldCase(text);
    if (sought.empty() && !asked.differs(Difference::wholeCardText))
        return inverts;
    return (card.find(sought) != std::string::npos) != inverts;
}

// ---- membership

bool NaiveSearch::membership(const NaiveRecord& record, const Asked& asked, const Visited& visited) const
{
    const bool inverts = asked.comparison == kZRNotMemberOfGroup;
    if (!asked.hasValue() || (isNoValue(asked.value) && asked.differs(Difference::emptyText)))
        return false;
    const auto* group = asked.value.as<ZRGroup>();
    const std::string id = group ? group->uniqueId() : std::string();
    if (_roster.smartGroups.contains(id)) {
        const bool isMember = isInSmartGroup(record, id, asked, visited);
        const bool isOutside = asked.differs(Difference::notInSmartGroup) && record.parents.empty();
        return inverts ? !isMember || isOutside : isMember;
    }
    if (group)
        return isBelow(record, id) != inverts;
    if (!asked.differs(Difference::anyGroup))
        return record.parents.empty() == inverts;
    const bool isMember = isInAnyGroupOfStore(record, asked, visited);
    return inverts ? record.parents.empty() || !isMember : isMember;
}

bool NaiveSearch::isBelow(const NaiveRecord& record, const std::string& group) const
{
    if (!record.isPerson())
        return false;
    std::set<std::string> above;
    std::vector<std::string> next(record.parents.begin(), record.parents.end());
    while (!next.empty()) {
        const std::string id = next.back();
        next.pop_back();
        if (!above.insert(id).second)
            continue;
        const auto& parents = _roster.records.at(id).parents;
        next.insert(next.end(), parents.begin(), parents.end());
    }
    return above.contains(group);
}

// A group that is being looked into already counts as empty.
bool NaiveSearch::isInSmartGroup(
    const NaiveRecord& record, const std::string& group, const Asked& asked, const Visited& visited) const
{
    Visited inside = visited;
    return inside.insert(group).second
        && matches(record, _roster.smartGroups.at(group), asked.differences, inside);
}

bool NaiveSearch::isInAnyGroupOfStore(
    const NaiveRecord& record, const Asked& asked, const Visited& visited) const
{
    if (!record.parents.empty())
        return true;
    return std::ranges::any_of(_roster.smartGroups, [&](const auto& group) {
        return !isAnyGroup(group.second.value) && isInSmartGroup(record, group.first, asked, visited);
    });
}

// ---- values

bool NaiveSearch::ofProperty(const NaiveRecord& record, const Asked& asked) const
{
    const bool isPlainGroup = typeOf(_roster, asked.property, Kind::group) != kZRPropertyTypeUnknown;
    const Kind table = record.isPerson() || !isPlainGroup ? record.kind : Kind::group;
    if (zrIsMultiValueType(typeOf(_roster, asked.property, table)))
        return ofEntries(entriesOf(record, asked.property), asked);

    Value value = valueOf(record, asked.property);
    if (asked.property == zr::kZRModificationDateProperty && value.isNothing())
        value = valueOf(record, zr::kZRCreationDateProperty);
    if (asked.isCustom && asked.differs(Difference::customRows))
        return ofRows(
            value.isNothing() ? std::vector<NaiveEntry>() : std::vector<NaiveEntry>{{"", value}}, asked);
    constexpr std::int64_t mark = 128;
    if (asked.property == zr::kZRPersonFlags && record.isOfLastImport
        && asked.differs(Difference::importMark))
        value = Value(value.asInteger() | mark);
    const bool hasNoNote = asked.property == zr::kZRNoteProperty && value.isNothing() && !record.hasEmptyNote;
    if (hasNoNote && asked.hasValue() && asked.isNegation() && asked.differs(Difference::absentNote))
        return false;
    return ofOne(value, asked);
}

/// A value that may have several parts: an array is hit by any element; of a dictionary the part asked for,
/// or any part, and none for a negative comparison.
bool NaiveSearch::ofOne(const Value& value, const Asked& asked) const
{
    const bool isBare = asked.condition.key.value_or("").empty();
    if (value.isDictionary() && !isBare)
        return ofEntry(value[*asked.condition.key], asked);
    const auto holdsFor = [&](const Value& part) { return ofEntry(part, asked); };
    const auto parts = partsOf(value);
    return value.isDictionary() && asked.isNegation() ? std::ranges::all_of(parts, holdsFor)
                                                      : std::ranges::any_of(parts, holdsFor);
}

// With a label memory looks at the first entry of that label, the store at all of them.
bool NaiveSearch::ofEntries(const std::vector<NaiveEntry>& entries, const Asked& asked) const
{
    const bool isAddress = asked.property == zr::kZRAddressProperty;
    const bool isWhole = isAddress && asked.condition.key.value_or("").empty() && !asked.part;
    if (isWhole && asked.differs(Difference::wholeAddress))
        return ofAddressesInStore(entries, asked);
    if (asked.hasLabel()) {
        if (asked.differs(Difference::labels))
            return ofRows(entries, asked);
        const auto first = std::ranges::find(entries, *asked.condition.label, &NaiveEntry::label);
        return first == entries.end() ? ofEntry(Value(), asked) : ofOne(first->value, asked);
    }
    const bool isOfPart = isAddress && !isWhole;
    if (isOfPart && !asked.hasValue() && asked.differs(Difference::missingAddressParts))
        return ofRows(entries, asked);
    if (entries.empty()) {
        if (asked.hasValue())
            return asked.isNegation();
        return asked.comparison == kZREqual || (asked.isEquality() && asked.differs(Difference::noValue));
    }
    const auto holdsFor = [&](const NaiveEntry& entry) { return ofOne(entry.value, asked); };
    return asked.isNegation() ? std::ranges::all_of(entries, holdsFor)
                              : std::ranges::any_of(entries, holdsFor);
}

/// How the store looks at the rows of a property: some fulfil a comparison, or none its contrary.
bool NaiveSearch::ofRows(const std::vector<NaiveEntry>& entries, const Asked& asked) const
{
    std::vector<Value> rows;
    for (const auto& [label, value] : entries)
        if (!asked.hasLabel() || label == *asked.condition.label) {
            const auto& part = asked.part ? asked.part : asked.condition.key;
            rows.push_back(part && value.isDictionary() ? value[*part] : value);
        }
    const auto isPresent = [](const Value& value) { return !value.isNothing(); };
    const auto holdsFor = [&](const Value& value) { return ofEntry(value, asked); };
    if (asked.hasValue())
        return asked.isNegation() ? std::ranges::all_of(rows, holdsFor) : std::ranges::any_of(rows, holdsFor);
    if (asked.isTextNegation())
        return asked.hasLabel() ? !rows.empty() : std::ranges::any_of(rows, isPresent);
    if (!asked.isEquality())
        return false;
    return asked.hasLabel() ? rows.empty() || !std::ranges::all_of(rows, isPresent)
                            : std::ranges::none_of(rows, isPresent);
}

/// The store asks for each part of the addresses by itself.
bool NaiveSearch::ofAddressesInStore(const std::vector<NaiveEntry>& entries, const Asked& asked) const
{
    const auto holdsForPart = [&](std::string_view part) {
        Asked ofPart = asked;
        ofPart.part = part;
        return ofRows(entries, ofPart);
    };
    const bool joinsByOr = asked.hasValue()
        ? asked.is({kZRNotEqual, kZRContainsSubString, kZRContainsSubStringCaseInsensitive})
        : asked.isTextNegation();
    return joinsByOr ? std::ranges::any_of(kSearchedAddressParts, holdsForPart)
                     : std::ranges::all_of(kSearchedAddressParts, holdsForPart);
}

/// One value, or none.
bool NaiveSearch::ofEntry(const Value& value, const Asked& asked) const
{
    if (asked.comparison == kZRBitsInBitFieldMatch) {
        const std::int64_t bits = value.asInteger(), sought = asked.value.asInteger();
        constexpr std::int64_t showAs = 7, nameOrder = 56;
        if (!asked.value.isNumber() || !(value.isNothing() || value.isNumber()))
            return false;
        if (asked.property == zr::kZRPersonFlags)
            return (bits & (sought > 1 ? nameOrder : showAs)) == sought;
        return (bits & sought) == sought;
    }
    if (value.isNothing() && !asked.hasValue())
        return asked.isEquality();
    if (value.isNothing() || !asked.hasValue())
        return asked.isTextNegation();
    return holds(value, asked);
}

bool NaiveSearch::holds(const Value& value, const Asked& asked) const
{
    if (isIntervalComparison(asked.comparison))
        return isWithin(value, asked);
    if (value.isData() && !asked.differs(Difference::data))
        return false;
    if (!isOneKind(value, asked.value))
        return asked.isTextNegation() && asked.differs(Difference::otherKinds);
    const auto comparison = positiveOf(asked.comparison);
    if (isMembership(comparison))
        return false;
    const bool inverts = asked.isTextNegation();
    if (!value.isString())
        return isOrdered(orderOf(value, asked.value), comparison) != inverts;
    const bool isOfWholes = comparison <= kZREqualCaseInsensitive;
    const auto holdsFor = isOfWholes ? holdsText : holdsPart;
    return holdsFor(value.asText(), asked.value.asText(), comparison, asked) != inverts;
}

/// Equality and order.
bool NaiveSearch::holdsText(
    std::string_view text, std::string_view sought, ZRSearchComparison comparison, const Asked& asked)
{
    const auto fold = foldOf(comparison, asked.condition);
    if (asked.property == zr::kZREmailProperty && comparison == kZREqualCaseInsensitive) {
        if (asked.differs(Difference::emailEquality))
            return platform::foldCaseAndDiacritics(text) == platform::foldCaseAndDiacritics(sought);
    } else if (asked.differs(Difference::localizedComparison)) {
        return isOrdered(
            platform::transformed(text, fold) <=> platform::transformed(sought, fold), comparison);
    }
    return isOrdered(
        platform::compare(text, sought, optionsOf(fold) | platform::kCompareLocalized), comparison);
}

// Memory takes a part that is found in a text for there only if it is as long as what was sought.
bool NaiveSearch::holdsPart(
    std::string_view text, std::string_view sought, ZRSearchComparison comparison, const Asked& asked)
{
    const auto fold = foldOf(comparison, asked.condition);
    const bool isContained =
        comparison == kZRContainsSubString || comparison == kZRContainsSubStringCaseInsensitive;
    const std::string folded = platform::transformed(sought, fold);
    if (sought.empty())
        return isContained;
    if (folded.empty() && !asked.differs(Difference::foldedToNothing))
        return false;
    if (isContained && !folded.empty() && !asked.differs(Difference::foundLength)) {
        const auto found = platform::rangeOf(sought, text, optionsOf(fold));
        return found && platform::utf16Length(found->of(text)) == platform::utf16Length(sought);
    }
    return containsText(platform::transformed(text, fold), folded, comparison);
}

// ---- days from today

bool NaiveSearch::isWithin(const Value& value, const Asked& asked) const
{
    if (!value.isDate() || !asked.value.isNumber())
        return false;
    const Date date = value.asDate();
    const Date stored = asked.isDay() ? platform::noonInGMTOfLocalDay(date) : date;
    const double interval = asked.value.asReal();
    bool isIn = false;
    if (isYearless(asked.comparison)) {
        isIn = asked.differs(Difference::yearCompanion) ? isWithinYearlessInStore(stored, asked)
                                                        : isWithinYearless(date, asked);
    } else {
        const Date compared = asked.differs(Difference::daysAtNoonGMT) ? stored : date;
        const double distance = compared.seconds - _now.seconds;
        const double measured = isFromToday(asked.comparison) ? distance : std::abs(distance);
        isIn = measured >= 0
            && (asked.differs(Difference::intervalEnds) ? measured <= interval : measured < interval);
    }
    return isIn != asked.isNegation();
}

/// Both days are taken to 1976; the nearer of the years around counts.
bool NaiveSearch::isWithinYearless(Date date, const Asked& asked) const
{
    const auto day = platform::calendarDayOf(date), today = platform::calendarDayOf(_now);
    if (!day || !today)
        return false;
    const double interval = asked.value.asReal();
    const double from = dayIn1976(*today, 1976), there = dayIn1976(*day, 1976);
    const double other = dayIn1976(*day, there < from ? 1977 : 1975);
    if (isFromToday(asked.comparison)) {
        const double ahead = ((there < from ? other : there) - from) * kDay;
        return ahead >= 0 && ahead < interval;
    }
    return std::min(std::abs(there - from), std::abs(other - from)) * kDay < interval;
}

/// The store keeps how long after the beginning of its year a date is; those of this year since New Year in
/// GMT, all others since New Year here.
double NaiveSearch::sinceNewYear(Date date) const
{
    const auto day = platform::calendarDayOf(date);
    const int year = day ? day->year : 1970;
    if (year == platform::yearOf(_now))
        return date.seconds - platform::startOfYear(year).seconds;
    return date.seconds - platform::dateOf({.day = {year, 1, 1}})->seconds;
}

bool NaiveSearch::isWithinYearlessInStore(Date stored, const Asked& asked) const
{
    const int year = platform::yearOf(_now).value_or(1970);
    const double length = platform::startOfYear(year + 1).seconds - platform::startOfYear(year).seconds;
    const bool isAhead = isFromToday(asked.comparison);
    const double interval = asked.value.asReal();
    if (interval >= length || (!isAhead && interval >= length / 2))
        return true;
    const Date base = asked.isDay() ? platform::noonInGMTOfLocalDay(_now) : _now;
    const double start = sinceNewYear({isAhead ? base.seconds : base.seconds - interval});
    const double end = sinceNewYear({base.seconds + interval});
    const double place = sinceNewYear(stored);
    return end > start ? start <= place && place <= end : start <= place || place <= end;
}

// ---- what the store cannot be asked

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
    const Asked asked{.condition = condition,
        .differences = {},
        .property = *condition.property,
        .value = condition.value,
        .comparison = condition.comparison};
    if (isNoValue(condition.value)) {
        if (!asked.isEquality() && !asked.isTextNegation())
            return std::nullopt;
    } else if (isMembership(condition.comparison)) {
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
    if (isIntervalComparison(condition.comparison)
        && (base != kZRPropertyTypeDate || !condition.value.isNumber()))
        return Unasked::noInterval;
    return std::nullopt;
}

} // namespace test
