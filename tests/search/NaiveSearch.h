// Which records does a search find, by its rules alone? An answer that shares nothing with the search itself.
#pragma once

#include "search/NaiveRoster.h"
#include "search/RouteDifferences.h"

#include <bitset>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Answers searches of a roster, record by record.
///
/// Ownership: borrows the roster.
/// Threads:   one.
/// Errors:    none.
class NaiveSearch {
public:
    using Differences = std::bitset<kDifferences.size()>;
    using Ids = std::set<std::string>;

    NaiveSearch(const NaiveRoster& roster, Date now) : _roster(roster), _now(now) { }

    /// Why this search goes through memory; absent when the store is asked.
    std::optional<Unasked> whyUnasked(const Condition& search) const;
    Ids inMemory(const Condition& search) const { return found(search, {}); }
    /// Of a search that the store is asked.
    Ids inStore(const Condition& search) const { return found(search, Differences().set()); }
    /// Of one record, whatever else is searched; in the store if that can be asked for records of its kind.
    bool matchesInMemory(const NaiveRecord& record, const Condition& search) const;
    bool matchesInStore(const NaiveRecord& record, const Condition& search) const;
    /// Those that make the store answer otherwise than memory, each by itself, about this record.
    Differences causes(const NaiveRecord& record, const Condition& search) const;

private:
    struct Asked;
    using Visited = std::set<std::string>;
    using Kind = NaiveRecord::Kind;

    static bool asksFor(const Condition& search, Kind kind);
    Ids found(const Condition& search, Differences differences) const;
    bool matches(const NaiveRecord&, const Condition&, Differences, const Visited&) const;
    bool matchesLeaf(const NaiveRecord&, const Condition&, Differences, const Visited&) const;

    static bool wholeCard(const NaiveRecord&, const Asked&);
    bool membership(const NaiveRecord&, const Asked&, const Visited&) const;
    bool isBelow(const NaiveRecord&, const std::string& group) const;
    bool isInSmartGroup(const NaiveRecord&, const std::string& group, const Asked&, const Visited&) const;
    bool isInAnyGroupOfStore(const NaiveRecord&, const Asked&, const Visited&) const;

    bool ofProperty(const NaiveRecord&, const Asked&) const;
    bool ofOne(const Value& value, const Asked&) const;
    bool ofEntries(const std::vector<NaiveEntry>&, const Asked&) const;
    bool ofEntry(const Value& value, const Asked&) const;
    bool ofRows(const std::vector<NaiveEntry>&, const Asked&) const;
    bool ofAddressesInStore(const std::vector<NaiveEntry>&, const Asked&) const;
    bool holds(const Value& value, const Asked&) const;
    static bool holdsText(std::string_view text, std::string_view sought, const Asked&);
    static bool holdsPart(std::string_view text, std::string_view sought, const Asked&);
    bool isWithin(const Value& value, const Asked&) const;
    bool isWithinYearless(Date date, const Asked&) const;
    bool isWithinYearlessInStore(Date stored, const Asked&) const;
    double sinceNewYear(Date date, const Asked&) const;

    std::optional<Unasked> whyUnasked(const Condition&, Kind, const Visited&) const;
    std::optional<Unasked> whyLeafUnasked(const Condition&, Kind, const Visited&) const;
    std::optional<Unasked> whyMembershipUnasked(const Value& group, Kind, const Visited&) const;
    std::optional<Unasked> whyPropertyUnasked(const Condition&, Kind) const;

    const NaiveRoster& _roster;
    const Date _now;
};

} // namespace test
