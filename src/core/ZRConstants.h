// The words of the system: names of properties, labels, record types, preferences and notifications.
#pragma once

#include "core/ZRExport.h"

#include <string_view>

// Exported, for C and for comparison by a caller.
// NOLINTNEXTLINE(bugprone-macro-parentheses): a name that is declared stands without
#define ZR_WORD(constant, text) extern "C" ZR_EXPORT const char constant[];
#include "core/Vocabulary.def"

/// The same words as literals, for tables that the compiler builds: `zr::kZREmailProperty`.
namespace zr {
#define ZR_WORD(constant, text) inline constexpr std::string_view constant = text;
#include "core/Vocabulary.def"
} // namespace zr
