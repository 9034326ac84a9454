// `roster export`: cards in a form for other programs, some at a time.
#include "Command.h"
#include "Destination.h"
#include "ExportLosses.h"
#include "Listing.h"
#include "Lookup.h"
#include "Rules.h"

#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "interchange/vcard/VCard40.h"
#include "search/ZRSearchElement.h"
#include "store/ZRIdsOfPeople.h"

#include <fmt/format.h>

#include <functional>
#include <unordered_set>

namespace {

/// As many cards are held in memory with all that is in them.
constexpr std::size_t kCardsAtOnce = 500;

using Ids = std::vector<std::string>;

std::string formatOf(const Options& options)
{
    return !options.format.empty() ? options.format : options.json ? "json" : "vcard3";
}

bool isVCard(const Options& options) { return formatOf(options).starts_with("vcard"); }

ZRRecordList found(const Options& options, ZRRoster& roster)
{
    ZRRecordList people = roster.recordsMatchingSearchElement(elementOfOptions(options, roster));
    // An id is no text in a card.
    return people.empty() ? roster.peopleMatchingText(joined(options.words)) : people;
}

ZRRecordList foundInGroup(const Options& options, ZRRoster& roster)
{
    const auto members = groupNamed(roster, options.group)->members();
    if (options.words.empty())
        return members;
    const std::unordered_set<platform::Ref<ZRRecord>> known(members.begin(), members.end());
    ZRRecordList people = found(options, roster);
    std::erase_if(people, [&](const auto& person) { return !known.contains(person); });
    return people;
}

/// Whom the options mean, in the order of a list. All cards of a roster as vCards have no order that anybody
/// waits for, and are many.
Ids wanted(const Options& options, ZRRoster& roster)
{
    if (options.group.empty() && options.words.empty())
        return ZRIdsOfPeople(roster, isVCard(options) ? std::nullopt : std::optional(ZRNameOrder::preferred));
    ZRRecordList people = options.group.empty() ? found(options, roster) : foundInGroup(options, roster);
    if (people.empty())
        throw Failure(exitStatus::refused, "no card matches");
    arrange(options, roster, people);
    Ids ids;
    for (const auto& person : people)
        ids.push_back(person->uniqueId());
    return ids;
}

/// A card that somebody removes meanwhile is passed over.
void forEach(ZRRoster& roster, const Ids& ids, const std::function<void(ZRPerson&)>& take)
{
    for (std::size_t from = 0; from < ids.size(); from += kCardsAtOnce) {
        const auto first = ids.begin() + static_cast<std::ptrdiff_t>(from);
        const auto count = std::min(kCardsAtOnce, ids.size() - from);
        const auto people = roster.recordsForUniqueIds({first, first + static_cast<std::ptrdiff_t>(count)});
        roster.prefetchDataForRecords(people);
        for (const auto& person : people)
            take(static_cast<ZRPerson&>(*person));
    }
}

/// The user's preferences speak of vCards; what other forms hold is only limited by hand.
ExportScope scopeOf(const Options& options)
{
    return {.notes = options.withNotes.value_or(!isVCard(options) || ZRPerson::includeNotesInVCards()),
        .pictures = options.withPhotos.value_or(ZRPerson::includePhotosInVCards())};
}

std::string cardsOfGroups(const Options& options, ZRRoster& roster)
{
    std::string cards;
    if (!options.withGroups)
        return cards;
    const auto groups = options.group.empty() ? groupsByName(roster, GroupKind::ordinary)
                                              : std::vector{groupNamed(roster, options.group)};
    for (const auto& group : groups)
        zrAppendVCard40(*group, cards);
    return cards;
}

void refuseLosses(const Options& options, ZRRoster& roster, const Ids& ids)
{
    ExportLosses losses(formatOf(options), scopeOf(options), roster);
    forEach(roster, ids, [&](ZRPerson& person) { losses.count(person); });
    if (const auto text = losses.notCarried(); !text.empty())
        throw Failure(exitStatus::refused,
            fmt::format("nothing written: {} does not carry {}", formatOf(options), text));
}

void tell(const Options& options, const ExportLosses& losses)
{
    if (const auto text = losses.heldBack(); !text.empty())
        complain(fmt::format("held back: {}", text));
    if (const auto text = losses.notCarried(); !text.empty())
        complain(fmt::format("not carried by {}: {}", formatOf(options), text));
}

} // namespace

int runExport(const Options& options)
{
    if (options.withGroups && formatOf(options) != "vcard4")
        throw Failure(exitStatus::usage, "--with-groups: only vcard4 has cards of groups");
    const auto roster = openRoster(options);
    const Ids ids = wanted(options, *roster);
    if (options.strict)
        refuseLosses(options, *roster, ids);
    const auto writer = cardWriterFor(formatOf(options), scopeOf(options), *roster);
    ExportLosses losses(formatOf(options), scopeOf(options), *roster);
    Destination destination(options.output);
    if (writer->looksFirst())
        forEach(*roster, ids, [&](ZRPerson& person) { writer->look(person); });
    destination.write(writer->begin());
    std::size_t written = 0;
    forEach(*roster, ids, [&](ZRPerson& person) {
        losses.count(person);
        destination.write(writer->card(person));
        ++written;
    });
    destination.write(cardsOfGroups(options, *roster));
    destination.write(writer->end());
    destination.finish();
    tell(options, losses);
    if (destination.isFile())
        print(fmt::format("{} {} in {}\n", written, written == 1 ? "card" : "cards", options.output));
    return exitStatus::done;
}
