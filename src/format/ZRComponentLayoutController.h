// In which order parts of a text stand on the screen.
#pragma once

#include "core/ZRExport.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The visual order of parts of one line, which may run against the order of the text where it is written
/// from right to left.
///
/// It measures no glyphs: which part is further left follows from the directions of the characters alone.
///
/// Ownership: one for the process, never destroyed; it holds nothing between calls.
/// Threads:   any, at once.
/// Errors:    none.
class ZR_EXPORT ZRComponentLayoutController {
public:
    static const ZRComponentLayoutController& sharedInstance();

    /// The indices of `components`, joined by `joiner` on one line, by their left edges. Those of equal edges
    /// keep their order.
    std::vector<std::size_t> layoutOrderOfComponents(
        const std::vector<std::string>& components, std::string_view joiner) const;
};

/// The same, asked of the list.
ZR_EXPORT std::vector<std::size_t> layoutOrderOfComponentsJoinedByString(
    const std::vector<std::string>& components, std::string_view joiner);
