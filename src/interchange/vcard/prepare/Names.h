// How names as one text and names in parts are turned into one another.
#pragma once

#include <string>
#include <string_view>

namespace vcard::prepare {

/// The canonical fields of N that a name in one text stands for: "Dr. Ana van Lima, PhD" is
/// "van Lima;Ana;;Dr.;PhD". Every word of the text is in it; the first one is the first name, and the last
/// one, with particles in front of it, the last name. `text` is canonical.
std::string nameFromText(std::string_view text);

/// Whether the name in one text says nothing that the other texts do not say: each of its words is a word of
/// theirs, in any case of ASCII, punctuation around it aside. All are canonical.
bool isSaidBy(std::string_view text, std::string_view others);

/// Makes one text of several values in each field: a "," that is followed by no blank separates values.
/// Titles behind the name get ", " between them, other values a blank.
void joinNameValues(std::string& canonical, std::size_t from);

/// The same of a list, with ", ".
void joinListValues(std::string& canonical, std::size_t from);

} // namespace vcard::prepare
