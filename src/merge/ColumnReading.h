// How the search for duplicates reads: columns of all cards, records of a few at a time.
#pragma once

#include "core/ZRPerson.h"
#include "objectstore/ColumnFetch.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class ZRRoster;

namespace merge {

/// One number of two.
constexpr std::uint64_t mixed(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
    const std::uint64_t both = (a ^ (b + odd + (a << 6) + (a >> 2))) * odd;
    return both ^ (both >> 32);
}

inline std::uint64_t numberOf(std::string_view text) { return std::hash<std::string_view>{}(text); }

/// Reads those columns of all objects of exactly that entity, in one hold of the global lock. A store that
/// cannot be read is logged.
void readColumns(ZRRoster& roster, const objectstore::Entity& entity,
    const std::vector<std::string_view>& keys, const objectstore::ColumnVisitor& visit);

/// The people of those ids, in their order, with the values of these properties (none named: of all) read in
/// a few fetches. Ids of nobody are left out.
ZRRecordList readPeople(ZRRoster& roster, const std::vector<std::string>& uniqueIds,
    const std::vector<std::string_view>& properties = {});

/// Calls `visit` with each of the people of those ids, of whom some hundreds are in memory at a time, until
/// it answers false.
void forEachPerson(ZRRoster& roster, const std::vector<std::string>& uniqueIds,
    const std::vector<std::string_view>& properties,
    const std::function<bool(const platform::Ref<ZRPerson>&)>& visit);

} // namespace merge
