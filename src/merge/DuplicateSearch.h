// Which cards of a roster stand for the same person, and which say one thing twice.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class ZRRoster;

/// What cards have in common, or a card has twice: a property, and its value as it is written there.
struct ZRDuplicateReason {
    std::string property;
    platform::Value value;
};

/// Cards that belong together: at least two, or the one card in which something is doubled.
struct ZRDuplicateBucket {
    /// In the order in which the cards were made: the first one survives a merge.
    std::vector<std::string> uniqueIds;
    /// None for identical and similar cards: all the rest of a card, and its name, are the reason there.
    std::vector<ZRDuplicateReason> reasons = {};
    /// Similar only because none of them has any name.
    bool isNameless = false;
};

using ZRDuplicateBuckets = std::vector<ZRDuplicateBucket>;

/// What a search found; buckets in the order of their first cards.
struct ZRDuplicates {
    /// How many cards were looked at.
    std::size_t people = 0;
    /// Equal in every property but ids and dates of making and change. Pictures and groups do not count.
    ZRDuplicateBuckets identical;
    /// Of the same name, whatever its case; identical cards among them.
    ZRDuplicateBuckets similar;
    /// Cards with a value that a multi-value property has before in the same card, other than in case,
    /// punctuation or, of a telephone number, in what is not dialled; the reasons are those later values.
    ZRDuplicateBuckets inner;
    /// Of different names (or none), with an e-mail address or telephone number in common.
    ZRDuplicateBuckets shared;

    /// Cards of one name as a merge of them meets them once identical ones are one card: each identical card
    /// but the first is left out, and so are cards that have no name.
    ZR_EXPORT ZRDuplicateBuckets similarAlone() const;
};

/// Looks through all people of `roster` as it stands, unsaved changes included.
///
/// Cards are compared by columns first; only those that seem identical or doubled are made records of, some
/// at a time, so that memory does not grow with the cards. Between two steps it asks `isCancelled` and, once
/// that is so, answers what it has.
///
/// Threads: takes the global lock for a step at a time. Errors: a store that cannot be read is logged, and
/// has no people.
ZR_EXPORT ZRDuplicates zrFindDuplicates(
    ZRRoster& roster, const std::function<bool()>& isCancelled = [] { return false; });
