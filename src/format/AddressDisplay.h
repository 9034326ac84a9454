// An address as people read it on a screen.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Value.h"

#include <string>
#include <vector>

class ZRRoster;

/// The lines of `address` in its country's order, for display: without empty lines, blanks at the ends and
/// control marks.
///
/// Nothing that is stored is left out: what the country's format has no place for follows behind the format's
/// lines, above the country. Where only a code says which country it is, its name in the user's language is
/// shown, unless it is the user's own.
ZR_EXPORT std::vector<std::string> displayLinesOfAddress(ZRRoster& roster, const platform::Value& address);
