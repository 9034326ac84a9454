// The people of a roster as ids alone.
#pragma once

#include "core/ZRExport.h"

#include <optional>
#include <string>
#include <vector>

class ZRRoster;
enum class ZRNameOrder;

/// The unique ids of all people: for work that takes many cards, a few at a time. In the order of their
/// names, or, without one, in that in which they came into the roster: so they lie on the disk, and are read
/// fastest. One column is read and no record is made, unless the store has no names in order for the user's
/// locale. A hundred thousand ids take 10 MB. Threads: takes the global lock. Errors: empty when the store
/// cannot be read, which is logged.
ZR_EXPORT std::vector<std::string> ZRIdsOfPeople(ZRRoster& roster, std::optional<ZRNameOrder> order);
