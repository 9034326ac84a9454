// How a text is looked for among texts that are owned, without a copy of it.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace vcard::prepare {

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

} // namespace vcard::prepare
