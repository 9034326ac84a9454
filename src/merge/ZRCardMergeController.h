// Lets a user decide, card by card, what becomes of imported cards whose people are there already.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "merge/ZRNewMerger.h"

#include <cstddef>
#include <string>
#include <vector>

/// Where imported people go, when that is not the roster alone: it says in which store, and is told of them.
///
/// Ownership: borrowed by the review. Threads: those of the review. Errors: none.
class ZRImportSource {
public:
    virtual ~ZRImportSource() = default;
    /// Null: the only one of the roster.
    virtual objectstore::PersistentStore* persistentStore() { return nullptr; }
    virtual void didImportPeople(const ZRRecordList& people, const platform::Ref<ZRGroup>& group) = 0;
};

/// Who carries decisions out in the place of the review, such as a backup that brings records back.
///
/// Ownership: borrowed by the review. Threads: those of the review. Errors: none.
class ZRRecordDecisions {
public:
    virtual ~ZRRecordDecisions() = default;
    virtual void setDecision(int decision, const platform::Ref<ZRPerson>& forRecord) = 0;
    virtual void applyDecisions() { }
};

/// The review of an import, without its window.
///
/// Cards of people who are not there are added; of the others one at a time is shown, beside the card that is
/// there and beside what an update would make of it. Nothing is written before the last decision, and nothing
/// at all when the user gives up.
///
/// Ownership: shares ownership of the cards and of the roster.
/// Threads:   that of the host.
/// Errors:    those of ZRNewMerger.
class ZR_EXPORT ZRCardMergeController {
public:
    /// What may become of a card; a host shows them as choices with these tags.
    enum Action : int { keepOld = 0, replaceOld = 1, updateOld = 2, keepBoth = 3 };
    using Duplicates = ZRNewMerger::Duplicates;

    /// Reviews `cards`, of which `duplicates` says who is there, by unique id. `roster` holds those who are
    /// there and is a throw-away (see ZRNewMerger). With `selectGroup` the group is selected afterwards.
    ZRCardMergeController(const ZRRecordList& cards, Duplicates duplicates, platform::Ref<ZRGroup> group,
        const platform::Ref<ZRRoster>& roster, bool selectGroup);
    ~ZRCardMergeController();
    ZRCardMergeController(const ZRCardMergeController&) = delete;
    ZRCardMergeController& operator=(const ZRCardMergeController&) = delete;

    /// Absent: nobody else is told.
    void setTargetSource(ZRImportSource* source);
    /// From then on decisions are told and nothing is merged; the numbers are the delegate's: 2 keep, 1
    /// replace, 4 update, 3 both.
    void setRecordDelegate(ZRRecordDecisions* delegate);

    // ---- what the user does

    /// Begins: shows the first card, or ends at once where there is nothing to decide.
    void go();
    /// Chooses what is to become of the card shown, and of those behind it. Other tags are ignored.
    void changeAction(int tag);
    enum class Extent { oneCard, allCards };
    /// Does so with the card shown, or with all that are left, and shows the next or ends.
    void ok(Extent extent);
    /// Gives up: nothing becomes of any card.
    void cancel();

    // ---- what is shown; the cards are absent before `go` and after the end

    const platform::Ref<ZRPerson>& originalCard() const { return _originalCard; }
    const platform::Ref<ZRPerson>& importedCard() const { return _importedCard; }
    /// What an update would make of the original card, and what of it is new or changed.
    const platform::Ref<ZRPerson>& updatedCard() const { return _updatedCard; }
    const ZRPropertyChanges& changes() const { return _changes; }
    int selectedAction() const { return _selectedAction; }
    /// How many cards there are to decide about in all, and how many are left.
    std::size_t mergeCount() const { return _mergeCount; }
    std::size_t cardsLeft() const { return _cardsToMerge.size(); }
    /// In the user's language: on to the next card, or the import itself.
    std::string buttonTitle(Extent extent) const;
    bool isDone() const { return _isDone; }

private:
    /// Carries out the decision about the first card that is left, and goes on to the next.
    void apply();
    void merge(const platform::Ref<ZRPerson>& original, const platform::Ref<ZRPerson>& imported);
    void showNext();
    void forgetCards();
    void _done();
    void tellSource();

    Duplicates _duplicates;
    platform::Ref<ZRGroup> _group;
    bool _doSelectGroup;
    std::size_t _mergeCount = 0;
    ZRRecordList _cardsToMerge;
    /// The cards that came or were changed, as the host has them.
    ZRRecordList _selection;
    int _selectedAction = updateOld;
    platform::Ref<ZRNewMerger> _mergeHelper;
    platform::Ref<ZRRoster> _targetRoster;
    ZRRecordList _cardsToAdd;
    platform::Ref<ZRPerson> _originalCard;
    platform::Ref<ZRPerson> _importedCard;
    platform::Ref<ZRPerson> _updatedCard;
    ZRPropertyChanges _changes;
    ZRRecordDecisions* _recordDelegate = nullptr;
    ZRImportSource* _source = nullptr;
    bool _isDone = false;
};
