// How the info record of a roster is found, or made.
#include "core/ZRInfo.h"

#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

using platform::Ref;

namespace {

constexpr std::string_view cacheKey = "ZRInfo";

} // namespace

Ref<ZRInfo> ZRInfo::info()
{
    const auto roster = ZRRoster::sharedRoster();
    return roster ? locked(*roster, ZRAccess::read, [&]() ZR_NTS { return nts_InfoWithRoster(roster.get()); })
                  : nullptr;
}

Ref<ZRInfo> ZRInfo::nts_Info() { return nts_InfoWithRoster(ZRRoster::nts_SharedRoster().get()); }

Ref<ZRInfo> ZRInfo::nts_InfoWithRoster(ZRRoster* roster)
{
    if (!roster)
        return nullptr;
    if (auto cached = platform::refCast<ZRInfo>(roster->nts_CachedRecordForUniqueId(cacheKey)))
        return cached;
    const auto all = roster->nts_AllRecordsForClass(recordClassDescription);
    auto found = all.empty() ? ZROSInfo::nts_CreateInfoWithRoster(*roster) : all.back();
    if (found)
        roster->nts_SetCachedRecord(found.get(), cacheKey);
    return platform::refCast<ZRInfo>(found);
}
