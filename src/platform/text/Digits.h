// What digits a text holds, however they are written.
#pragma once

#include "platform/value/Export.h"

#include <string>
#include <string_view>

namespace platform {

/// The compatibility composition (NFKC): full-width letters and digits become plain ones, letters and marks
/// become one character where there is one.
std::string compatibilityComposed(std::string_view text);

/// The decimal digits of the text's compatibility composition, in order and as ASCII, whatever script they
/// are in; nothing else.
PLATFORM_EXPORT std::string digitsOnly(std::string_view text);

} // namespace platform
