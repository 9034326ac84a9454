// Bytes as text of 64 digits (RFC 4648 §4), and back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::propertylist {

/// On one line, padded.
std::string base64FromBytes(std::string_view bytes);

/// The bytes of `text`; blanks and line ends are passed over, padding may be missing. None when any other
/// character occurs, digits follow the padding, or a lone digit is left over.
std::optional<std::string> bytesFromBase64(std::string_view text);

} // namespace platform::propertylist
