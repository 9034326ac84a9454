// What a member cache knows, for the files that implement it.
#pragma once

#include "core/ZRGroup.h"
#include "core/ZRNameOrder.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Mutex.h"
#include "platform/run/OperationQueue.h"
#include "store/ZRDBCache.h"
#include "store/ZRRoster.h"
#include "store/ZRSafeNotificationEntry.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The location of the records that did not come with a subscription.
inline constexpr char kZRLocalLocation[] = "local";

struct ZRDBCache::State {
    using Lists = std::map<std::string, platform::Ref<ZRMemberList>, std::less<>>;

    // Constant while the cache lives.
    platform::Ref<ZRRoster> roster;
    platform::Ref<platform::OperationQueue> operations = platform::makeRef<platform::OperationQueue>();
    std::vector<platform::Ref<ZRSafeNotificationEntry>> observers;

    // Under the global lock.
    std::shared_ptr<objectstore::UndoManager> undoManager;
    /// By remote location.
    Lists allPeopleMap;
    std::optional<ZRRecordList> allGroups;
    /// By the group's unique id.
    Lists groupsPeople;
    std::int64_t nameSorting = 0;
    platform::Ref<ZRPerson> newPerson;
    platform::Ref<ZRGroup> newPersonParentGroup;

    /// One save in the background at a time. It is taken before the global lock, and only by threads that do
    /// nothing but save.
    platform::Mutex threadedSaveLock;
};

/// Where `member` goes among sorted records: before its equals. The global lock is held.
template <class Place>
Place zrPlaceByName(const ZRRecord& member, Place begin, Place end, const ZRNameComparison& comparison)
{
    return std::lower_bound(begin, end, &member, [&](const auto& one, const ZRRecord* other) {
        return ZRComparePeopleName(*one, *other, comparison) < 0;
    });
}
