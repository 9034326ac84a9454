// Which roster a benchmark works on.
#pragma once

#include "store/ZRRoster.h"

#include <string>

namespace bench {

/// The shared roster of this process, on that directory, without cards of its own making; ends the program
/// where it cannot be opened.
platform::Ref<ZRRoster> openRoster(const std::string& directory);

} // namespace bench
