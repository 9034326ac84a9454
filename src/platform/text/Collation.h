// The order of the user's language, for Compare.h.
#pragma once

#include <compare>
#include <cstdint>
#include <string_view>

namespace platform {

/// The order by the collator of the user's locale; case, diacritic and numeric bits of CompareOptions count.
std::weak_ordering compareLocalized(std::string_view a, std::string_view b, std::uint32_t options);

} // namespace platform
