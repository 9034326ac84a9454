// The groups that searches name: how a smart group's own search is reached without going in circles.
#pragma once

#include "core/ZRGlobalLock.h"
#include "platform/value/Value.h"
#include "search/ZRSearchElement.h"

#include <cstddef>
#include <string>
#include <unordered_map>

class ZRGroup;
class ZRRecord;

/// Whether the value is the marker that stands for "in any group".
bool isAnyGroupMarker(const platform::Value& value);

/// The search of a smart group; absent when it has none, or one that cannot be read.
platform::Ref<ZRSearchElement> nts_searchOfSmartGroup(const ZRGroup& group) ZR_NTS;

/// Whether a live card is in the group or in one below it; in a smart group: whether it matches its search.
bool nts_isMemberOfGroup(const ZRRecord& record, const ZRGroup& group) ZR_NTS;
/// Whether it stands in some group, smart groups aside.
bool nts_isMemberOfAnyGroup(const ZRRecord& record) ZR_NTS;

/// How long a chain of smart groups may be that name one another; what is beyond has no members.
inline constexpr std::size_t kDeepestSmartGroups = 100;

/// Keeps a smart group marked as being looked into by this thread, so that groups that name each other end.
///
/// Ownership: a scope on the stack.
/// Threads:   each thread has marks of its own, so that searches on different threads do not interfere.
/// Errors:    none; `isEntered` is false when the thread is in that group already, or in too many.
class SmartGroupVisit {
public:
    explicit SmartGroupVisit(std::string uniqueId);
    ~SmartGroupVisit();
    SmartGroupVisit(const SmartGroupVisit&) = delete;
    SmartGroupVisit& operator=(const SmartGroupVisit&) = delete;

    bool isEntered() const { return _isEntered; }

private:
    const std::string _uniqueId;
    const bool _isEntered;
};

/// Keeps what was read of the searches of smart groups while one search runs, which may ask for them once a
/// record. The groups themselves do not keep searches that name records.
///
/// Ownership: a scope on the stack; the outermost one of a thread keeps, those within do nothing.
/// Threads:   one.
/// Errors:    none; a search that cannot be read is kept as absent, so that it is logged once.
class SmartGroupSearches {
public:
    SmartGroupSearches();
    ~SmartGroupSearches();
    SmartGroupSearches(const SmartGroupSearches&) = delete;
    SmartGroupSearches& operator=(const SmartGroupSearches&) = delete;

    /// Null while no search runs.
    static SmartGroupSearches* ofThisThread();
    /// Null for a group that was not asked for yet.
    const platform::Ref<ZRSearchElement>* find(const std::string& groupId) const;
    void keep(const std::string& groupId, platform::Ref<ZRSearchElement> search);

private:
    const bool _isOutermost;
    std::unordered_map<std::string, platform::Ref<ZRSearchElement>> _searches;
};
