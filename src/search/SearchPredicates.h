// What the parts of the conversion to predicates share: a comparison as the store is asked it.
#pragma once

#include "core/ZRTypes.h"
#include "objectstore/StorePredicate.h"
#include "platform/value/Value.h"

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRSearchElement;

/// What the conversion of `element` failed with goes to the log; its search goes through memory then.
void logFailedConversion(const ZRSearchElement& element, const std::exception& failure);

/// A comparison with its value, ready for the store: no value is absent, never an empty text.
struct SearchQuestion {
    ZRSearchComparison comparison = kZREqual;
    platform::Value value = {};
    /// How the case-insensitive comparisons treat texts: also without diacritics where the element says so.
    objectstore::TextOption caseOption = objectstore::TextOption::ignoringCase;
    /// Of a multi-value only entries of this label count.
    std::optional<std::string> label = std::nullopt;
    /// The days of birthdays and other dates are kept as noon GMT.
    bool isOfDays = false;
};

/// The comparisons with today, and of those the ones without the year.
bool isInterval(ZRSearchComparison comparison);
bool isYearless(ZRSearchComparison comparison);
/// Those that want nothing to match: no entry of a multi-value, no element of an array.
bool wantsNone(ZRSearchComparison comparison);

/// The test of a key by the positive form of the comparison (of "does not contain": "contains"): what is true
/// of some entry, or of none. Absent where the store has none: bits, membership, intervals that are none.
objectstore::PredicateRef positiveTest(const std::string& key, const SearchQuestion& question);

/// The positive form of a comparison with today, on the companion of the date that counts from the beginning
/// of its year: the interval may go over New Year. An interval of a whole year holds every date.
objectstore::PredicateRef _predicateForYearlessSearchOnDatePropertyKeyPath(
    const std::string& keyPath, bool futureOnly, bool isOfDays, double searchValue);

/// A condition on the rows of a to-many relationship.
struct RowSearch {
    std::string relationship;
    std::string key;
    /// What tells the rows in question from others of the relationship.
    objectstore::PredicateRef kind = nullptr;
};

/// Whether rows of the label answer the question: some of them, or none for a negative comparison.
objectstore::PredicateRef rowsPredicate(const RowSearch& rows, const SearchQuestion& question);
