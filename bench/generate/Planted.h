// A roster's worth of people among whom some stand twice, and how.
#pragma once

#include "generate/People.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// In which way a card is planted. `doubled` is one card with a phone number twice, the others are second
/// cards of people who have a plain one.
enum class Planting { none, identical, similar, doubled, shared };

/// "identical", "similar", "inner" and "shared": what a search calls them; empty for none.
std::string_view nameOf(Planting planting);

/// Which person a card is of, and what is done to it.
struct PlantedCard {
    std::size_t person = 0;
    Planting planting = Planting::none;
};

/// `cards` cards in shuffled order: one in a hundred is an identical second card, two are similar ones, one
/// has a doubled phone number, and one shares an e-mail address with somebody of another name. The rest have
/// names, addresses and numbers of their own. The same for a seed on every machine.
std::vector<PlantedCard> plantedCards(std::uint64_t seed, std::size_t cards);

/// The last word of the names of all cards of that person, but for its case, and of nobody else's.
std::string ownWord(std::size_t person);

Person personOf(std::uint64_t seed, const PlantedCard& card);

} // namespace bench
