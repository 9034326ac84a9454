// In which order parts of a line stand on the screen.
#pragma once

#include "platform/text/Utf.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace platform {

/// The indices of `ranges` by the left edge that each has when `text` is laid out on one line (Unicode
/// bidirectional algorithm, direction by the first strong character). Equal edges keep their order.
std::vector<std::size_t> visualOrder(std::string_view text, std::span<const TextRange> ranges);

} // namespace platform
