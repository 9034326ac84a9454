// What --set and --unset do to a card.
#pragma once

#include "Command.h"

class ZRPerson;

/// Makes the changes of `options.unsets`, then those of `options.sets`, in the card. Nothing is saved.
///
/// - 'First=Ana' sets a single value. 'Email;home=a@b.c' sets the value of the first entry with that label,
///   'Email;home+=a@b.c' adds an entry. Without a label the primary entry is meant, or a new one under the
///   first label that the property offers.
/// - 'Address.City;home=Porto' sets a part of an address; behind 'Address.City;home+=…' further parts of that
///   label belong to the address that was added.
/// - 'Email' takes the property out, 'Email;home' the entries with that label, 'Email;home=a@b.c' or
///   'Email=a@b.c' those with that value in any case, 'Address.City;home' a part.
///
/// Raises a Failure that says which of them means nothing (status 2), or takes out what is not there
/// (status 1); the card may then be half changed and must not be saved.
void applyChanges(const Options& options, ZRPerson& person);
