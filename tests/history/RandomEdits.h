// Changes of a roster as people make them, chosen by chance.
#pragma once

#include "store/RosterWorld.h"

#include <cstdint>

namespace test {

/// Makes one change, or a few that belong together, in one or several saves. The same seed does the same to
/// the same roster. It is linked with the rooms whose changes are walked.
void editAtRandom(const Ref<ZRRoster>& roster, std::uint32_t seed);

} // namespace test
