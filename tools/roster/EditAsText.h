// A card changed by its owner in an editor.
#pragma once

#include "Command.h"

class ZRPerson;

/// Lets the user edit `text`, which says what is in the card, then applies and saves what was changed in it.
/// Answers whether anything was: an unchanged or emptied text changes nothing. Raises a Failure when the
/// editor fails, the text cannot be read or the card cannot be saved; the text is then kept in a file that
/// the failure names. `what` tells what --set would do in place of an editor, where there is none.
bool editAsText(ZRPerson& person, const std::string& text, std::string_view what);
