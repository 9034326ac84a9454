// How a long list is sorted by several threads: in four parts, joined by three merges.
#pragma once

#include "core/ZRNameOrder.h"
#include "platform/run/OperationQueue.h"

#include <cstddef>
#include <span>
#include <vector>

/// A part of a list.
struct ZRIndexRange {
    std::size_t location = 0;
    std::size_t length = 0;
    friend bool operator==(const ZRIndexRange&, const ZRIndexRange&) = default;
};

/// One step of sorting a plain array of records: sorts a range of it, or merges a range with the next one.
/// Records of equal names keep their order.
///
/// Ownership: borrows the array, which the one who waits for the steps keeps.
/// Threads:   runs on a thread of its queue. It reads and writes its ranges of the array and what their
///            elements point to, nothing else, and takes no lock: whoever waits for it holds the global one.
/// Errors:    none.
class _ZR_PeopleSorting_Operation final : public platform::Operation {
public:
    enum class Type : unsigned { sort, merge };

    /// Sorts `range`.
    _ZR_PeopleSorting_Operation(ZRNamedRecord* people, ZRIndexRange range);
    /// Merges `range` with `mergeRange`, which begins where it ends; both are sorted by then.
    _ZR_PeopleSorting_Operation(ZRNamedRecord* people, ZRIndexRange range, ZRIndexRange mergeRange);

    void main() override;

    Type type() const { return _type; }
    ZRIndexRange range() const { return _range; }
    /// Empty for a sort.
    ZRIndexRange mergeRange() const { return _mergeRange; }

private:
    ~_ZR_PeopleSorting_Operation() override = default;
    void merge();

    ZRNamedRecord* const _people;
    const ZRIndexRange _range;
    const ZRIndexRange _mergeRange;
    const Type _type;
};

/// Sorts by name, stably, on the calling thread.
void zrSortPeople(std::span<ZRNamedRecord> people);

/// The four sorts and three merges of `people`, each merge behind the two steps that it joins.
std::vector<platform::Ref<_ZR_PeopleSorting_Operation>> zrSortOperations(std::span<ZRNamedRecord> people);
