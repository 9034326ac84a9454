// A card as a text that people edit, and what such a text says.
#pragma once

#include "Command.h"

#include <map>

class ZRPerson;

/// Properties by name; multi-values as ZRMultiValue.
using CardProperties = std::map<std::string, platform::Value, std::less<>>;

/// What people change in a card, as it stands: all but what the roster keeps or derives by itself.
CardProperties propertiesOf(ZRPerson& person);

/// The card as vCard 3.0 with plain line ends: with its note, and with what Me keeps private; without its
/// picture, and without the lines that say nothing new (FN, a second X-YAHOO-ID) or cannot be changed so
/// (CATEGORIES, X-ZRUID).
std::string editableText(ZRPerson& person);
/// The text in which a new card is begun.
std::string emptyCardText();

/// What a text of these says, read as an import reads it.
CardProperties propertiesOfGivenText(const std::string& text);
/// The same of a text that somebody edited.
///
/// `before` is the text that was given out: what was odd in it already is no news. A text that holds no card,
/// or several, or a line that cannot be read, raises a Failure with status 1 that names line and reason. What
/// has no place of its own is kept in the note, and told.
CardProperties propertiesOfText(const std::string& text, const std::string& before);
