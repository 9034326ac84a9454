// The order of people by name.
#pragma once

#include "core/ZRExport.h"

#include <string_view>

class ZRPerson;
class ZRRoster;

/// What a comparison of two people needs to know, found out once a sort.
struct ZRNameComparison {
    /// By last name first, or by first name.
    bool byLastName = false;
};

/// By the user's preference kZRNameSorting: 0 sorts by first name, anything else, and nothing, by last name.
ZR_EXPORT ZRNameComparison _createCompartorContext();

/// Negative, zero or positive, by the sort names in the user's locale. People whose rows are gone are told
/// apart by their ids; it never fails. The global lock is held.
ZR_EXPORT int ZRComparePeopleName(const ZRPerson& a, const ZRPerson& b, const ZRNameComparison& comparison);

/// The same for the standard library's re-entrant sort, over pointers to people.
ZR_EXPORT int bsd_ZRComparePeopleName(void* comparison, const void* a, const void* b);
