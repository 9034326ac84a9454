// How one stored card takes over what another says.
#pragma once

#include "core/ZRGlobalLock.h"

class ZROSContact;

/// Makes `target` show what `source` shows: its fields, its entries with their identifiers, labels, order and
/// primary one, its note, its custom properties and its picture. The two may be of different contexts and
/// stores.
///
/// Rows of entries are matched by their identifiers (of messaging addresses also by service, of custom values
/// by property) and changed in place, so that a choice that a group made of an entry stays; a row that says
/// the same is not touched. Services and custom properties are found by name in the target's store, and made
/// where they are missing; a custom property that is of another type there is logged and left out.
///
/// The target keeps what makes it this record: its id, its dates, its memberships, whether it is Me, and the
/// mark of the last import. Sort names and search text follow from the fields. Nothing happens when both are
/// one object. The caller saves, and a new picture waits for that; one that goes is gone at once.
///
/// Raises objectstore::InaccessibleObject when one of the two was deleted elsewhere.
void mergeContact(ZROSContact& target, ZROSContact& source) ZR_NTS;
