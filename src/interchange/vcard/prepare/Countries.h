// The code of the country that an address names.
#pragma once

#include "interchange/vcard/prepare/TextHash.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace vcard::prepare {

/// Looks up names of countries, and remembers what it found: a file names few of them, each many times.
///
/// Ownership: owns what it remembers, which is bounded.
/// Threads:   one thread at a time.
/// Errors:    none; an unknown name has no code.
class Countries {
public:
    static constexpr std::size_t kMostRemembered = 256;

    /// In two lower-case letters, or empty. `name` is canonical; valid until the next call.
    std::string_view codeOf(std::string_view name);

private:
    std::unordered_map<std::string, std::string, TextHash, std::equal_to<>> _known;
};

} // namespace vcard::prepare
