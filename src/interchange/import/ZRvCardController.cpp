// One import: from data to people, and from people to the disk.
#include "interchange/import/ZRvCardController+State.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLog.h"
#include "core/ZRPerson.h"
#include "interchange/import/ZRImportServices.h"
#include "objectstore/StoreFetch.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"

#include <algorithm>

using interchange::CardFeed;
using interchange::ReadCard;
using platform::Ref;

namespace {

/// What one transaction holds at most: so many cards, or so many bytes of their text, pictures included.
constexpr std::size_t kCardsInTransaction = 2000;
constexpr std::size_t kBytesInTransaction = 64U << 20;
/// How many cards there are between two reports of progress.
constexpr std::size_t kCardsBetweenReports = 10;
/// Behind an import of so many, the text index is in so many pieces that edits would tidy it for long.
constexpr std::size_t kManyCards = 20000;

/// A roster that consists of what was just imported is made ready for searches and edits.
void tidyAfter(std::size_t added, ZRRoster& roster)
{
    if (added < kManyCards)
        return;
    const auto context = roster.managedObjectContext();
    const auto people = context->countFetch(objectstore::StoreFetch(contactSlots().entity));
    if (!people || *people > 2 * added)
        return;
    if (const auto merged = context->mergeTextIndex(); !merged)
        platform::log("The text index stays in many pieces: " + merged.error().text);
}

} // namespace

ZRImportServices& ZRImportServices::registered()
{
    static auto* const services = new ZRImportServices;
    return *services;
}

ZRvCardController::ZRvCardController(Ref<ZRRoster> target) : _state(std::make_unique<State>())
{
    _state->target = std::move(target);
}

ZRvCardController::~ZRvCardController() { cleanUp(); }

void ZRvCardController::setPreparation(Preparation preparation) { _state->preparation = preparation; }
void ZRvCardController::setOutcome(Outcome outcome) { _state->outcome = outcome; }
void ZRvCardController::setGroupsAsked(const GroupsAsked& asked) { _state->groupsAsked = asked; }
void ZRvCardController::setDuplicateHandling(interchange::DuplicateHandling handling)
{
    _state->handling = handling;
}
void ZRvCardController::cancel() { _state->isCancelled = true; }
const ZRvCardImport& ZRvCardController::result() const { return _state->result; }
bool ZRvCardController::hasImportErrors() const { return _state->hasImportErrors; }

// ---- the work

bool ZRvCardController::importVCards()
{
    const double start = platform::Clock::current().monotonic();
    if (!openRosters())
        return false;
    const CardFeed::Form form =
        _state->preparation == Preparation::full ? CardFeed::Form::prepared : CardFeed::Form::raw;
    const auto& asked = _state->groupsAsked;
    _state->feed.emplace(
        _state->sources, *_state->surroundings, CardFeed::Options{form, {asked.cards, asked.categories}});
    if (importBegan)
        importBegan(_state->totalBytes);
    while (ReadCard* const card = nextCard())
        importCard(*card);
    _state->result.reports = _state->feed->reports();
    nameUnread();
    _state->feed.reset();
    if (!_state->isCancelled && commit(Rest::none) && _state->outcome == Outcome::saved)
        tidyAfter(_state->result.added, *_state->roster);
    forgetPeople();
    if (importFinished)
        importFinished();
    if (ZRPerfFlagIsSet(ZRPerfFlag::importVCard))
        ZRPerfLog("[LogImportVCardTimes] Time to import vCard data = {:3.3f}",
            platform::Clock::current().monotonic() - start);
    return !_state->hasImportErrors && !_state->isCancelled;
}

bool ZRvCardController::openRosters()
{
    auto& state = *_state;
    if (state.outcome == Outcome::readOnly) {
        state.roster = ZRRoster::emptyMemoryBackedRoster();
    } else {
        const auto& defaultTarget = ZRImportServices::registered().defaultTarget;
        if (!state.target)
            state.target = defaultTarget ? defaultTarget() : ZRRoster::sharedRoster();
        state.roster = state.target ? state.target->parallelUniverseRoster() : nullptr;
    }
    if (!state.roster)
        return fail({"ZRRosterErrorDomain", 1, "there is no roster to import into"});
    locked(*state.roster, ZRAccess::write, [&]() ZR_NTS { state.roster->nts_SetKeepsPictures(true); });
    state.surroundings.emplace(*state.roster);
    if (state.outcome == Outcome::saved)
        state.groups.emplace(state.roster);
    makePlan();
    return findGroup();
}

bool ZRvCardController::findGroup()
{
    auto& state = *_state;
    if (!state.group || state.outcome == Outcome::readOnly)
        return true;
    state.groupHere = platform::refCast<ZRGroup>(state.roster->recordForUniqueId(state.group->uniqueId()));
    return state.groupHere || fail({"ZRRosterErrorDomain", 1, "the group is not in the roster"});
}

ReadCard* ZRvCardController::nextCard()
{
    return _state->isCancelled || !_state->result.failure.domain.empty() ? nullptr : _state->feed->next();
}

void ZRvCardController::importCard(ReadCard& card)
{
    auto& state = *_state;
    const auto person = card.values ? card.values->makePerson(*state.roster) : nullptr;
    const bool isGroup = card.group.has_value();
    if (card.values && !person)
        card.refusal = "the roster takes no new card";
    if (cardWasRead)
        cardWasRead({state.nameOf(card), card.number, person.get(), card.refusal});
    if (importContinued && ++state.cardsRead % kCardsBetweenReports == 0)
        importContinued(card.bytesDone);
    if (!person && !isGroup)
        refuse({state.nameOf(card), card.number, card.line, card.firstLine, card.refusal});
    if (person || isGroup || cardWasDecided)
        keep(card, person);
    if (state.peopleWaiting >= kCardsInTransaction || state.bytesWaiting >= kBytesInTransaction)
        commit();
}

void ZRvCardController::keep(ReadCard& card, const Ref<ZRPerson>& person)
{
    auto& state = *_state;
    State::Waiting waiting{{person, card.digest}, card.file, card.number};
    waiting.line = card.line;
    waiting.uid = std::move(card.uid);
    waiting.categories = std::move(card.categories);
    waiting.group = std::move(card.group);
    if (cardWasDecided) {
        waiting.firstLine = std::move(card.firstLine);
        waiting.text = std::move(card.text);
        waiting.refusal = std::move(card.refusal);
    }
    state.waiting.push_back(std::move(waiting));
    state.peopleWaiting += person ? 1 : 0;
    state.bytesWaiting += person ? card.length : 0;
}

void ZRvCardController::refuse(ZRvCardRefusal refusal)
{
    _state->hasImportErrors = true;
    ++_state->result.refused;
    if (_state->result.refusals.size() < ZRvCardImport::kMostRefusals)
        _state->result.refusals.push_back(std::move(refusal));
}

/// A file that cannot be read ends the import: it and those behind it are named.
void ZRvCardController::nameUnread()
{
    const auto& unreadable = _state->feed->unreadable();
    if (!unreadable)
        return;
    const auto& sources = _state->sources;
    refuse({sources[unreadable->file].name, 0, 0, "", unreadable->reason});
    for (std::size_t file = unreadable->file + 1; file < sources.size(); ++file)
        refuse({sources[file].name, 0, 0, "", "not read: the import ended before it"});
}

// ---- the saves

bool ZRvCardController::commit(Rest rest)
{
    auto& state = *_state;
    if (!state.result.failure.domain.empty())
        return false;
    settleCards();
    if (rest == Rest::none && state.groups)
        makeGroups();
    if (state.outcome == Outcome::saved && !state.roster->save()) {
        auto error = state.roster->lastSaveError();
        if (error.domain.empty())
            error = {"ZRRosterErrorDomain", 1, "the roster could not be saved"};
        return fail(std::move(error));
    }
    state.result.added += state.underWay.added;
    state.result.updated += state.underWay.updated;
    state.result.same += state.underWay.same;
    state.result.kept += state.underWay.kept;
    state.result.groups += state.underWay.groups;
    forgetPeople();
    return true;
}

void ZRvCardController::makeGroups()
{
    auto& reports = _state->result.reports;
    _state->groups->finish([&](const interchange::ImportGroups::Unknown& unknown) {
        if (unknown.file < reports.size())
            reports[unknown.file].add(
                unknown.number, unknown.line, vcard::prepare::Finding::memberUnknown, unknown.member);
    });
}

/// People that were read only leave the roster in memory, too.
void ZRvCardController::forgetPeople()
{
    auto& state = *_state;
    if (state.outcome == Outcome::readOnly)
        for (const auto& waiting : state.waiting)
            if (waiting.card.person)
                state.drop(*waiting.card.person);
    state.waiting.clear();
    state.peopleWaiting = 0;
    state.bytesWaiting = 0;
    state.merger = nullptr;
    state.underWay = {};
}

bool ZRvCardController::fail(platform::Error error)
{
    _state->hasImportErrors = true;
    _state->result.failure = std::move(error);
    return false;
}
