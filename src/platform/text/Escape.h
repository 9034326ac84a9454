// Bytes in clothes: percent escapes for URLs, and Base64 for everybody outside.
#pragma once

#include "platform/value/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// True for text that RFC 3986 allows as a URI or relative reference: only its characters, escapes of two
/// hex digits, one "#" at most, brackets only around an address in the host. Empty text is one.
bool isValidURL(std::string_view text);

/// The text as a valid URL. One that is valid already comes back unchanged. Otherwise its percent escapes
/// are first undone, if what they stand for is UTF-8, and every byte that may not stand in a URL is escaped.
std::string addingPercentEscapesIfNecessary(std::string_view text);

/// Every byte escaped that is neither a letter, a digit nor one of "-._~", nor in `alsoAllowed`.
std::string percentEscaped(std::string_view text, std::string_view alsoAllowed = {});

/// The text with its escapes undone; absent when one is malformed or the result is no UTF-8.
std::optional<std::string> removingPercentEscapes(std::string_view text);

/// Base64 with padding, on one line (RFC 4648 §4).
PLATFORM_EXPORT std::string encodeBase64(std::string_view bytes);

} // namespace platform
