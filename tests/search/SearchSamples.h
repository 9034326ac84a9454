// What the tests search for, and in which cards: kinds of properties with their values, and a hundred cards.
#pragma once

#include "search/TwinRoster.h"

#include <random>

namespace test {

/// A kind of property, with what it is searched for.
struct Searched {
    std::string property;
    /// Parts of a dictionary to ask for; absent: the whole value.
    std::vector<std::optional<std::string>> keys = {std::nullopt};
    std::vector<std::optional<std::string>> labels = {std::nullopt};
    /// What cards hold, in the language of `TwinRoster::add`, and what it is searched for: the same among
    /// others.
    std::vector<std::string> contents = {};
    std::vector<Value> values = {};
    bool isOfPeople = true;
};

/// Every kind of property with values of its own kind, a value of another kind, no value and an empty text.
/// Those of groups name groups of the roster.
std::vector<Searched> searchedProperties(TwinRoster& twin);

/// Cards written by hand for what is special about them, and groups: trees of them, and smart ones. The
/// later half is not saved.
void fillWithSamples(TwinRoster& twin);

/// A card of some properties, at random.
std::string addRandomCard(TwinRoster& twin, std::mt19937& random, const std::vector<Searched>& properties);
/// Gives a random property a random content; none, now and then.
void editRandomly(
    TwinRoster& twin, const std::string& id, std::mt19937& random, const std::vector<Searched>& properties);

template <class List>
const auto& pick(const List& list, std::mt19937& random)
{
    return list[random() % list.size()];
}

} // namespace test
