// Which country a text names, in the languages that address books are written in.
#pragma once

#include "platform/value/Export.h"

#include <string>
#include <string_view>

namespace platform {

/// The code of the country that `name` says, in two lower-case letters of ISO 3166; empty for any other text.
/// A name is one that ICU gives in a dozen languages, a usual English form ("U.S.A.", "Holland"), or a code
/// of two or three letters. Case, accents, full stops and outer blanks do not matter. Names are read when
/// they are first needed, language by language; the first unknown name takes some milliseconds.
PLATFORM_EXPORT std::string regionCodeForName(std::string_view name);

} // namespace platform
