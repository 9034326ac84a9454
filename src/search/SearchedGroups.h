// The groups that searches name: how a smart group's own search is reached without going in circles.
#pragma once

#include "core/ZRGlobalLock.h"
#include "platform/value/Value.h"
#include "search/ZRSearchElement.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

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

/// How often one question may make conditions of smart groups that it has made conditions of before.
inline constexpr std::size_t kMostRepeatedConditions = 200;

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
    /// How often this thread was not let in: what was found meanwhile holds only where it came from.
    static std::size_t refusals();

private:
    const std::string _uniqueId;
    const bool _isEntered;
};

/// What one question that comes to smart groups has found out about them: it may come to each of them many
/// times, by many ways and for every record.
///
/// Ownership: a scope on the stack; the outermost one of a thread keeps, those within do nothing. It keeps
///            the searches alive that groups do not keep themselves, since they name records.
/// Threads:   one.
/// Errors:    none; a search that cannot be read is kept as absent, so that it is logged once.
class SmartGroupSearches {
public:
    SmartGroupSearches();
    ~SmartGroupSearches();
    SmartGroupSearches(const SmartGroupSearches&) = delete;
    SmartGroupSearches& operator=(const SmartGroupSearches&) = delete;

    /// Null while no question is under way.
    static SmartGroupSearches* ofThisThread();

    /// The search of a group; null for one that was not asked for yet.
    const platform::Ref<ZRSearchElement>* find(const std::string& groupId) const;
    void keep(const std::string& groupId, platform::Ref<ZRSearchElement> search);

    /// Whether a group's search may once more become part of a condition for the store. Each way to a group
    /// is a part of its own, and ways multiply: past kMostRepeatedConditions the question is one for memory.
    bool mayConvert(const std::string& groupId, const objectstore::Entity& entity);

    /// Whether the record is in the group, as far as it was found out without meeting a group twice.
    std::optional<bool> answer(const std::string& recordId, const std::string& groupId) const;
    void keepAnswer(const std::string& recordId, const std::string& groupId, bool isMember);

    /// True once for each group and target: what was looked through leads nowhere else the second time.
    bool isFirstLook(const std::string& groupId, const std::string& targetId);

private:
    const bool _isOutermost;
    std::unordered_map<std::string, platform::Ref<ZRSearchElement>> _searches;
    std::set<std::pair<const objectstore::Entity*, std::string>> _converted;
    std::size_t _repeats = 0;
    /// Of one record at a time.
    std::string _recordId;
    std::unordered_map<std::string, bool> _answers;
    std::set<std::pair<std::string, std::string>> _looked;
};
