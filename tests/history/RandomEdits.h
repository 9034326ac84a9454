// Changes of a roster as people make them, chosen by chance.
#pragma once

#include "store/RosterWorld.h"

#include <cstdint>

namespace test {

/// Makes one change, or a few that belong together, and saves: cards, groups, smart groups, choices of
/// entries, Me, pictures and values of custom properties are added, changed and removed. The same seed does
/// the same to the same roster.
void editAtRandom(const Ref<ZRRoster>& roster, std::uint32_t seed);

} // namespace test
