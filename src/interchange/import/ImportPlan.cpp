// How an import decides about its cards.
#include "interchange/import/ImportPlan.h"

#include "core/ZRConstants.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <array>

using platform::Ref;

namespace interchange {

namespace {

using Fate = ImportDecision::Fate;

bool isOfOneWriting(std::string_view line)
{
    constexpr std::array<std::string_view, 4> names{"UID", "X-ZRUID", "REV", "PRODID"};
    return std::ranges::any_of(names, [&](std::string_view name) {
        return line.starts_with(name) && line.size() > name.size()
            && (line[name.size()] == ':' || line[name.size()] == ';');
    });
}

} // namespace

std::uint64_t digestOfCard(std::string_view text)
{
    constexpr std::uint64_t prime = 0x100000001b3;
    std::uint64_t digest = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (const auto line = text.substr(at, end - at); !isOfOneWriting(line))
            digest = (digest ^ std::hash<std::string_view>{}(line)) * prime;
        at = end + 1;
    }
    return digest;
}

ImportPlan::ImportPlan(Ref<ZRNewMerger> merger, DuplicateHandling handling)
    : _merger(std::move(merger)), _handling(handling), _namesakes(_merger)
{
}

// ---- looking

void ImportPlan::lookAt(const std::vector<Card>& cards)
{
    _looks.clear();
    _candidates.clear();
    if (_handling == DuplicateHandling::both || cards.empty())
        return;
    _properties = _merger->allPersonProperties();
    _propertiesOfCards = ZRRecord::propertyTypesWithRoster(
        ZRPerson::recordClassDescription, cards.front().person->nts_Roster());
    for (const auto& card : cards)
        if (const auto key = Namesakes::keyOf(*card.person))
            _looks.emplace(
                card.person.get(), Look{*key, _namesakes.find(*key, *card.person), std::nullopt, {}});
    readCandidates();
    for (const auto& card : cards) {
        const auto at = _looks.find(card.person.get());
        if (at == _looks.end() || at->second.there.ids.empty())
            continue;
        Look& look = at->second;
        look.content.emplace(card.person, _propertiesOfCards);
        look.same = findSame(look);
        if (!look.same.empty())
            _taken.insert(look.same);
    }
}

/// All at once, and their values in a few fetches.
void ImportPlan::readCandidates()
{
    std::vector<std::string> ids;
    for (const auto& [person, look] : _looks)
        for (const auto& id : look.there.ids)
            if (_candidates.try_emplace(id).second)
                ids.push_back(id);
    if (ids.empty())
        return;
    const auto roster = _merger->targetRoster();
    const ZRRecordList records = roster->recordsForUniqueIds(ids);
    roster->prefetchDataForRecords(records);
    for (const auto& record : records)
        _candidates[record->uniqueId()].person = platform::refCast<ZRPerson>(record);
}

/// Null for one who is not there any more.
ImportPlan::Candidate* ImportPlan::candidate(const std::string& id)
{
    const auto [at, isNew] = _candidates.try_emplace(id);
    if (isNew)
        at->second.person = platform::refCast<ZRPerson>(_merger->targetRoster()->recordForUniqueId(id));
    return at->second.person ? &at->second : nullptr;
}

const CardContent& ImportPlan::contentOf(Candidate& candidate)
{
    if (!candidate.content)
        candidate.content.emplace(candidate.person, _properties);
    return *candidate.content;
}

// ---- choosing

bool ImportPlan::isKnown(const CardContent& existing, const CardContent& incoming) const
{
    return _handling == DuplicateHandling::update ? existing.knowsAllOf(incoming) : existing.says(incoming);
}

std::string ImportPlan::findSame(const Look& look)
{
    std::string same;
    for (const auto& id : look.there.ids) {
        Candidate* const there = candidate(id);
        if (!there || !contentOf(*there).says(*look.content))
            continue;
        same = id;
        if (!_taken.contains(id))
            break;
    }
    return same;
}

/// Of those who belong to no card yet the first who shares an address, else the one whom the merger names, or
/// would name without the others. Empty for none.
std::string ImportPlan::findFree(const Look& look)
{
    for (std::size_t at = 0; at < look.there.sharing; ++at)
        if (isFree(look.there.ids[at]))
            return look.there.ids[at];
    const auto all = _merger->uniqueIdsForCollisionMapKey(look.key);
    const auto at = std::find_if(all.rbegin(), all.rend(), [&](const std::string& id) { return isFree(id); });
    return at == all.rend() ? std::string() : *at;
}

ImportDecision ImportPlan::decide(const Card& card)
{
    const auto at = _looks.find(card.person.get());
    if (at == _looks.end())
        return {};
    const bool isTwice = card.digest != 0 && !_digests.insert(card.digest).second;
    return isTwice ? ImportDecision{Fate::same, nullptr, {}} : decideAbout(at->second, card);
}

ImportDecision ImportPlan::decideAbout(const Look& look, const Card& card)
{
    if (look.there.ids.empty())
        return {};
    if (!look.same.empty())
        return {Fate::same, candidate(look.same)->person, {}};
    if (_handling == DuplicateHandling::keep) {
        const auto at =
            std::ranges::find_if(look.there.ids, [&](const std::string& id) { return candidate(id); });
        return at == look.there.ids.end() ? ImportDecision()
                                          : ImportDecision{Fate::kept, candidate(*at)->person, {}};
    }
    if (const std::string id = findFree(look); !id.empty())
        return change(id, look, card);
    // Everybody of that name belongs to another card. What one of them has taken in needs no card of its own.
    for (const auto& id : look.there.ids)
        if (Candidate* const there = candidate(id); there && isKnown(contentOf(*there), *look.content))
            return {Fate::same, there->person, {}};
    return {};
}

// ---- changing

ImportDecision ImportPlan::change(const std::string& id, const Look& look, const Card& card)
{
    Candidate& existing = *candidate(id);
    _taken.insert(id);
    if (isKnown(contentOf(existing), *look.content))
        return {Fate::same, existing.person, {}};
    if (_handling == DuplicateHandling::update)
        return update(existing, look, card);
    ImportDecision decision{
        Fate::replaced, existing.person, changesBetween(contentOf(existing), *look.content)};
    existing = {card.person, look.content};
    return decision;
}

// Entries of the card may replace each other until what was there is there again.
ImportDecision ImportPlan::update(Candidate& existing, const Look& look, const Card& card)
{
    if (contentOf(existing).knowsNoteOf(*look.content))
        card.person->removeValueForProperty(zr::kZRNoteProperty);
    CardContent after = preview(existing, look, card);
    ImportDecision decision{Fate::updated, existing.person, changesBetween(contentOf(existing), after)};
    if (decision.changes.empty())
        return {Fate::same, existing.person, {}};
    for (auto& displaced : displacedValues(*look.content, after))
        decision.changes.push_back(std::move(displaced));
    existing.content = std::move(after);
    return decision;
}

CardContent ImportPlan::preview(Candidate& existing, const Look& look, const Card& card)
{
    ZRPropertyChanges unused;
    const auto made = _merger->emulateUpdateCard(*existing.person, *card.person, unused);
    CardContent after(made, _properties);
    const auto& picture = look.content->picture();
    after.setPicture(picture.isNothing() ? contentOf(existing).picture() : picture);
    made->roster()->removeRecord(made);
    return after;
}

} // namespace interchange
