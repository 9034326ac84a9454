// Cards as tables of tests write them: all that they say in one line.
#pragma once

#include "store/RosterWorld.h"

#include <string>
#include <string_view>

namespace test {

/// A card of the roster that says what a line says: parts with " | " between them, each "PROPERTY: VALUE" or
/// "PROPERTY LABEL: VALUE" for one entry of a multi-value. A date is "1970-05-01", a dictionary
/// "KEY=VALUE,KEY=VALUE".
Ref<ZRPerson> card(const Ref<ZRRoster>& roster, std::string_view line);
/// The line of a card, by properties and in the order of entries; "/" stands for a CR. Its id and its dates
/// are left out.
std::string lineOf(const ZRPerson& card);

/// Declares a custom property of each type there: "text", "number", "real", "day", "list", "table", "bytes",
/// and with an "s" more those that hold several.
void declareCustomProperties(ZRRoster& roster);

} // namespace test
