// How the rules of a search are written on the command line: 'Property[.Key][;label] OPERATOR VALUE'.
#pragma once

#include "Command.h"

class ZRSearchElement;

/// The search element of one rule. Anything that is no rule raises a Failure with status 2 that says why.
///
/// - Property is a name as `roster show --json` prints it, in any case; "Card" is the whole card, "Group" the
///   groups that a card is in. Key is a part of an address ("Address.City").
/// - A label is one of the property's own in plain words ("home", "work") or a custom one.
/// - OPERATOR is one of `ruleOperators()`; "is absent" and "is present" take no value.
/// - VALUE is text, a number, a day (1970-05-01), an interval ("7 days", "2 weeks", "1 month", "1 year", or
///   seconds), or a group by name or id ("any" for any group); it may stand in double quotes.
platform::Ref<ZRSearchElement> elementOfRule(ZRRoster& roster, const std::string& rule);

/// What `search` and `smart-group` are asked: all terms and rules, or with --any one of the rules; null when
/// the options name none.
platform::Ref<ZRSearchElement> elementOfOptions(const Options& options, ZRRoster& roster);

/// The element as rules that `elementOfRule` reads, joined by "and" and "or".
std::string rulesOf(const ZRSearchElement& element);

/// An operator: how it is written and what it asks.
struct RuleOperator {
    std::string_view word;
    std::string_view meaning;
};
/// All that stand before a value; beside them there are "is absent" and "is present".
std::vector<RuleOperator> ruleOperators();
