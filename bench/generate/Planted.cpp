// How second cards differ from the first ones, and everybody else from everybody.
#include "generate/Planted.h"

#include <fmt/format.h>

#include <array>

namespace bench {

namespace {

/// In a hundred cards: so many of each planting, in the order of their names.
constexpr std::array<std::size_t, 5> kPerHundred = {0, 1, 2, 1, 1};

bool isSecondCard(Planting planting) { return planting != Planting::none && planting != Planting::doubled; }

std::string numberOf(std::size_t person, int kind) { return fmt::format("+99 {} {:07}", 100 + kind, person); }

/// Takes away by chance from what makes people alike: names, addresses and numbers become their own.
void makeUnlike(Person& person, std::size_t number)
{
    person.last += " " + ownWord(number);
    person.workEmail = fmt::format("w{}.{}", number, person.workEmail);
    person.homeEmail = fmt::format("h{}.{}", number, person.homeEmail);
    person.workPhone = numberOf(number, 1);
    person.cellPhone = numberOf(number, 2);
    if (person.labelledPhone)
        person.labelledPhone->number = numberOf(number, 3);
}

std::string inCapitals(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

/// Of a person of the same name: another job, elsewhere.
void makeSimilar(Person& person, std::size_t number)
{
    person.last = inCapitals(person.last);
    person.jobTitle += " emeritus";
    person.workEmail = "other." + person.workEmail;
    person.homeEmail = "other." + person.homeEmail;
    person.workPhone = numberOf(number, 4);
    person.cellPhone = numberOf(number, 5);
    person.labelledPhone.reset();
}

/// Of somebody else at the same address.
void makeSharing(Person& person, std::size_t number)
{
    person.last = "Housemate " + ownWord(number);
    person.homeEmail = inCapitals(person.homeEmail);
    person.workEmail = "mate." + person.workEmail;
    person.workPhone = numberOf(number, 6);
    person.cellPhone = numberOf(number, 7);
    person.labelledPhone.reset();
}

} // namespace

std::string ownWord(std::size_t person)
{
    std::string word;
    for (++person; person > 0; person /= 26)
        word += static_cast<char>('a' + person % 26);
    return word;
}

std::string_view nameOf(Planting planting)
{
    constexpr std::string_view names[] = {"", "identical", "similar", "inner", "shared"};
    return names[static_cast<std::size_t>(planting)];
}

std::vector<PlantedCard> plantedCards(std::uint64_t seed, std::size_t cards)
{
    std::vector<PlantedCard> all;
    std::size_t person = 0;
    for (std::size_t kind = 1; kind < kPerHundred.size(); ++kind)
        for (std::size_t i = 0; i < cards * kPerHundred[kind] / 100; ++i, ++person) {
            const auto planting = static_cast<Planting>(kind);
            if (isSecondCard(planting))
                all.push_back({person, Planting::none});
            all.push_back({person, planting});
        }
    while (all.size() < cards)
        all.push_back({person++, Planting::none});
    Random random(seed);
    for (std::size_t left = all.size(); left > 1; --left)
        std::swap(all[left - 1], all[random.below(left)]);
    return all;
}

Person personOf(std::uint64_t seed, const PlantedCard& card)
{
    Person person = personNumbered(seed, card.person);
    makeUnlike(person, card.person);
    switch (card.planting) {
    case Planting::none:
        return person;
    case Planting::doubled:
        person.labelledPhone = {"Boathouse", fmt::format("+99 (102) {:07}", card.person)};
        return person;
    case Planting::similar:
        makeSimilar(person, card.person);
        break;
    case Planting::shared:
        makeSharing(person, card.person);
        break;
    case Planting::identical:
        break;
    }
    // A second card has an id of its own.
    person.uniqueId[0] = person.uniqueId[0] == 'F' ? '0' : 'F';
    return person;
}

} // namespace bench
