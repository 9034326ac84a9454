// How mail addresses are found and ranked for a few typed letters.
#include "AddressCompletion.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/text/Compare.h"
#include "platform/text/Digits.h"
#include "platform/text/Fold.h"
#include "search/ZRPeopleMatching.h"
#include "search/ZRSearchElement.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

using platform::foldCaseAndDiacritics;
using platform::Ref;

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

/// A card with the text in it, and the texts that say how well it fits.
struct Candidate {
    std::string uniqueId;
    std::string name, nameKey;
    /// The name and the nickname, folded.
    std::string foldedName;
    /// None of its addresses stands better.
    MatchPlace bestPlace;
};

/// Where a term stands for one address of the card; absent when it only stands in another address.
std::optional<MatchPlace> placeOf(const std::string& term, const Candidate& card, const std::string& address,
    const std::vector<std::string>& allAddresses)
{
    if (startsWord(card.foldedName, term))
        return MatchPlace::startOfNameWord;
    if (address.starts_with(term))
        return MatchPlace::startOfAddress;
    const auto holds = [&](const std::string& text) { return text.find(term) != std::string::npos; };
    if (!holds(address) && !holds(card.foldedName) && std::ranges::any_of(allAddresses, holds))
        return std::nullopt;
    return MatchPlace::inside;
}

/// Finds the cards first, by what is in the store's indexes and in their names; reads addresses from the most
/// promising card on, and stops when no other can be better than those that it has.
class Completion {
public:
    Completion(ZRRoster& roster, std::vector<std::string> terms, std::size_t limit)
        : _roster(roster), _terms(std::move(terms)), _limit(limit)
    {
    }

    std::vector<AddressCompletion> run()
    {
        findCandidates();
        const std::size_t batch = _limit > 0 ? _limit : _candidates.size();
        for (std::size_t from = 0; from < _candidates.size() && !hasEnough(_candidates[from]);) {
            const std::size_t to = std::min(from + batch, _candidates.size());
            readAddresses(from, to);
            from = to;
        }
        std::ranges::sort(_found, {}, rankOf);
        if (_limit > 0 && _found.size() > _limit)
            _found.resize(_limit);
        return std::move(_found);
    }

private:
    static std::tuple<MatchPlace, const std::string&, const std::string&> rankOf(const AddressCompletion& one)
    {
        return {one.place, one.nameKey, one.address};
    }

    void findCandidates()
    {
        const auto wanted = ZRPerson::searchElementForTerms(ZRPerson::recordClassDescription, _terms);
        for (auto& person : ZRNamesOfPeopleMatching(_roster, wanted))
            addCandidate(std::move(person));
        const auto byName =
            std::ranges::count(_candidates, MatchPlace::startOfNameWord, &Candidate::bestPlace);
        if (_candidates.size() > _limit && static_cast<std::size_t>(byName) < _limit)
            lookForStartsOfAddresses();
        std::ranges::sort(_candidates, {}, [](const Candidate& card) {
            return std::tuple<MatchPlace, const std::string&>(card.bestPlace, card.nameKey);
        });
    }

    void addCandidate(ZRFoundPerson person)
    {
        Candidate card{
            std::move(person.uniqueId), std::move(person.name), {}, {}, MatchPlace::startOfAddress};
        card.nameKey = platform::collationKey(card.name);
        card.foldedName = foldCaseAndDiacritics(card.name + " " + person.nickname);
        const bool isByName =
            std::ranges::all_of(_terms, [&](const auto& term) { return startsWord(card.foldedName, term); });
        if (isByName)
            card.bestPlace = MatchPlace::startOfNameWord;
        _candidates.push_back(std::move(card));
    }

    /// Where an index says that no address begins so, none need be read to know it.
    void lookForStartsOfAddresses()
    {
        std::vector<Ref<ZRSearchElement>> starts;
        for (const auto& term : _terms)
            starts.push_back(ZRPerson::searchElementForProperty(zr::kZREmailProperty, std::nullopt,
                std::nullopt, platform::Value(term), kZRPrefixMatchCaseInsensitive));
        const auto element = ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, starts);
        const auto found = ZRIdsOfPeopleMatching(_roster, element);
        const std::unordered_set<std::string> ids(found.begin(), found.end());
        for (auto& card : _candidates)
            if (card.bestPlace == MatchPlace::startOfAddress && !ids.contains(card.uniqueId))
                card.bestPlace = MatchPlace::inside;
    }

    /// Whether as many as are wanted go before whatever this card and those behind it have.
    bool hasEnough(const Candidate& next) const
    {
        const auto goesBefore = [&](const AddressCompletion& one) {
            return std::tie(one.place, one.nameKey) < std::tie(next.bestPlace, next.nameKey);
        };
        return _limit > 0 && static_cast<std::size_t>(std::ranges::count_if(_found, goesBefore)) >= _limit;
    }

    void readAddresses(std::size_t from, std::size_t to)
    {
        std::unordered_map<std::string, const Candidate*> cards;
        std::vector<std::string> ids;
        for (std::size_t i = from; i < to; ++i) {
            ids.push_back(_candidates[i].uniqueId);
            cards.emplace(ids.back(), &_candidates[i]);
        }
        const auto people = _roster.recordsForUniqueIds(ids);
        _roster.prefetchDataForRecords(people, {zr::kZREmailProperty});
        for (const auto& person : people)
            addCompletions(*cards.at(person->uniqueId()), *person);
    }

    void addCompletions(const Candidate& card, const ZRRecord& person)
    {
        const platform::Value emails = person.valueForProperty(zr::kZREmailProperty);
        const auto* const entries = emails.as<ZRMultiValue>();
        if (!entries)
            return;
        std::vector<std::string> addresses;
        for (ZRIndex i = 0; i < entries->count(); ++i)
            addresses.push_back(foldCaseAndDiacritics(entries->valueAtIndex(i).asText()));
        for (ZRIndex i = 0; i < entries->count(); ++i)
            if (const auto place = worstPlace(card, addresses[static_cast<std::size_t>(i)], addresses))
                _found.push_back({*place, std::string(entries->valueAtIndex(i).asText()), card.name,
                    card.nameKey, ZRLocalizedPropertyOrLabel(entries->labelAtIndex(i)), card.uniqueId});
    }

    std::optional<MatchPlace> worstPlace(
        const Candidate& card, const std::string& address, const std::vector<std::string>& allAddresses) const
    {
        auto worst = MatchPlace::startOfNameWord;
        for (const auto& term : _terms) {
            const auto place = placeOf(term, card, address, allAddresses);
            if (!place)
                return std::nullopt;
            worst = std::max(worst, *place);
        }
        return worst;
    }

    ZRRoster& _roster;
    const std::vector<std::string> _terms;
    const std::size_t _limit;
    std::vector<Candidate> _candidates;
    std::vector<AddressCompletion> _found;
};

} // namespace

std::vector<AddressCompletion> addressCompletions(
    ZRRoster& roster, const std::string& text, std::size_t limit)
{
    auto terms = termsOf(text);
    if (terms.empty())
        return {};
    return Completion(roster, std::move(terms), limit).run();
}
