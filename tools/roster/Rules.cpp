// How a rule of the command line becomes a search element, and the reverse.
#include "Rules.h"

#include "Lookup.h"
#include "Subject.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRPerson.h"
#include "platform/text/Dates.h"
#include "platform/text/Fold.h"
#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

using platform::Ref;
using platform::Value;

namespace {

struct Operator {
    std::string_view word;
    ZRSearchComparison comparison;
    std::string_view meaning;
};

constexpr std::array operators{
    Operator{"=", kZREqualCaseInsensitive, "is that text, in any case"},
    Operator{"!=", kZRNotEqualCaseInsensitive, "is not that text, in any case"},
    Operator{"==", kZREqual, "is exactly that text, number or day"},
    Operator{"!==", kZRNotEqual, "is not exactly that"},
    Operator{"<", kZRLessThan, "comes before it"},
    Operator{"<=", kZRLessThanOrEqual, "comes before it, or is it"},
    Operator{">", kZRGreaterThan, "comes behind it"},
    Operator{">=", kZRGreaterThanOrEqual, "comes behind it, or is it"},
    Operator{"contains", kZRContainsSubStringCaseInsensitive, "has the text in it, in any case"},
    Operator{"lacks", kZRDoesNotContainSubStringCaseInsensitive, "does not"},
    Operator{"begins", kZRPrefixMatchCaseInsensitive, "begins with the text, in any case"},
    Operator{"ends", kZRSuffixMatchCaseInsensitive, "ends with the text, in any case"},
    Operator{"contains-exactly", kZRContainsSubString, "has just that text in it"},
    Operator{"lacks-exactly", kZRDoesNotContainSubString, "does not"},
    Operator{"begins-exactly", kZRPrefixMatch, "begins with just that text"},
    Operator{"ends-exactly", kZRSuffixMatch, "ends with just that text"},
    Operator{"has-bits", kZRBitsInBitFieldMatch, "has the bits of that number"},
    Operator{"within", kZRWithinIntervalAroundToday, "is at most so far from now"},
    Operator{"not-within", kZRNotWithinIntervalAroundToday, "is not"},
    Operator{"within-next", kZRWithinIntervalFromToday, "comes in that time from now"},
    Operator{"not-within-next", kZRNotWithinIntervalFromToday, "does not"},
    Operator{"recurs-within", kZRWithinIntervalAroundTodayYearless, "its day of the year is so near"},
    Operator{"not-recurs-within", kZRNotWithinIntervalAroundTodayYearless, "is not"},
    Operator{
        "recurs-within-next", kZRWithinIntervalFromTodayYearless, "its day of the year comes in that time"},
    Operator{"not-recurs-within-next", kZRNotWithinIntervalFromTodayYearless, "does not"},
    Operator{"member-of", kZRMemberOfGroup, "is in that group or one below it"},
    Operator{"not-member-of", kZRNotMemberOfGroup, "is not"},
};

struct Unit {
    std::string_view word;
    double seconds;
};

/// A second longer than the calendar's, as in every rule that a group keeps: so they are told from days.
constexpr std::array units{Unit{"second", 1}, Unit{"day", 86400}, Unit{"week", 604801},
    Unit{"month", 2678401}, Unit{"year", 31536001}};

constexpr std::string_view wholeCard = "Card";
constexpr std::string_view anyGroup = "any";

std::string placeOf(const std::string& rule) { return fmt::format("--where '{}'", rule); }

[[noreturn]] void refuse(const std::string& rule, std::string_view why)
{
    throw Failure(exitStatus::usage, fmt::format("{}: {}", placeOf(rule), why));
}

/// A rule in its pieces, as texts.
struct Pieces {
    std::string subject;
    std::string word;
    std::string value;
};

std::string_view trimmed(std::string_view text)
{
    const auto from = std::min(text.find_first_not_of(" \t"), text.size());
    const auto to = text.find_last_not_of(" \t");
    return to == std::string_view::npos ? std::string_view() : text.substr(from, to + 1 - from);
}

std::string unquoted(std::string_view text)
{
    const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return std::string(isQuoted ? text.substr(1, text.size() - 2) : text);
}

bool isOperator(std::string_view word)
{
    return word == "is" || std::ranges::find(operators, word, &Operator::word) != operators.end();
}

/// The first word that is an operator, but not the first of all, parts the rule.
Pieces piecesOf(const std::string& rule)
{
    const std::string_view text = rule;
    for (std::size_t from = text.find(' '); from < text.size();) {
        from = text.find_first_not_of(' ', from);
        const auto to = std::min(text.find(' ', from), text.size());
        if (from < text.size() && isOperator(text.substr(from, to - from)))
            return {std::string(trimmed(text.substr(0, from))), std::string(text.substr(from, to - from)),
                unquoted(trimmed(text.substr(to)))};
        from = to;
    }
    refuse(rule, "wants PROPERTY OPERATOR VALUE; see roster search --help");
}

/// "7 days", "1 week" or seconds.
Value intervalOf(const std::string& rule, const std::string& text)
{
    const auto blank = text.find(' ');
    if (blank == std::string::npos)
        return valueOfText(kZRPropertyTypeReal, text, placeOf(rule));
    std::string word(trimmed(std::string_view(text).substr(blank)));
    if (word.ends_with('s'))
        word.pop_back();
    const auto* const unit = std::ranges::find(units, word, &Unit::word);
    if (unit == units.end())
        refuse(rule, fmt::format("'{}' is no interval; write one as 7 days", text));
    return Value(
        valueOfText(kZRPropertyTypeReal, text.substr(0, blank), placeOf(rule)).asReal() * unit->seconds);
}

bool isInterval(ZRSearchComparison comparison)
{
    return comparison >= kZRWithinIntervalAroundToday && comparison <= kZRNotWithinIntervalFromTodayYearless;
}

Value valueOf(
    const std::string& rule, const Subject& subject, ZRSearchComparison comparison, const std::string& text)
{
    if (isInterval(comparison))
        return intervalOf(rule, text);
    const auto type = zrBaseType(subject.type);
    const bool isTyped =
        type == kZRPropertyTypeInteger || type == kZRPropertyTypeReal || type == kZRPropertyTypeDate;
    return valueOfText(isTyped ? type : ZRPropertyType{kZRPropertyTypeString}, text, placeOf(rule));
}

Ref<ZRSearchElement> match(
    std::string_view property, const Subject& subject, const Value& value, ZRSearchComparison comparison)
{
    const auto given = [](const std::string& text) {
        return text.empty() ? std::optional<std::string_view>() : std::optional<std::string_view>(text);
    };
    return ZRPerson::searchElementForProperty(property.empty() ? std::nullopt : std::optional(property),
        given(subject.label), given(subject.key), value, comparison);
}

Ref<ZRSearchElement> groupRule(
    ZRRoster& roster, const std::string& rule, const std::string& name, ZRSearchComparison comparison)
{
    if (comparison != kZRMemberOfGroup && comparison != kZRNotMemberOfGroup)
        refuse(rule, "of groups one asks member-of or not-member-of");
    const Value group = name == anyGroup ? Value(zr::kZRSmartGroupAnyGroupMembershipProperty)
                                         : Value(groupNamed(roster, name));
    return match(zr::kZRParentGroupsProperty, {}, group, comparison);
}

// ---- the reverse

std::string intervalText(double seconds)
{
    // Each unit is longer than the ones before it, so the last that fits is the one that was written.
    for (auto unit = units.rbegin(); unit != units.rend(); ++unit)
        if (const double count = seconds / unit->seconds; count >= 1 && count == std::floor(count))
            return fmt::format("{} {}{}", count, unit->word, count == 1 ? "" : "s");
    return fmt::format("{}", seconds);
}

std::string valueText(const ZRSearchElementMatch& match)
{
    const Value& value = match._value();
    if (const auto* group = value.as<ZRGroup>())
        return fmt::format("\"{}\"", group->name());
    if (value.isString() && value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty)
        return std::string(anyGroup);
    if (isInterval(match._comparison()) && value.isNumber())
        return intervalText(value.asReal());
    if (const auto day = value.isDate() ? platform::calendarDayOf(value.asDate()) : std::nullopt)
        return platform::iso8601(*day);
    return value.isString() ? fmt::format("\"{}\"", value.asText()) : value.description();
}

std::string subjectText(const ZRSearchElementMatch& match)
{
    const std::string property = match._searchProperty().value_or("");
    if (property.empty())
        return std::string(wholeCard);
    if (property == zr::kZRParentGroupsProperty)
        return "Group";
    std::string text = property;
    if (match._key())
        text += "." + *match._key();
    if (match._label())
        text += ";" + ZRLocalizedPropertyOrLabel(*match._label());
    return text;
}

std::string ruleOf(const ZRSearchElementMatch& match)
{
    const bool isBare = match._value().isNothing();
    if (isBare && (match._comparison() == kZREqual || match._comparison() == kZRNotEqual))
        return fmt::format(
            "{} is {}", subjectText(match), match._comparison() == kZREqual ? "absent" : "present");
    const auto* const entry = std::ranges::find(operators, match._comparison(), &Operator::comparison);
    return fmt::format(
        "{} {} {}", subjectText(match), entry == operators.end() ? "?" : entry->word, valueText(match));
}

} // namespace

Ref<ZRSearchElement> elementOfRule(ZRRoster& roster, const std::string& rule)
{
    const Pieces pieces = piecesOf(rule);
    if (pieces.word == "is") {
        const bool isPresent = pieces.value == "present";
        if (!isPresent && pieces.value != "absent")
            refuse(rule, "behind 'is' stands absent or present; for values write =");
        const Subject subject = subjectOf(roster, pieces.subject, placeOf(rule));
        return match(subject.property, subject, {}, isPresent ? kZRNotEqual : kZREqual);
    }
    const auto comparison = std::ranges::find(operators, pieces.word, &Operator::word)->comparison;
    if (pieces.subject == "Group")
        return groupRule(roster, rule, pieces.value, comparison);
    if (comparison == kZRMemberOfGroup || comparison == kZRNotMemberOfGroup)
        refuse(rule, "only Group is asked so");
    if (pieces.subject != wholeCard) {
        const Subject subject = subjectOf(roster, pieces.subject, placeOf(rule));
        return match(subject.property, subject, valueOf(rule, subject, comparison, pieces.value), comparison);
    }
    if (comparison != kZRContainsSubStringCaseInsensitive
        && comparison != kZRDoesNotContainSubStringCaseInsensitive)
        refuse(rule, "of the whole card one asks contains or lacks");
    return match({}, {}, Value(pieces.value), comparison);
}

Ref<ZRSearchElement> elementOfOptions(const Options& options, ZRRoster& roster)
{
    using Elements = std::vector<Ref<ZRSearchElement>>;
    Elements all, rules;
    for (const auto& term : options.words)
        all.push_back(match({}, {}, Value(term), kZRContainsSubStringCaseInsensitive));
    if (!options.first.empty())
        all.push_back(
            match(zr::kZRFirstNameProperty, {}, Value(options.first), kZRPrefixMatchCaseInsensitive));
    for (const auto& rule : options.rules)
        rules.push_back(elementOfRule(roster, rule));
    if (options.any && !rules.empty())
        rules = {ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, rules)};
    all.insert(all.end(), rules.begin(), rules.end());
    return all.empty() ? nullptr : ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, all);
}

std::string rulesOf(const ZRSearchElement& element)
{
    if (const auto* match = dynamic_cast<const ZRSearchElementMatch*>(&element))
        return ruleOf(*match);
    const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element);
    std::string text;
    for (const auto& child :
        conjunction ? conjunction->_children() : ZRSearchElementConjunction::Children()) {
        const bool isNested = dynamic_cast<const ZRSearchElementConjunction*>(child.get());
        text += text.empty() ? "" : conjunction->conjunction() == kZRConjunctionAnd ? " and " : " or ";
        text += isNested ? "(" + rulesOf(*child) + ")" : rulesOf(*child);
    }
    return text;
}

std::vector<RuleOperator> ruleOperators()
{
    std::vector<RuleOperator> all;
    for (const auto& entry : operators)
        all.push_back({entry.word, entry.meaning});
    return all;
}
