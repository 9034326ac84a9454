// A card that has everything, for tests of what must not change it.
#pragma once

#include "tool/ToolWorld.h"

namespace test {

/// Puts the card of "Ana Maria Lima" into the roster, by another process and through the library: every
/// property, custom ones of each type, texts with all that is escaped somewhere, a picture, a group "Friends"
/// with a choice among its entries. The card is Me, who keeps one phone number and the birthday private.
void addFullCard(const std::string& directory);

/// All that can be seen of the card: as JSON, its picture, and how its group reaches it; without the day of
/// its last change.
Json everythingOf(const ToolWorld& world, const std::string& name);

} // namespace test
