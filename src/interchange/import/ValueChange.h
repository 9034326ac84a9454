// What becomes of the values of a card when another flows into it, or takes its place.
#pragma once

#include "core/ZRExport.h"
#include "interchange/import/CardContent.h"
#include "platform/value/Value.h"

#include <string>
#include <vector>

namespace interchange {

/// One value that is not afterwards as it was before.
struct ValueChange {
    enum class Kind {
        added,
        /// The old note, with the new one behind it.
        extended,
        replaced,
        removed,
        /// An entry of the new card that another of its own entries replaced, since both have one label.
        displaced,
    };

    Kind kind;
    /// kZRImageProperty for the picture.
    std::string property;
    /// Of an entry of a multi-value; empty for a single value.
    std::string label;
    platform::Value before;
    platform::Value after;
    /// Whether nothing of the card says `before` any more.
    bool isLoss = false;
};

/// From `before` to `after`, property by property in the order of their names, the picture last. Entries are
/// known again by their identifier, then by their value.
std::vector<ValueChange> changesBetween(const CardContent& before, const CardContent& after);

/// The entries of `incoming` that flowed into a card and are not in it, `after`.
std::vector<ValueChange> displacedValues(const CardContent& incoming, const CardContent& after);

/// The properties of the changes, each once, in their order.
ZR_EXPORT std::vector<std::string> changedProperties(const std::vector<ValueChange>& changes);

} // namespace interchange
