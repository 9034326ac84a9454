// What the search for duplicates keeps of every card: read from columns, without making a record.
#pragma once

#include "merge/EntryColumns.h"

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

class ZRRoster;

namespace merge {

/// One card.
struct CardColumns {
    std::string uniqueId;
    /// What makes cards similar.
    std::string similarName;
    bool isNameless = false;
    /// Equal for identical cards, different for nearly all others.
    std::uint64_t content = 0;
};

/// All people of a roster, in the order in which they were made.
///
/// Ownership: borrows the roster.
/// Threads:   one; takes the global lock for one fetch at a time.
/// Errors:    a store that cannot be read is logged, and what it would have said is missing.
class CardTable {
public:
    explicit CardTable(ZRRoster& roster);

    const std::vector<CardColumns>& cards() const { return _cards; }
    /// Adds what an entry says to the content of its card.
    void addToContent(std::uint32_t card, std::uint64_t number) { _cards[card].content += number; }

    using Visitor = std::function<void(std::uint32_t card, const EntryColumns& entry)>;
    /// Visits the entries of that kind; the place of a card in `cards` comes with each.
    void forEachEntry(const EntryKind& kind, const Visitor& visit) const;

private:
    void nameTheRest(const std::vector<std::uint32_t>& unnamed);

    ZRRoster& _roster;
    std::vector<CardColumns> _cards;
    std::unordered_map<std::int64_t, std::uint32_t> _indexes;
};

} // namespace merge
