// The words of an archive that its writer and its reader share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform::keyedarchive {

inline constexpr std::int64_t kVersion = 1;
inline constexpr char kVersionKey[] = "archive";
inline constexpr char kRootKey[] = "root";
inline constexpr char kObjectsKey[] = "objects";

/// Marks the system's own keys among those of the archived values.
inline constexpr char kMark = '@';
inline constexpr char kClassKey[] = "@class";
inline constexpr char kObjectKey[] = "@object";
inline constexpr char kNullKey[] = "@null";

/// A key of an archived value, told apart from the system's own.
inline std::string markedKey(std::string_view key)
{
    return (key.starts_with(kMark) ? std::string(1, kMark) : std::string()) + std::string(key);
}

} // namespace platform::keyedarchive
