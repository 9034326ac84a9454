// What of a card does not come back from a vCard: the list that stands in docs/vcard.md.
#pragma once

#include "PlainCard.h"

#include <set>
#include <span>
#include <string>
#include <string_view>

namespace test {

enum class Version { v21, v30, v40 };

/// How a card goes out and comes in.
struct Road {
    Version version = Version::v30;
    /// Read as people import, with the preparation in front of the reader. It alone reads 4.0.
    bool isPrepared = false;
    bool withNote = true, withPhoto = true;
    std::string countryCode = "us";
};

/// One thing that a card loses on a road.
struct Loss {
    /// As the document names it.
    std::string_view name;
    void (*apply)(PlainCard& card, const Road& road);
};

std::span<const Loss> allLosses();

/// What must come back of the card. The names of the losses that changed something are added to `met`.
PlainCard expected(PlainCard card, const Road& road, std::set<std::string_view>& met);

} // namespace test
