// Sixteen bytes looked at together: most text holds nothing that a scan looks for.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vcard::prepare {

/// Comparisons with a byte give a block of bytes that are all ones where it is so.
using Block [[gnu::vector_size(16)]] = signed char;

inline Block blockAt(const char* bytes)
{
    Block block;
    std::memcpy(&block, bytes, sizeof block);
    return block;
}

/// The last block of a text; where that is shorter, all of it and what `filler` says.
inline Block lastBlock(std::string_view text, char filler)
{
    if (text.size() >= sizeof(Block))
        return blockAt(text.data() + text.size() - sizeof(Block));
    std::array<char, sizeof(Block)> filled;
    filled.fill(filler);
    std::copy(text.begin(), text.end(), filled.begin());
    return blockAt(filled.data());
}

inline bool isAny(Block found)
{
    std::array<std::uint64_t, 2> halves;
    std::memcpy(halves.data(), &found, sizeof found);
    return (halves[0] | halves[1]) != 0;
}
inline bool isAny(int found) { return found != 0; }

} // namespace vcard::prepare
