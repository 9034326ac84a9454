// The groups that searches name: how a smart group's own search is reached without going in circles.
#include "search/SearchedGroups.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <set>

using platform::Ref;

namespace {

/// The ids of the smart groups that this thread is in.
std::set<std::string>& visited()
{
    thread_local std::set<std::string> groups;
    return groups;
}

} // namespace

bool isAnyGroupMarker(const platform::Value& value)
{
    return value.asText() == zr::kZRSmartGroupAnyGroupMembershipProperty;
}

Ref<ZRSearchElement> nts_searchOfSmartGroup(const ZRGroup& group)
{
    constexpr std::string_view cacheKey = "ZRActualSearchElement";
    if (auto* known = group.nts_ValueInTemporaryCacheForProperty(cacheKey).as<ZRSearchElement>())
        return Ref<ZRSearchElement>(known);
    const platform::Value data = group.nts_ValueForProperty(zr::kZRSearchElementProperty);
    if (!data.isData())
        return nullptr;
    try {
        auto element = ZRSearchElement::nts_unarchivedElement(data.asBytes());
        if (element) {
            group.nts_SetValueInTemporaryCache(platform::Value(*element), cacheKey);
            return *element;
        }
        platform::log(fmt::format("Search of group {}: {}", group.nts_UniqueId(), element.error().text));
    } catch (const ZRIncompatibleSearchElementVersionException& failure) {
        platform::log(fmt::format("Search of group {}: {}", group.nts_UniqueId(), failure.what()));
    }
    return nullptr;
}

SmartGroupVisit::SmartGroupVisit(std::string uniqueId)
    : _uniqueId(std::move(uniqueId)), _isEntered(visited().insert(_uniqueId).second)
{
}

SmartGroupVisit::~SmartGroupVisit()
{
    if (_isEntered)
        visited().erase(_uniqueId);
}
