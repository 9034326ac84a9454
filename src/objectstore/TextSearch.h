// Does a text hold another, byte by byte?
#pragma once

#include <string_view>

namespace objectstore {

/// Whether `part` stands anywhere in `text`. Made for scans of many short texts for one or two letters, where
/// a general search spends its time on starting.
bool holds(std::string_view text, std::string_view part);

} // namespace objectstore
