// How mail addresses are found and ranked for a few typed letters.
#include "AddressCompletion.h"

#include "CardJson.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/text/Compare.h"
#include "platform/text/Digits.h"
#include "platform/text/Fold.h"
#include "search/ZRSearchElement.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <tuple>

using platform::foldCaseAndDiacritics;

namespace {

/// What people write into a phone number beside its digits.
constexpr std::string_view phonePunctuation = " +-()./";

bool isNumber(const std::string& text)
{
    constexpr std::size_t shortestNumber = 3;
    const auto isPart = [](char c) {
        return (c >= '0' && c <= '9') || phonePunctuation.find(c) != std::string_view::npos;
    };
    return std::ranges::all_of(text, isPart) && platform::digitsOnly(text).size() >= shortestNumber;
}

/// What is looked for, folded. An index of cards holds the bare digits of each number.
std::vector<std::string> termsOf(const std::string& text)
{
    if (isNumber(text))
        return {platform::digitsOnly(text)};
    std::vector<std::string> terms;
    for (std::size_t from = 0, to = 0; to < text.size(); from = to + 1) {
        to = std::min(text.find_first_of(" \t\n", from), text.size());
        if (to > from)
            terms.push_back(foldCaseAndDiacritics(text.substr(from, to - from)));
    }
    return terms;
}

bool isLetter(char c)
{
    return static_cast<unsigned char>(c) >= 0x80 || std::isalnum(static_cast<unsigned char>(c));
}

bool startsWord(std::string_view text, std::string_view term)
{
    for (auto at = text.find(term); at != std::string_view::npos; at = text.find(term, at + 1))
        if (at == 0 || !isLetter(text[at - 1]))
            return true;
    return false;
}

/// A card's folded texts.
struct Card {
    std::string name;
    std::vector<std::string> addresses;
};

/// Where a term stands for one address of the card; absent when it only stands in another address.
std::optional<MatchPlace> placeOf(const std::string& term, const Card& card, const std::string& address)
{
    if (startsWord(card.name, term))
        return MatchPlace::startOfNameWord;
    if (address.starts_with(term))
        return MatchPlace::startOfAddress;
    const auto holds = [&](const std::string& text) { return text.find(term) != std::string::npos; };
    if (!holds(address) && !holds(card.name) && std::ranges::any_of(card.addresses, holds))
        return std::nullopt;
    return MatchPlace::inside;
}

std::optional<MatchPlace> placeOf(
    const std::vector<std::string>& terms, const Card& card, const std::string& address)
{
    auto worst = MatchPlace::startOfNameWord;
    for (const auto& term : terms) {
        const auto place = placeOf(term, card, address);
        if (!place)
            return std::nullopt;
        worst = std::max(worst, *place);
    }
    return worst;
}

void addCompletions(
    std::vector<AddressCompletion>& found, ZRPerson& person, const std::vector<std::string>& terms)
{
    const platform::Value emails = person.valueForProperty(zr::kZREmailProperty);
    const auto* const entries = emails.as<ZRMultiValue>();
    if (!entries)
        return;
    const std::string name = displayName(person), nameKey = platform::collationKey(name);
    const std::string nickname(person.valueForProperty(zr::kZRNicknameProperty).asText());
    Card card{foldCaseAndDiacritics(name + " " + nickname), {}};
    for (ZRIndex i = 0; i < entries->count(); ++i)
        card.addresses.push_back(foldCaseAndDiacritics(entries->valueAtIndex(i).asText()));
    for (ZRIndex i = 0; i < entries->count(); ++i)
        if (const auto place = placeOf(terms, card, card.addresses[static_cast<std::size_t>(i)]))
            found.push_back({*place, std::string(entries->valueAtIndex(i).asText()), name, nameKey,
                ZRLocalizedPropertyOrLabel(entries->labelAtIndex(i)), person.uniqueId()});
}

bool goesBefore(const AddressCompletion& a, const AddressCompletion& b)
{
    return std::tie(a.place, a.nameKey, a.address) < std::tie(b.place, b.nameKey, b.address);
}

} // namespace

std::vector<AddressCompletion> addressCompletions(ZRRoster& roster, const std::string& text)
{
    std::vector<AddressCompletion> found;
    const auto terms = termsOf(text);
    if (terms.empty())
        return found;
    const auto element = ZRPerson::searchElementForTerms(ZRPerson::recordClassDescription, terms);
    const auto people = roster.recordsMatchingSearchElement(element);
    roster.prefetchDataForRecords(people);
    for (const auto& person : people)
        addCompletions(found, static_cast<ZRPerson&>(*person), terms);
    std::ranges::sort(found, goesBefore);
    return found;
}
