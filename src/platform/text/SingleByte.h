// How a character set of single bytes is read and written without a converter.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

/// Both directions of a set whose bytes 0x00 to 0x7F are ASCII and whose other bytes each stand for one
/// character, or for none.
///
/// Threads: immutable once made.
/// Errors:  absent, as `decode` and `encode` of Encoding.h.
class SingleByteSet {
public:
    /// Learns the set from an ICU converter; an unknown one gives a set of ASCII alone.
    explicit SingleByteSet(const char* converter);

    std::optional<std::string> decode(std::string_view bytes) const;
    std::optional<std::string> encode(std::string_view text) const;

private:
    /// The UTF-8 of the bytes from 0x80 on, empty where a byte stands for nothing.
    std::array<std::string, 128> _texts;
    /// In ascending order of the characters.
    std::vector<std::pair<char32_t, char>> _bytes;
};

} // namespace platform
