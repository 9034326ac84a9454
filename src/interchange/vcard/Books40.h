// What a vCard 4.0 says about itself: its frame, its writer, its id, its last change.
#pragma once

#include "platform/value/Value.h"

#include <string>
#include <string_view>

namespace vcard {

inline constexpr std::string_view kBegin40 = "BEGIN:VCARD\r\nVERSION:4.0\r\n";
inline constexpr std::string_view kEnd40 = "END:VCARD\r\n";

/// PRODID, UID and REV; the last one where `lastChange` is a date.
void appendBooks40(std::string& to, std::string_view uniqueId, const platform::Value& lastChange);

/// "urn:uuid:…" (RFC 4122) of a record whose id begins with a UUID; empty for another one.
std::string urnOfRecord(std::string_view uniqueId);

} // namespace vcard
