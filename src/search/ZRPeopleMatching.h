// The people that a search finds, as ids and names alone.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Object.h"

#include <string>
#include <vector>

class ZRRoster;
class ZRSearchElement;

/// A card that was found, as a list of names needs it.
struct ZRFoundPerson {
    std::string uniqueId;
    /// As `ZRPerson::compositeName` has it.
    std::string name;
    std::string nickname;
};

/// The people among the records that `ZRRoster::recordsMatchingSearchElement` finds, in the same order, for
/// work that finds many to show a few: a few columns are read and no records are made, unless the search can
/// only be answered in memory. Threads: takes the global lock. Errors: empty when the store cannot be read,
/// which is logged; an absent element raises ZRInvalidArgument.
ZR_EXPORT std::vector<ZRFoundPerson> ZRNamesOfPeopleMatching(
    ZRRoster& roster, const platform::Ref<ZRSearchElement>& search);

/// The same, the unique ids alone.
ZR_EXPORT std::vector<std::string> ZRIdsOfPeopleMatching(
    ZRRoster& roster, const platform::Ref<ZRSearchElement>& search);
