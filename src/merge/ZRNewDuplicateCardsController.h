// The clean-up of a whole roster, phase by phase: look for duplicates, tell what was found, merge, write.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPerson.h"
#include "merge/ComparePeople.h"
#include "merge/DuplicateMerge.h"
#include "platform/value/Object.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

class ZRManagedObjectContext;
class ZRNewDuplicateCardsController;
class ZRNewMerger;

/// Who shows the clean-up to the user, and decides at the warning.
class ZR_EXPORT ZRDuplicateCardsDelegate {
public:
    virtual ~ZRDuplicateCardsDelegate();
    /// The end: true when everything was written, false when it was cancelled. On the main thread.
    virtual void duplicateCardsController(ZRNewDuplicateCardsController& controller, bool didFinish) = 0;
    /// There is a new phase or more progress to show. At the warning somebody has to call
    /// `advanceToNextPhase` or `cancelCurrentPhase`. On the main thread.
    virtual void updateProgress(ZRNewDuplicateCardsController&) { }
};

/// One search for duplicates in the roster of the host, and the merge of what it finds.
///
/// It goes through its phases once. Cards are looked at and merged in throw-away rosters: until the last
/// phase nothing of the host's roster has changed, except that a card that takes the place of Me is Me.
///
/// Ownership: shared; alive while one of its threads works. Borrows its delegate until the end.
/// Threads:   operations and the delegate on the main thread; looking and merging on a thread of their own
///            each. Counters may be read by any.
/// Errors:    without a roster there is nothing to find. A save that fails is presented by the host.
class ZR_EXPORT ZRNewDuplicateCardsController final : public platform::Object {
public:
    enum Phase : std::int32_t { kNotStarted, kLook, kWarn, kMerge, kDone };

    static platform::Ref<ZRNewDuplicateCardsController> initWithDelegate(ZRDuplicateCardsDelegate* delegate);

    /// Begins; the sender is whatever the user touched. Nothing when it has begun.
    void start(const platform::Object* sender = nullptr);
    void advanceToNextPhase();
    /// Ends it: at once, or when the work under way has noticed.
    void cancelCurrentPhase();

    Phase phase() const { return static_cast<Phase>(_phase.load()); }
    /// How many cards or buckets are done, of how many.
    std::int64_t complete() const { return _complete; }
    std::int64_t limit() const { return _limit; }
    /// Cards that are identical, or similar, to one before; cards that say something twice.
    std::int64_t identicalDupes() const { return _identicalDupes; }
    std::int64_t similarDupes() const { return _similarDupes; }
    std::int64_t innerDupes() const { return _innerDupes; }

    // ---- the warning

    struct Warning {
        std::string major, minor;
        /// What the user may tick, to have similar cards merged too; empty when there is nothing to choose.
        std::string checkBox;
    };
    /// What was found, in the user's language.
    Warning warning() const;
    bool mergesSimilarCards() const { return _mergesSimilar; }
    void setMergesSimilarCards(bool merges) { _mergesSimilar = merges; }

    // ---- mergers, one a roster

    platform::Ref<ZRNewMerger> mergerForPerson(const ZRPerson& person) const;
    /// Null for a roster without one.
    platform::Ref<ZRNewMerger> mergerForRoster(const ZRRoster& roster) const;
    void ensureMergerExistsForRoster(const platform::Ref<ZRRoster>& roster);
    /// The people of a context, as unique ids, by the roster of the source that they come from. So far there
    /// is one: the host's roster.
    using ContactsBySource = std::vector<std::pair<platform::Ref<ZRRoster>, std::vector<std::string>>>;
    static ContactsBySource contactsBySource(ZRManagedObjectContext& context);
    /// Has the merger put `survivor` into all groups of `person`.
    static void _preserveGroupMemberShipOf(
        const ZRPerson& person, const platform::Ref<ZRPerson>& survivor, ZRNewMerger& merger);

private:
    using Bucket = std::vector<platform::Ref<ZRPerson>>;
    template <std::size_t (*hash)(const ZRPerson&), bool (*areEqual)(const ZRPerson&, const ZRPerson&)>
    struct Key {
        std::size_t operator()(const platform::Ref<ZRPerson>& person) const { return hash(*person); }
        bool operator()(const platform::Ref<ZRPerson>& a, const platform::Ref<ZRPerson>& b) const
        {
            return areEqual(*a, *b);
        }
    };
    template <class By>
    using HashTable = std::unordered_map<platform::Ref<ZRPerson>, Bucket, By, By>;
    using IdenticalTable = HashTable<Key<identicalHashPerson, peopleAreIdentical>>;
    using SimilarTable = HashTable<Key<similarHashPerson, peopleAreSimilar>>;

    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    explicit ZRNewDuplicateCardsController(ZRDuplicateCardsDelegate* delegate);
    ~ZRNewDuplicateCardsController() override;

    void advanceToLookPhase();
    void advanceToWarnPhase();
    void advanceToMergePhase();
    void advanceToDonePhase();
    void runOnThread(const char* name, void (ZRNewDuplicateCardsController::*work)());
    void work(void (ZRNewDuplicateCardsController::*work)());
    void _lookForDupes();
    void lookThrough(ZRRoster& roster);
    void enterIntoTables(const platform::Ref<ZRPerson>& person);
    std::int64_t innerMergeBucket(const Bucket& bucket);
    void _mergeFoundDupes();
    template <class Table>
    void mergeBuckets(const Table& table, bool clenseSimilarHash);
    void mergeBucket(const Bucket& bucket, bool clenseSimilarHash);
    void cleanseSimilarBucket(const platform::Ref<ZRPerson>& person);
    void passMeOn(const ZRPerson& survivor);
    std::int64_t onlySimilarDupes() const { return _similarDupes - _identicalDupes; }
    void tellProgress();
    void finish(bool didFinish);

    ZRDuplicateCardsDelegate* _delegate;
    std::atomic<bool> _cancelLooking = false;
    std::atomic<std::int64_t> _complete = 0;
    std::atomic<std::int64_t> _identicalDupes = 0;
    std::atomic<std::int64_t> _similarDupes = 0;
    std::atomic<std::int64_t> _innerDupes = 0;
    /// Those who may have a duplicate, or say something twice; nobody else is made a record of.
    Bucket _allPeople;
    IdenticalTable _identicalCardsHashTable;
    SimilarTable _similarCardsHashTable;
    std::atomic<std::int32_t> _phase = kNotStarted;
    platform::Ref<ZRPerson> _me;
    std::vector<platform::Ref<ZRNewMerger>> _mergers;

    merge::PassedMe _passedMe;
    std::atomic<std::int64_t> _limit = 0;
    std::atomic<bool> _mergesSimilar = false;
    std::atomic<bool> _progressIsOnItsWay = false;
    bool _isWorking = false;
};
