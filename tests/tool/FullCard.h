// A card that has everything, for tests of what must not change it.
#pragma once

#include <string>

namespace test {

/// Puts the card of "Ana Maria Lima" into the roster, by another process and through the library: every
/// property, custom ones of each type, texts with all that is escaped somewhere, a picture, a group "Friends"
/// with a choice among its entries. Of several entries the second is the primary one. The card is Me, who
/// keeps one phone number and the birthday private.
void addFullCard(const std::string& directory);

} // namespace test
