// Cards and groups as vCard 4.0 (RFC 6350).
#pragma once

#include "core/ZRPerson.h"

#include <string>

class ZRGroup;

/// Appends a person's card: what version 3.0 carries, under the names of 4.0, and what only 4.0 has a name
/// for. The options, and what Me keeps private, are those of `_appendVCardRepresentation`; a card that fails
/// half-way is logged and ends there.
ZR_EXPORT void zrAppendVCard40(const ZRPerson& person, std::string& cards, ZRVCardOptions options);

/// Appends a group as a card of its own (KIND:group, RFC 6350 §6.1.4) that names its members and subgroups by
/// the UIDs of their cards, which are not written along. Records whose id holds no UUID have no such name and
/// are left out; `CATEGORIES` in the cards of members says the same of people.
ZR_EXPORT void zrAppendVCard40(const ZRGroup& group, std::string& cards);
