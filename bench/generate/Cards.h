// How a person is written as a vCard or as fields.
#pragma once

#include "generate/People.h"

#include <cstddef>
#include <string>

namespace bench {

/// Appends the person as vCard 3.0 (RFC 2426): UTF-8, CR LF, folded at 75 octets between characters.
void appendCard30(std::string& out, const Person& person);

/// Appends the same as vCard 2.1: quoted-printable where the text is no plain ASCII line. Three in four cards
/// are UTF-8; of the others, by `number`, those that can be are ISO-8859-1.
void appendCard21(std::string& out, const Person& person, std::size_t number);

/// Appends the fields with tabs between them, in the order of `Person`; the photo as its number of bytes.
/// Within a field `\n`, `\t` and `\\` stand for a line end, a tab and a backslash.
void appendFields(std::string& out, const Person& person);

} // namespace bench
