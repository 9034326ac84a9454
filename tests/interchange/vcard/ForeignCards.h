// Cards as other programs may write them: any property, any parameters, any packing, from a seed.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// A card, and what it says. Each value holds a word that nothing else has.
struct ForeignCard {
    struct Word {
        /// As it may stand in what is read: a day has two spellings.
        std::vector<std::string> spellings;
        /// Of its property, from 1.
        std::size_t line;
    };

    std::string bytes;
    std::vector<Word> words;
};

/// Ownership: a plain value. Threads: one. Errors: none.
class ForeignCards {
public:
    /// `version` is "2.1", "3.0" or "4.0".
    ForeignCards(std::string_view version, std::uint32_t seed) : _version(version), _random(seed) { }

    ForeignCard next();

private:
    struct Kind;
    static const std::vector<Kind>& kinds();

    std::uint32_t number(std::uint32_t below) { return static_cast<std::uint32_t>(_random() % below); }
    bool once(unsigned of) { return number(of) == 0; }
    template <class List>
    auto& oneOf(const List& list)
    {
        return list[number(static_cast<std::uint32_t>(std::size(list)))];
    }

    void addProperty();
    void addLine(const std::string& header, const std::string& value, bool mayBePacked);
    std::string word();
    std::string text();
    std::string several(std::size_t most, char separator);
    std::string day();
    std::string picture();
    std::string nobodysName();
    std::string parameters();
    std::string quotedPrintable(const std::string& value);
    std::string folded(std::string line);

    const std::string _version;
    std::mt19937 _random;
    std::uint32_t _lastWord = 0;
    ForeignCard _card;
    std::size_t _line = 0;
};

} // namespace test
