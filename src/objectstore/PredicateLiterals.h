// Constants as the store reads them inside one bound value: JSON lists, full-text queries, prefixes.
#pragma once

#include "platform/value/Value.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

/// A trigram index finds nothing shorter, in characters.
inline constexpr std::size_t kTrigram = 3;

/// What stands for NUL in the index: its tokenizer would stop there, and what stands behind it would never be
/// found.
inline constexpr char kIndexedForNul = '\1';

std::size_t characterCount(std::string_view text);
bool holdsNul(std::string_view text);

/// The smallest byte string above every one that starts with `prefix`: UTF-8, not empty.
std::string behindAllWithPrefix(std::string prefix);

/// All trigrams of a text of at least one, or a spread of them: every text that contains it has each.
std::string trigramQuery(std::string_view text);

/// The list as one JSON value, when JSON carries its elements exactly: text without NUL, whole numbers.
std::optional<std::string> asJSON(const std::vector<platform::Value>& elements);

} // namespace objectstore
