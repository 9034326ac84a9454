// Cards of every kind, from a seed.
#pragma once

#include "PlainCard.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace test {

/// Ownership: a plain value. Threads: one. Errors: none.
class RandomCards {
public:
    explicit RandomCards(std::uint32_t seed) : _random(seed) { }

    /// A card with some of every property, whatever their texts hold.
    PlainCard next();
    bool once(unsigned of) { return number(of) == 0; }
    std::uint32_t number(std::uint32_t below) { return static_cast<std::uint32_t>(_random() % below); }

private:
    std::string text();
    std::string word();
    std::string label();
    std::string day();
    PlainEntry entry(std::string_view property);
    std::vector<PlainEntry> entries(std::string_view property);

    std::mt19937 _random;
};

} // namespace test
