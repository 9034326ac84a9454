// What does a text test say about the trigram index, before any row is read?
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"

#include <functional>
#include <optional>
#include <string>

namespace objectstore {

/// A full-text query that the entry of every object fulfils for which the test of that slot is true. Absent
/// when the test says nothing of the kind: it is no positive test of a text, the text is too short once it is
/// folded, or the slot neither is indexed nor feeds an entry.
///
/// Folds work character by character, and folding for case and diacritics takes in folding for case alone. So
/// where one text contains another, exactly or folded, its full fold contains the other's.
std::optional<std::string> necessaryTrigrams(
    const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot);

/// Whether exactly the entries that fulfil that query are meant, so that no text need be read: the test asks
/// the indexed text itself for one trigram of ASCII.
bool isWholeTrigram(const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot);

/// Where a fetch of the first few objects gets its candidates from, in the order of their keys.
struct TextDriver {
    const Entity* entry = nullptr;
    /// The full-text query that all of them fulfil; empty: each entry is asked `walked`.
    std::string query;
    /// The one test that need not be asked again.
    const StorePredicate::Comparison* walked = nullptr;
};

/// What every object that fulfils the predicate must have in its text-index entry, if anything.
/// `hasEveryEntry` tells whether tests of slots that feed the entry say something about it.
std::optional<TextDriver> textDriver(
    const StorePredicate& predicate, const Entity& entity, const std::function<bool()>& hasEveryEntry);

/// Whether the relationship leads to parts of the object that asks, found by their owner's key.
bool leadsToParts(const Slot& slot);

} // namespace objectstore
