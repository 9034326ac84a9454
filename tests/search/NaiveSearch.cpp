// Which records a search finds: trees, whole cards, groups, and the values of a property.
#include "search/NaiveQuestion.h"

#include "core/ZRGroup.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"

#include <algorithm>

namespace test {

namespace {

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
    return search.conjunction == kZRConjunctionAnd ? std::ranges::all_of(search.children, matchesChild)
                                                   : std::ranges::any_of(search.children, matchesChild);
}

bool NaiveSearch::matchesLeaf(const NaiveRecord& record, const Condition& condition, Differences differences,
    const Visited& visited) const
{
    Asked asked{.condition = condition,
        .differences = differences,
        .property = condition.property.value_or(""),
        .value = condition.value,
        .rule = ruleOf(condition.comparison),
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
    if (isOfGroups || (asked.rule.isMembership() && asked.differs(Difference::membershipOfOthers)))
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
        asked.rule.isTextNegation() && asked.condition.comparison != kZRNotEqualCaseInsensitive;
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
    const bool inverts = asked.rule.isMembership() && asked.rule.inverts;
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
    if (hasNoNote && asked.hasValue() && asked.rule.isNegation() && asked.differs(Difference::absentNote))
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
    return value.isDictionary() && asked.rule.isNegation() ? std::ranges::all_of(parts, holdsFor)
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
            return asked.rule.isNegation();
        return asked.condition.comparison == kZREqual
            || (asked.rule.isEquality() && asked.differs(Difference::noValue));
    }
    const auto holdsFor = [&](const NaiveEntry& entry) { return ofOne(entry.value, asked); };
    return asked.rule.isNegation() ? std::ranges::all_of(entries, holdsFor)
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
        return asked.rule.isNegation() ? std::ranges::all_of(rows, holdsFor)
                                       : std::ranges::any_of(rows, holdsFor);
    if (asked.rule.isTextNegation())
        return asked.hasLabel() ? !rows.empty() : std::ranges::any_of(rows, isPresent);
    if (!asked.rule.isEquality())
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
    const bool isAnyPart = asked.condition.comparison == kZRNotEqual
        || (asked.rule.test == kZRContainsSubString && !asked.rule.inverts);
    const bool joinsByOr = asked.hasValue() ? isAnyPart : asked.rule.isTextNegation();
    return joinsByOr ? std::ranges::any_of(kSearchedAddressParts, holdsForPart)
                     : std::ranges::all_of(kSearchedAddressParts, holdsForPart);
}

} // namespace test
