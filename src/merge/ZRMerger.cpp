// Cards found by their names' place among all, and work that is issued as a command.
#include "merge/ZRMerger.h"

#include "core/ZRNameOrder.h"
#include "store/ZRDBCache.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Ref;

namespace {

/// The first person from `index` on that goes by the same name, and is not about to come in itself.
Ref<ZRPerson> namesake(const ZRRecord& person, const ZRRecordList& sorted, ZRIndex index,
    const ZRRecordSet& incoming, const ZRNameComparison& comparison)
{
    for (auto at = static_cast<std::size_t>(index); at < sorted.size(); ++at) {
        if (ZRComparePeopleName(person, *sorted[at], comparison) != 0)
            return nullptr;
        if (!incoming.contains(sorted[at]))
            return platform::refCast<ZRPerson>(sorted[at]);
    }
    return nullptr;
}

} // namespace

Ref<ZRMerger> ZRMerger::initWithUIController(Ref<platform::Object> uiController, Ref<ZRGroup> group)
{
    return platform::makeRef<ZRMerger>(std::move(uiController), std::move(group));
}

ZRNewMerger::Duplicates ZRMerger::duplicatesForPeople(const ZRRecordList& people)
{
    const auto& sorted = allPeople();
    const auto roster = targetRoster();
    // Held, or each look at it would make it anew.
    const auto cache = roster->dbCache();
    const ZRNameComparison comparison{.byLastName = cache->nameSorting() != 0};
    const ZRRecordSet incoming(people.begin(), people.end());
    Duplicates duplicates;
    locked(*roster, ZRAccess::read, [&]() ZR_NTS {
        for (const auto& record : people) {
            const auto* person = dynamic_cast<const ZRPerson*>(record.get());
            const ZRIndex index = person ? _insertionIndexForPerson(*person) : kZRNotFound;
            if (index == kZRNotFound)
                continue;
            if (auto found = namesake(*person, sorted, index, incoming, comparison))
                duplicates.emplace(person->nts_UniqueId(), std::move(found));
        }
    });
    return duplicates;
}

bool ZRMerger::issueCommandWithActionName(std::string_view key)
{
    const auto command = writeChanges();
    return command && command->performWithActionName(key);
}
