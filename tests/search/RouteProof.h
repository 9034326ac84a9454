// Do both routes of a search find what the rules say, and is what they differ in explained?
#pragma once

#include "search/NaiveSearch.h"
#include "search/TwinRoster.h"

namespace test {

/// Runs searches of a roster by the store and through memory, and compares both with the naive answer.
///
/// Ownership: borrows the twins.
/// Threads:   one.
/// Errors:    each search that finds something else fails the test, with what it was; the first few are told.
class RouteProof {
public:
    explicit RouteProof(TwinRoster& twin) : _twin(twin) { }

    void check(const Condition& search);
    /// Also record by record, which takes as long as there are records.
    void checkEachRecord(const Condition& search);

    /// Fails for each difference that was never seen, and each reason not to ask the store.
    void expectEveryDifference() const;
    int failures() const { return _failures; }
    /// Searches that the store was asked, and how many records it found.
    int asked() const { return _asked; }
    int found() const { return _found; }

private:
    void tellOf(const Condition& search, void (RouteProof::*compareIn)(const Condition&));
    void compareRosters(const Condition& search);
    void compareRecords(const Condition& search);
    void compare(
        const std::string& route, const std::set<std::string>& found, const std::set<std::string>& expected);
    void noteDifferences(const NaiveSearch& naive, const Condition& search,
        const std::set<std::string>& inStore, const std::set<std::string>& inMemory);
    bool hasPredicate(const ZRSearchElement& element) const;

    TwinRoster& _twin;
    std::vector<std::string> _complaints;
    std::array<int, kDifferences.size()> _seen{};
    std::array<int, kUnasked.size()> _unasked{};
    int _asked = 0, _found = 0, _failures = 0;
};

} // namespace test
