// How encoded bytes of a vCard become data or text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The bytes of Base64 text (RFC 2045 §6.8), line by line.
///
/// A line is digits, up to two "=" and white space; groups of four digits do not reach over its end, and two
/// or three left over give one or two bytes. Only the low seven bits of a character count. A line that is
/// anything else is no error: it comes out as it stands, with its end.
std::string zrDecodeBase64(std::string_view data);

/// UTF-7 (RFC 2152) as text, or absent for no data at all and for what makes no UTF-16.
///
/// Bytes outside the Base64 stretches stand for themselves, as units in the byte order of this machine; the
/// stretches' bytes are taken as they come, though they are big-endian. A stretch without an end is lost.
std::optional<std::string> zrDecodedUTF7(std::string_view data);

/// Whether data without a byte order mark looks like big-endian UTF-16: of the first 22 bytes more than 80 %
/// of those at even places are zero.
bool zrIsUTF16EntourageVCard(std::string_view data);
