// When two cards are taken for the same person, and the hashes that find such cards quickly.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPerson.h"

#include <cstddef>

/// Whether both cards say the same: every property but the id and the two dates, labels and order of entries
/// included. Identifiers of entries, pictures and memberships, that of the last import too, do not count.
/// Never across rosters.
ZR_EXPORT bool peopleAreIdentical(const ZRPerson& a, const ZRPerson& b);
/// Whether both go by the same name (`similarNameForHashing`), whatever else they say. Never across rosters.
ZR_EXPORT bool peopleAreSimilar(const ZRPerson& a, const ZRPerson& b);

/// Equal for identical people, and for similar ones. Stable within one run of the program only.
ZR_EXPORT std::size_t identicalHashPerson(const ZRPerson& person);
ZR_EXPORT std::size_t similarHashPerson(const ZRPerson& person);

/// The orders of a list of labels to print: by postal code, and by last name or else "Name". `a` and `b` are
/// dictionaries. Negative, zero or positive, whatever the case; who has none comes last.
ZR_EXPORT int compareZipCodes(const platform::Value& a, const platform::Value& b);
ZR_EXPORT int compareLastNames(const platform::Value& a, const platform::Value& b);

struct ZRSize {
    float width = 0;
    float height = 0;
};
/// Whether two sizes differ by less than half a unit in each direction.
ZR_EXPORT bool ZRFuzzyEqualSizes(ZRSize a, ZRSize b);
