// The people of a roster in the order of their names, as ids alone.
#pragma once

#include "core/ZRExport.h"

#include <string>
#include <vector>

class ZRRoster;
enum class ZRNameOrder;

/// The unique ids of all people, in the order of their names: for work that takes many cards, a few at a
/// time. Where the store has the order, one column is read and no record is made; a hundred thousand ids take
/// 10 MB. Threads: takes the global lock. Errors: empty when the store cannot be read, which is logged.
ZR_EXPORT std::vector<std::string> ZRSortedIdsOfPeople(ZRRoster& roster, ZRNameOrder order);
