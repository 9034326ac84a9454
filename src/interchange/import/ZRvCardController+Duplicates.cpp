// What an import does about people who are in the roster already.
#include "interchange/import/ZRvCardController+State.h"

#include "commands/ApplicationHost.h"
#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "merge/ZRNewMerger.h"
#include "objectstore/SaveObserver.h"
#include "objectstore/StoreContext.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

#include <algorithm>

using interchange::DuplicateHandling;
using interchange::ImportDecision;
using interchange::ImportPlan;
using platform::Ref;
using platform::Value;

namespace {

/// How many cards lose the mark in one transaction.
constexpr std::size_t kCardsUnmarkedAtOnce = 2000;

DuplicateHandling preferredHandling()
{
    const bool keepsBoth = platform::UserDefaults::standard().boolForKey(zr::kZRDontAutoMerge);
    return keepsBoth ? DuplicateHandling::both : DuplicateHandling::update;
}

Ref<ZRNewMerger> mergerFor(const Ref<ZRRoster>& roster)
{
    auto merger = ZRNewMerger::initWithGroup(nullptr);
    merger->setTargetRoster(roster);
    return merger;
}

/// The mark says nothing about the card's name, so no hook runs.
void mark(ZRRecord& card)
{
    locked(*card.nts_Roster(), ZRAccess::write, [&] {
        const auto& flags = contactSlots().displayFlags;
        if (ZROSRecord* const contact = card.zrDatabaseImpl())
            contact->setPrimitiveValue(flags, Value(contact->integer(flags) | personFlags::kLastImport));
    });
}

std::vector<std::string> idsOfMarked(ZRManagedObjectContext& context)
{
    objectstore::StoreFetch fetch(contactSlots().entity,
        ZROSRecord::compoundPredicateForKey("displayFlags", ZRNullOption::andNotNull,
            ZROSRecord::bitwiseAndPredicateForKey(
                "displayFlags", personFlags::kLastImport, 0, objectstore::Comparator::notEqual)));
    const auto found = context.fetchValues(fetch, "uniqueId");
    std::vector<std::string> ids;
    if (found)
        for (const Value& id : *found)
            ids.emplace_back(id.asText());
    return ids;
}

/// Keeps the observer of a store's saves away from those that change nothing people would take back.
class Unobserved {
public:
    explicit Unobserved(objectstore::StoreCoordinator& coordinator)
        : _coordinator(coordinator)
        , _store(coordinator.firstStore())
        , _observer(_store ? objectstore::saveObserver(coordinator, *_store) : nullptr)
    {
        exchange(nullptr);
    }
    ~Unobserved() { exchange(_observer); }
    Unobserved(const Unobserved&) = delete;
    Unobserved& operator=(const Unobserved&) = delete;

private:
    void exchange(objectstore::SaveObserver* observer)
    {
        if (_observer)
            objectstore::setSaveObserver(_coordinator, *_store, observer);
    }

    objectstore::StoreCoordinator& _coordinator;
    objectstore::PersistentStore* const _store;
    objectstore::SaveObserver* const _observer;
};

/// The card takes the other's place: in its groups, and as Me.
void takePlaceOf(const Ref<ZRPerson>& former, const Ref<ZRPerson>& card, ZRRoster& roster)
{
    for (const auto& parent : former->parentGroups())
        if (const auto group = platform::refCast<ZRGroup>(parent))
            group->addMember(*card);
    const auto me = roster.me();
    if (me && me->uniqueId() == former->uniqueId())
        roster.setMe(card);
    roster.removeRecord(former);
}

} // namespace

void ZRvCardController::State::drop(ZRPerson& card)
{
    card.setImageData(Value());
    roster->removeRecord(Ref<ZRRecord>(&card));
}

/// Those who are there are looked for on the store that is written, or, where nothing is, beside it.
void ZRvCardController::makePlan()
{
    auto& state = *_state;
    const auto handling = state.handling.value_or(preferredHandling());
    if (handling == DuplicateHandling::both || !state.target)
        return;
    const auto roster =
        state.outcome == Outcome::saved ? state.roster : state.target->parallelUniverseRoster();
    state.plan.emplace(mergerFor(roster), handling);
}

void ZRvCardController::settleCards()
{
    auto& state = *_state;
    if (state.plan) {
        std::vector<ImportPlan::Card> cards;
        for (const auto& waiting : state.waiting)
            if (waiting.card.person)
                cards.push_back(waiting.card);
        state.plan->lookAt(cards);
    }
    for (const auto& waiting : state.waiting) {
        const auto& person = waiting.card.person;
        const auto decision = state.plan && person ? state.plan->decide(waiting.card) : ImportDecision();
        if (cardWasDecided)
            cardWasDecided({state.sources[waiting.file].name, waiting.number, waiting.line, waiting.firstLine,
                waiting.text, person.get(), waiting.refusal, decision,
                waiting.group ? &*waiting.group : nullptr});
        state.underWay.groups += waiting.group.has_value();
        if (waiting.group && state.groups)
            state.groups->addCard(*waiting.group, waiting.uid, waiting.file, waiting.number, waiting.line);
        if (!person)
            continue;
        const auto stays = carryOut(decision, person);
        if (stays && state.groups)
            state.groups->addPerson(*stays, waiting.uid, waiting.categories);
    }
}

/// Answers who stands for the card in the roster from now on; null where nobody does.
Ref<ZRPerson> ZRvCardController::carryOut(const ImportDecision& decision, const Ref<ZRPerson>& card)
{
    using Fate = ImportDecision::Fate;
    auto& state = *_state;
    auto& done = state.underWay;
    const bool isNew = decision.fate == Fate::added || decision.fate == Fate::replaced;
    ++(decision.fate == Fate::added       ? done.added
            : decision.fate == Fate::same ? done.same
            : decision.fate == Fate::kept ? done.kept
                                          : done.updated);
    if (state.outcome == Outcome::readOnly)
        return nullptr;
    if (decision.fate == Fate::replaced)
        takePlaceOf(decision.existing, card, *state.roster);
    if (decision.fate == Fate::updated) {
        if (!state.merger)
            state.merger = mergerFor(state.roster);
        state.merger->updateCard(decision.existing, card);
    }
    const Ref<ZRPerson> person = isNew ? card : decision.existing;
    if (isNew || decision.fate == Fate::updated) {
        beginLastImport();
        mark(*person);
    }
    if (state.groupHere && person && decision.fate != Fate::kept)
        state.groupHere->addMember(*person);
    if (!isNew)
        state.drop(*card);
    return decision.fate == Fate::kept ? nullptr : person;
}

// In transactions of their own: there may be many, and nothing is lost when the import ends before its first.
// They are saved past the roster: that somebody came with an import says nothing about when the card was
// changed.
void ZRvCardController::beginLastImport()
{
    auto& state = *_state;
    if (std::exchange(state.hasBegunLastImport, true))
        return;
    const auto other = state.target->parallelUniverseRoster();
    locked(*other, ZRAccess::write, [&] {
        const auto& flags = contactSlots().displayFlags;
        const auto context = other->managedObjectContext();
        const Unobserved unobserved(*context->coordinator());
        const auto ids = idsOfMarked(*context);
        for (std::size_t from = 0; from < ids.size(); from += kCardsUnmarkedAtOnce) {
            const auto to = std::min(from + kCardsUnmarkedAtOnce, ids.size());
            const std::vector<std::string> some(ids.begin() + static_cast<std::ptrdiff_t>(from),
                ids.begin() + static_cast<std::ptrdiff_t>(to));
            for (const auto& contact : context->zrContactsForUniqueIDs(some)) {
                // 0 stays 0: the history tells a card that says nothing of its flags from one that says none.
                contact->setPrimitiveValue(flags, Value(contact->integer(flags) & ~personFlags::kLastImport));
            }
            if (const auto saved = context->save(); !saved)
                return platform::log(fmt::format("Cannot clear the last import: {}", saved.error().text));
        }
    });
    static_cast<void>(state.roster->managedObjectContext()->catchUp());
    if (state.target->isSharedInstance()) {
        ApplicationHost::shared()->clearLastImportGroup();
        ApplicationHost::shared()->setShowsLastImportGroup(true);
    }
}
