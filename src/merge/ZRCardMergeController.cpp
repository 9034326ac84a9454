// How the review of an import goes from card to card, and what it does at its end.
#include "merge/ZRCardMergeController.h"

#include "commands/ApplicationHost.h"
#include "platform/files/Resources.h"
#include "store/ZRRoster.h"

using platform::Ref;

ZRCardMergeController::ZRCardMergeController(const ZRRecordList& cards, Duplicates duplicates,
    Ref<ZRGroup> group, const Ref<ZRRoster>& roster, bool selectGroup)
    : _duplicates(std::move(duplicates))
    , _group(std::move(group))
    , _doSelectGroup(selectGroup)
    , _mergeHelper(ZRNewMerger::initWithGroup(_group))
    , _targetRoster(roster)
{
    _mergeHelper->setTargetRoster(_targetRoster);
    for (const auto& card : cards)
        if (_duplicates.contains(card->uniqueId())) {
            _cardsToMerge.push_back(card);
        } else {
            _mergeHelper->addPerson(platform::refCast<ZRPerson>(card));
            _cardsToAdd.push_back(card);
        }
    _mergeCount = _cardsToMerge.size();
}

ZRCardMergeController::~ZRCardMergeController() = default;

void ZRCardMergeController::setTargetSource(ZRImportSource* source)
{
    _source = source;
    _mergeHelper->setTargetPersistentStore(source ? source->persistentStore() : nullptr);
}

void ZRCardMergeController::setRecordDelegate(ZRRecordDecisions* delegate) { _recordDelegate = delegate; }

// ---- what the user does

void ZRCardMergeController::go()
{
    if (!_isDone)
        showNext();
}

void ZRCardMergeController::changeAction(int tag)
{
    if (tag >= keepOld && tag <= keepBoth)
        _selectedAction = tag;
}

void ZRCardMergeController::ok(Extent extent)
{
    if (_isDone)
        return;
    do
        apply();
    while (extent == Extent::allCards && !_cardsToMerge.empty());
    showNext();
}

void ZRCardMergeController::cancel()
{
    forgetCards();
    _cardsToMerge.clear();
    _isDone = true;
}

std::string ZRCardMergeController::buttonTitle(Extent extent) const
{
    const bool isLast = extent == Extent::allCards || _cardsToMerge.size() <= 1;
    return platform::StringTables::shared().string(isLast ? "REVIEW_OKAY" : "REVIEW_NEXT", "ZRStrings");
}

// ---- from card to card

void ZRCardMergeController::showNext()
{
    if (_cardsToMerge.empty())
        return _done();
    _importedCard = platform::refCast<ZRPerson>(_cardsToMerge.front());
    _originalCard = _duplicates.at(_importedCard->uniqueId());
    _changes.clear();
    _updatedCard = _mergeHelper->emulateUpdateCard(*_originalCard, *_importedCard, _changes);
}

void ZRCardMergeController::forgetCards()
{
    // A preview is kept by its roster, not by its handle.
    if (_updatedCard)
        _updatedCard->roster()->removeRecord(_updatedCard);
    _originalCard = _importedCard = _updatedCard = nullptr;
    _changes.clear();
}

void ZRCardMergeController::apply()
{
    if (_cardsToMerge.empty())
        return;
    const auto imported = platform::refCast<ZRPerson>(_cardsToMerge.front());
    _cardsToMerge.erase(_cardsToMerge.begin());
    if (_recordDelegate) {
        constexpr int decisions[] = {2, 1, 4, 3};
        _recordDelegate->setDecision(decisions[_selectedAction], imported);
    } else {
        merge(_duplicates.at(imported->uniqueId()), imported);
    }
    forgetCards();
}

void ZRCardMergeController::merge(const Ref<ZRPerson>& original, const Ref<ZRPerson>& imported)
{
    if (_selectedAction == updateOld)
        _mergeHelper->updateCard(original, imported);
    if (_selectedAction == replaceOld || _selectedAction == keepBoth)
        _mergeHelper->addPerson(imported);
    if (_selectedAction == replaceOld)
        _mergeHelper->deletePerson(original);
}

// ---- the end

void ZRCardMergeController::_done()
{
    if (std::exchange(_isDone, true))
        return;
    const auto host = ApplicationHost::shared();
    tellSource();
    if (_recordDelegate)
        _recordDelegate->applyDecisions();
    if (!_mergeHelper->addedPeople().empty() || !_mergeHelper->updatedPeople().empty()) {
        host->clearLastImportGroup();
        host->setShowsLastImportGroup(true);
    }
    _mergeHelper->applyChanges();
    if (!_mergeHelper->failure().domain.empty())
        host->presentFailure(_mergeHelper->failure());
    for (const auto* people : {&_mergeHelper->appliedAddedPeople(), &_mergeHelper->appliedUpdatedPeople()})
        for (const auto& person : *people)
            if (person)
                _selection.push_back(person);
    if (_doSelectGroup && _group)
        host->selectGroups({_group});
    host->selectMembers(_selection);
}

void ZRCardMergeController::tellSource()
{
    if (!_source)
        return;
    _source->didImportPeople(_mergeHelper->addedPeople(), _group);
    _source->didImportPeople(_mergeHelper->updatedPeople(), _group);
}
