// How the phases of a clean-up follow each other, and what each does.
#include "merge/ZRNewDuplicateCardsController.h"

#include "commands/ApplicationHost.h"
#include "core/ZRGroup.h"
#include "merge/ColumnReading.h"
#include "merge/ZRNewMerger.h"
#include "platform/files/Resources.h"
#include "platform/run/Dispatch.h"
#include "platform/run/Log.h"
#include "platform/run/Thread.h"
#include "store/ZRIdsOfPeople.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

using platform::Ref;

namespace {

std::string localized(const std::string& key)
{
    return platform::StringTables::shared().string(key, "ZRStrings");
}

/// The text of `key` with the numbers in the places of "%@", in order.
std::string localized(const std::string& key, const std::vector<std::int64_t>& numbers)
{
    std::string text = localized(key);
    std::size_t at = 0;
    for (const auto number : numbers)
        if (at = text.find("%@", at); at != text.npos)
            text.replace(at, 2, std::to_string(number));
        else
            break;
    return text;
}

/// Each card that has something to do with another one, or with itself, once.
std::vector<std::string> idsIn(const ZRDuplicates& found)
{
    std::vector<std::string> ids;
    std::unordered_set<std::string_view> known;
    for (const auto* buckets : {&found.similar, &found.inner})
        for (const auto& bucket : *buckets)
            for (const auto& id : bucket.uniqueIds)
                if (known.insert(id).second)
                    ids.push_back(id);
    return ids;
}

} // namespace

ZRDuplicateCardsDelegate::~ZRDuplicateCardsDelegate() = default;

Ref<ZRNewDuplicateCardsController> ZRNewDuplicateCardsController::initWithDelegate(
    ZRDuplicateCardsDelegate* delegate)
{
    return platform::makeRef<ZRNewDuplicateCardsController>(delegate);
}

ZRNewDuplicateCardsController::ZRNewDuplicateCardsController(ZRDuplicateCardsDelegate* delegate)
    : _delegate(delegate)
{
}

ZRNewDuplicateCardsController::~ZRNewDuplicateCardsController() = default;

// ---- phases

void ZRNewDuplicateCardsController::start(const platform::Object*)
{
    if (phase() == kNotStarted)
        advanceToNextPhase();
}

void ZRNewDuplicateCardsController::advanceToNextPhase()
{
    switch (++_phase) {
    case kLook:
        return advanceToLookPhase();
    case kWarn:
        return advanceToWarnPhase();
    case kMerge:
        return advanceToMergePhase();
    case kDone:
        return advanceToDonePhase();
    default:
        return;
    }
}

void ZRNewDuplicateCardsController::cancelCurrentPhase()
{
    _cancelLooking = true;
    if (!_isWorking)
        finish(false);
}

void ZRNewDuplicateCardsController::advanceToLookPhase()
{
    if (const auto context = ApplicationHost::shared()->cardContext())
        for (const auto& [roster, ids] : contactsBySource(*context)) {
            ensureMergerExistsForRoster(roster);
            _limit += static_cast<std::int64_t>(ids.size());
        }
    runOnThread("zr-duplicates", &ZRNewDuplicateCardsController::_lookForDupes);
}

void ZRNewDuplicateCardsController::advanceToWarnPhase() { tellProgress(); }

void ZRNewDuplicateCardsController::advanceToMergePhase()
{
    _complete = 0;
    runOnThread("zr-merge", &ZRNewDuplicateCardsController::_mergeFoundDupes);
}

void ZRNewDuplicateCardsController::advanceToDonePhase()
{
    const auto failure = merge::applyAsOneStep(_mergers, _passedMe);
    if (!failure.domain.empty())
        ApplicationHost::shared()->presentFailure(failure);
    finish(true);
}

void ZRNewDuplicateCardsController::finish(bool didFinish)
{
    auto* const delegate = std::exchange(_delegate, nullptr);
    _phase = kDone;
    _identicalCardsHashTable.clear();
    _similarCardsHashTable.clear();
    _allPeople.clear();
    _mergers.clear();
    if (delegate)
        delegate->duplicateCardsController(*this, didFinish);
}

// ---- work on threads

void ZRNewDuplicateCardsController::runOnThread(
    const char* name, void (ZRNewDuplicateCardsController::*body)())
{
    _isWorking = true;
    const Ref<ZRNewDuplicateCardsController> self(this);
    if (platform::startThread(name, [self, body] { self->work(body); }))
        return;
    _isWorking = false;
    cancelCurrentPhase();
}

void ZRNewDuplicateCardsController::work(void (ZRNewDuplicateCardsController::*body)())
{
    try {
        (this->*body)();
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Cannot look for duplicates: {}", failure.what()));
        _cancelLooking = true;
    }
    zr_dispatch_main([self = Ref<ZRNewDuplicateCardsController>(this)] {
        self->_isWorking = false;
        self->_cancelLooking ? self->cancelCurrentPhase() : self->advanceToNextPhase();
    });
}

void ZRNewDuplicateCardsController::tellProgress()
{
    if (_progressIsOnItsWay.exchange(true))
        return;
    platform::MainQueue::shared().async([self = Ref<ZRNewDuplicateCardsController>(this)] {
        self->_progressIsOnItsWay = false;
        if (self->_delegate)
            self->_delegate->updateProgress(*self);
    });
}

// ---- looking

void ZRNewDuplicateCardsController::_lookForDupes()
{
    if (const auto roster = ApplicationHost::shared()->aggregateRoster())
        _me = roster->me();
    for (const auto& merger : _mergers)
        lookThrough(*merger->targetRoster());
    for (const auto& [person, bucket] : _similarCardsHashTable)
        if (!_cancelLooking)
            _innerDupes += innerMergeBucket(bucket);
}

// Who shares no bucket with anybody would only fill the tables: the search has told them apart by columns.
void ZRNewDuplicateCardsController::lookThrough(ZRRoster& roster)
{
    const auto found = zrFindDuplicates(roster, [this] { return _cancelLooking.load(); });
    const auto people = merge::readPeople(roster, idsIn(found));
    _complete += static_cast<std::int64_t>(found.people - people.size());
    _identicalCardsHashTable.reserve(people.size());
    _similarCardsHashTable.reserve(people.size());
    for (const auto& record : people) {
        if (_cancelLooking)
            return;
        enterIntoTables(platform::refCast<ZRPerson>(record));
        ++_complete;
        tellProgress();
    }
}

void ZRNewDuplicateCardsController::enterIntoTables(const Ref<ZRPerson>& person)
{
    const auto enter = [&](auto& table, std::atomic<std::int64_t>& dupes) {
        Bucket& bucket = table[person];
        if (!bucket.empty())
            ++dupes;
        bucket.push_back(person);
    };
    _allPeople.push_back(person);
    enter(_similarCardsHashTable, _similarDupes);
    enter(_identicalCardsHashTable, _identicalDupes);
}

std::int64_t ZRNewDuplicateCardsController::innerMergeBucket(const Bucket& bucket)
{
    return std::ranges::count_if(bucket, [&](const Ref<ZRPerson>& person) {
        return mergerForPerson(*person)->findSimilarMultiValuesForPerson(person);
    });
}

// ---- the warning

ZRNewDuplicateCardsController::Warning ZRNewDuplicateCardsController::warning() const
{
    std::string key;
    std::vector<std::int64_t> numbers;
    const auto add = [&](std::int64_t count, const char* one, const char* several) {
        if (count > 0)
            key += count == 1 ? one : several;
        if (count > 1)
            numbers.push_back(count);
    };
    add(_identicalDupes, "_DUPE", "_DUPES");
    add(_innerDupes, "_INNERDUPE", "_INNERDUPES");
    if (onlySimilarDupes() > 0)
        key += "_SIMILAR";
    Warning warning{
        localized("DUPE_REVIEW_MAJOR" + key, numbers), localized("DUPE_REVIEW_MINOR" + key, numbers), {}};
    if (_identicalDupes > 0 && onlySimilarDupes() > 0)
        warning.checkBox =
            localized(onlySimilarDupes() == 1 ? "SIMILAR_DUPE_CHECKBOX" : "SIMILAR_DUPES_CHECKBOX",
                {onlySimilarDupes()});
    return warning;
}

// ---- merging

void ZRNewDuplicateCardsController::_mergeFoundDupes()
{
    const bool mergesSimilar = _mergesSimilar || (_identicalDupes == 0 && _similarDupes > 0);
    _limit = static_cast<std::int64_t>(
        _identicalCardsHashTable.size() + (mergesSimilar ? _similarCardsHashTable.size() : 0));
    mergeBuckets(_identicalCardsHashTable, true);
    if (mergesSimilar)
        mergeBuckets(_similarCardsHashTable, false);
}

template <class Table>
void ZRNewDuplicateCardsController::mergeBuckets(const Table& table, bool clenseSimilarHash)
{
    for (const auto& [person, bucket] : table) {
        if (_cancelLooking)
            return;
        if (bucket.size() > 1)
            mergeBucket(bucket, clenseSimilarHash);
        ++_complete;
        tellProgress();
    }
}

void ZRNewDuplicateCardsController::mergeBucket(const Bucket& bucket, bool clenseSimilarHash)
{
    const auto merger = mergerForPerson(*bucket.front());
    merge::mergeIntoFirst(*merger, bucket, [&](const Ref<ZRPerson>& dropped) {
        if (clenseSimilarHash)
            cleanseSimilarBucket(dropped);
        if (_me && _me->uniqueId() == dropped->uniqueId())
            passMeOn(*bucket.front());
    });
}

void ZRNewDuplicateCardsController::cleanseSimilarBucket(const Ref<ZRPerson>& person)
{
    if (const auto at = _similarCardsHashTable.find(person); at != _similarCardsHashTable.end())
        std::erase(at->second, person);
}

// A later bucket may pass it on once more.
void ZRNewDuplicateCardsController::passMeOn(const ZRPerson& survivor)
{
    const auto roster = ApplicationHost::shared()->aggregateRoster();
    if (_passedMe.former.empty())
        _passedMe.former = _me->uniqueId();
    _passedMe.present = survivor.uniqueId();
    _me = platform::refCast<ZRPerson>(roster->recordForUniqueId(_passedMe.present));
    roster->setMe(_me);
}

void ZRNewDuplicateCardsController::_preserveGroupMemberShipOf(
    const ZRPerson& person, const Ref<ZRPerson>& survivor, ZRNewMerger& merger)
{
    for (const auto& parent : person.parentGroups())
        if (const auto group = platform::refCast<ZRGroup>(parent))
            merger.addMember(survivor, group);
}

// ---- mergers

Ref<ZRNewMerger> ZRNewDuplicateCardsController::mergerForPerson(const ZRPerson& person) const
{
    return mergerForRoster(*person.nts_Roster());
}

Ref<ZRNewMerger> ZRNewDuplicateCardsController::mergerForRoster(const ZRRoster& roster) const
{
    const auto isOf = [&](const Ref<ZRNewMerger>& merger) { return merger->targetRoster().get() == &roster; };
    const auto at = std::ranges::find_if(_mergers, isOf);
    return at == _mergers.end() ? nullptr : *at;
}

void ZRNewDuplicateCardsController::ensureMergerExistsForRoster(const Ref<ZRRoster>& roster)
{
    if (mergerForRoster(*roster))
        return;
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    merger->setTargetRoster(roster);
    _mergers.push_back(merger);
}

ZRNewDuplicateCardsController::ContactsBySource ZRNewDuplicateCardsController::contactsBySource(
    ZRManagedObjectContext& context)
{
    ZRRoster* const roster = context.owningRoster();
    if (!roster)
        return {};
    return {{roster->parallelUniverseRoster(), ZRIdsOfPeople(*roster, std::nullopt)}};
}
