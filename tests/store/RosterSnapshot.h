// Everything that a roster holds, as text, and what differs between two such texts.
#pragma once

#include "store/RosterWorld.h"

#include <map>
#include <string>

namespace test {

/// The unique id of each record, and all about it: class, creation date, properties (of multi-values the
/// identifiers, labels, order and primary entry), the picture, the groups that it is in, of a group who is in
/// it and which entries it uses. Beside them "me" and "last import". Not the modification dates, nor what a
/// smart group remembers of its members.
using Snapshot = std::map<std::string, std::string>;
Snapshot snapshotOf(const Ref<ZRRoster>& roster);

/// What is in one and not in the other, line by line; empty for nothing.
std::string differenceOf(const Snapshot& expected, const Snapshot& found);

} // namespace test
