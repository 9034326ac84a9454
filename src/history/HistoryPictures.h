// The pictures of a person as the history knows them: files, bytes, and what tells them apart.
#pragma once

#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace history {

/// The pictures of one record by their kind (kZRImageProperty, kZRLargeImageProperty); what is missing has no
/// entry.
using Pictures = std::map<std::string, std::string, std::less<>>;

/// Where the picture of that kind lies.
std::string picturePath(std::string_view directory, std::string_view uniqueId, std::string_view kind);
/// What is in the files of a record.
Pictures picturesOf(std::string_view directory, std::string_view uniqueId);
/// Equal for equal pictures; never 0.
std::int64_t hashOf(const Pictures& pictures);

} // namespace history
