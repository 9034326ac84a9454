// What the records of the notice file look like.
#pragma once

#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/value/Error.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The bytes of one notice with all it carries; who has more to say says so in fewer words.
inline constexpr std::size_t kLargestNotice = std::size_t(512) << 10;

/// What stands at the start of a notice file, in the byte order of its machine, which it never leaves.
///
/// A poster writes its record behind `end` and then moves `end`: what lies behind `end` was never posted. A
/// file that takes the place of a full one has the next generation.
struct NoticeHeader {
    static constexpr std::size_t kLength = 24;

    std::uint64_t generation = 1;
    /// The offset behind the last whole record.
    std::uint64_t end = kLength;

    std::string encode() const;
    /// Absent for anything else than a header.
    static std::optional<NoticeHeader> decode(std::string_view bytes);
};

/// The record of a notice: magic, length, checksum, then a binary property list. Refused, with the reason,
/// when it is too large or holds what a property list cannot hold.
Result<std::string> encodeNotice(const DistributedNotification& notice);

/// The record at the front of some bytes.
struct NoticeRecord {
    enum class State { whole, partial, damaged };

    State state = State::damaged;
    /// Of the whole record, also where only a part of it is there.
    std::size_t length = 0;
    /// Borrowed from the bytes; only of a whole one.
    std::string_view payload = {};
};

/// Looks at the front of `bytes`. A record that claims to be longer than `encodeNotice` makes any is damaged,
/// so that a reader never waits or makes room for more than that.
NoticeRecord frontNotice(std::string_view bytes);

/// What a whole record says; absent when that is no notice.
std::optional<DistributedNotification> decodeNotice(std::string_view payload);

} // namespace platform
