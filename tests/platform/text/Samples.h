// Random text for tests that hold two answers against each other; the same in every run.
#pragma once

#include "platform/text/Utf.h"

#include <random>
#include <string>
#include <string_view>

class Samples {
public:
    std::size_t below(std::size_t bound) { return _engine() % bound; }

    /// Up to `longest` characters out of `alphabet`, which is UTF-8.
    std::string text(std::string_view alphabet, std::size_t longest)
    {
        std::u32string characters;
        for (std::size_t at = 0; at < alphabet.size();)
            characters.push_back(platform::nextCharacter(alphabet, at));
        std::string result;
        for (std::size_t count = below(longest + 1); count > 0; --count)
            platform::appendUTF8(result, characters[below(characters.size())]);
        return result;
    }

    /// Up to `longest` ASCII characters of any kind, NUL too, but none of `without`.
    std::string ascii(std::size_t longest, std::string_view without = {})
    {
        std::string result;
        for (std::size_t count = below(longest + 1); count > 0; --count)
            if (const char byte = static_cast<char>(below(128)); without.find(byte) == std::string_view::npos)
                result.push_back(byte);
        return result;
    }

private:
    std::mt19937 _engine{20240501};
};

/// Letters of many scripts, marks that fall away and marks that stay, pairs of units.
inline constexpr std::string_view kManyScripts =
    "aAzZ09 -ßẞéÉÅåĳfiſİıΣσςάΆЖжЙйאבּגاَبِكが゙か゚ガガハパ김각ệỆđĐłŁ①Ⅷ½田太郎ไทย𝐀𐐀𐐨😀";
