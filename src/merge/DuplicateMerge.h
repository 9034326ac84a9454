// How duplicates that were found become one card each.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPerson.h"
#include "merge/DuplicateSearch.h"
#include "platform/value/Error.h"

#include <functional>
#include <string>
#include <vector>

class ZRNewMerger;

/// One card that was made of several, or cleaned of what it said twice.
struct ZRMergedCards {
    std::string survivor;
    /// The cards that went, in the order in which they flowed into it.
    std::vector<std::string> dropped;
};

struct ZRDuplicateMerge {
    std::vector<ZRMergedCards> merged;
    /// Why nothing was written; its domain is empty when all is.
    platform::Error failure;
};

enum class ZRMergeKind { wholeCards, doubledValues };

/// Merges the cards of each bucket into its first one, or takes doubled values out of the one card of each,
/// in the host's roster, and saves once. Buckets that have a card in common become one. What a card says
/// wins over what those before it say, the first card's lists and notes grow by what is new
/// (`ZRNewMerger::updateCard`); the first card is in all groups of the others, and Me if one of them was.
///
/// Threads: that of the host, without locks. Errors: told by `failure`.
ZR_EXPORT ZRDuplicateMerge zrMergeDuplicates(const ZRDuplicateBuckets& buckets, ZRMergeKind kind);

namespace merge {

using People = std::vector<platform::Ref<ZRPerson>>;

/// Has the merger let all people but the first flow into that and go; `onDropped` hears of each.
void mergeIntoFirst(ZRNewMerger& merger, const People& people,
    const std::function<void(const platform::Ref<ZRPerson>& dropped)>& onDropped);

/// Who was Me when a merge began, and who is now; empty when that has not changed.
struct PassedMe {
    std::string former, present;
};
/// Has the mergers write what they gathered; for the host's undo manager, if it has one, that is one step
/// with the passing on of Me, named as a merge. Answers why a save failed, if one did.
platform::Error applyAsOneStep(const std::vector<platform::Ref<ZRNewMerger>>& mergers, const PassedMe& me);

} // namespace merge
