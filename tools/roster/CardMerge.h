// Which entries two states of a card have in common, and how a third takes over what differs.
#pragma once

#include "EditableCard.h"

/// Makes in `person` the changes that lead from `before` to `after`, and no others; answers whether there
/// were any. Nothing is saved.
///
/// `before` and `after` were read from texts, which do not say everything; `stored` is the card from which
/// the text of `before` was made. Entries of multi-values are matched by their value, then by their label:
/// one that is in all of them keeps its identifier, and of its value only what differs is replaced. What the
/// texts do not say stays as it is in `person`, which others may have changed since.
bool applyDifferences(const CardProperties& before, const CardProperties& after, const CardProperties& stored,
    ZRPerson& person);
