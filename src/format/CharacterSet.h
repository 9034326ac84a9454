// Which characters a text may hold.
#pragma once

#include <bitset>
#include <string_view>

/// A set of ASCII characters, or the inverse of one, which holds every other character there is.
///
/// Ownership: a plain value.
/// Threads:   like any plain value.
/// Errors:    none.
class CharacterSet {
public:
    explicit CharacterSet(std::string_view members)
    {
        for (const char member : members)
            _ascii.set(static_cast<unsigned char>(member) & 0x7Fu);
    }

    bool contains(char32_t character) const
    {
        return (character < _ascii.size() && _ascii.test(character)) != _inverted;
    }

    /// The set of all characters that are not in this one.
    CharacterSet inverted() const
    {
        CharacterSet other = *this;
        other._inverted = !_inverted;
        return other;
    }

private:
    std::bitset<128> _ascii;
    bool _inverted = false;
};
