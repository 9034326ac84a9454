// What the bits of a person's flags (kZRPersonFlags) say.
#pragma once

#include <cstdint>

namespace personFlags {

/// 0: shown as a person; 1: as a company.
constexpr std::int64_t kShowAsMask = 7;
constexpr std::int64_t kShowAsCompany = 1;
/// 0: in the order that the user prefers.
constexpr std::int64_t kNameOrderingMask = 56;
constexpr std::int64_t kLastNameFirst = 16;
constexpr std::int64_t kFirstNameFirst = 32;
/// The card came with the last import.
constexpr std::int64_t kLastImport = 128;

} // namespace personFlags
