// How a long list is sorted by several threads: in four parts, joined by three merges.
#include "store/ZRPeopleSorting.h"

#include <algorithm>

using platform::makeRef;
using platform::Ref;
using Operation = _ZR_PeopleSorting_Operation;

// The re-entrant sort of the C library promises nothing about equals; this one keeps their order.
void zrSortPeople(std::span<ZRNamedRecord> people)
{
    std::ranges::stable_sort(
        people, [](const ZRNamedRecord& a, const ZRNamedRecord& b) { return ZRComparePeopleName(b, a) > 0; });
}

Operation::_ZR_PeopleSorting_Operation(ZRNamedRecord* people, ZRIndexRange range)
    : _people(people), _range(range), _mergeRange(), _type(Type::sort)
{
}

Operation::_ZR_PeopleSorting_Operation(ZRNamedRecord* people, ZRIndexRange range, ZRIndexRange mergeRange)
    : _people(people), _range(range), _mergeRange(mergeRange), _type(Type::merge)
{
}

void Operation::main()
{
    if (_type == Type::sort)
        zrSortPeople({_people + _range.location, _range.length});
    else
        merge();
}

// Only the left run needs a place of its own: what is written never overtakes the right one.
void Operation::merge()
{
    ZRNamedRecord* to = _people + _range.location;
    const std::vector<ZRNamedRecord> leftRun(to, to + _range.length);
    const ZRNamedRecord* right = _people + _mergeRange.location;
    const ZRNamedRecord* const rightEnd = right + _mergeRange.length;
    auto left = leftRun.begin();
    while (left != leftRun.end() && right != rightEnd)
        *to++ = ZRComparePeopleName(*left, *right) > 0 ? *right++ : *left++;
    std::copy(left, leftRun.end(), to);
}

std::vector<Ref<Operation>> zrSortOperations(std::span<ZRNamedRecord> people)
{
    const std::size_t quarter = people.size() / 4, first = quarter + people.size() % 4;
    const ZRIndexRange parts[] = {
        {0, first}, {first, quarter}, {first + quarter, quarter}, {first + 2 * quarter, quarter}};
    std::vector<Ref<Operation>> steps;
    for (const auto& part : parts)
        steps.push_back(makeRef<Operation>(people.data(), part));
    const auto join = [&](std::size_t a, std::size_t b, ZRIndexRange left, ZRIndexRange right) {
        const auto merge = makeRef<Operation>(people.data(), left, right);
        merge->addDependency(steps[a]);
        merge->addDependency(steps[b]);
        steps.push_back(merge);
    };
    join(0, 1, parts[0], parts[1]);
    join(2, 3, parts[2], parts[3]);
    join(4, 5, {0, first + quarter}, {first + quarter, 2 * quarter});
    return steps;
}
