// Names for new things: random UUIDs, and the unique ids of records made of them.
#pragma once

#include "core/ZRExport.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The upper-case text of a fresh random UUID (RFC 4122 §4.4), 36 characters.
///
/// Each thread draws from a generator of its own, seeded by the kernel, and seeds it anew in a forked child,
/// so that no two processes ever give the same.
ZR_EXPORT std::string zrUniqueString();

/// Length of the UUID text that a unique id begins with.
inline constexpr std::size_t kZRUniqueIdTextLength = 36;

/// A fresh unique id for a record of `table`: UUID, ":" and the table's name. An absent table raises
/// ZRInvalidArgument.
ZR_EXPORT std::string _newUniqueIdForTable(std::optional<std::string_view> table);

/// The table's name in a unique id. An id that is too short to name one raises ZRInvalidArgument.
ZR_EXPORT std::string_view zrTableOfUniqueId(std::string_view uniqueId);

/// A 32-bit hash of the UUID in a unique id; the table does not count. Ids of fewer than 36 characters hash
/// as if the missing ones were zero.
ZR_EXPORT std::uint32_t _ZRRecordUUIDHash(std::string_view uniqueId);
