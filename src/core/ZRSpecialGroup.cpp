// Groups that are not stored: how they are made, and what they refuse.
#include "core/ZRSpecialGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "store/ZRRoster.h"

using platform::Ref;

Ref<ZRSpecialGroup> ZRSpecialGroup::initWithUniqueId(
    const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, Ref<ZRRoster> roster)
{
    const std::string id = uniqueId ? std::string(*uniqueId) : _newUniqueIdForTable(zr::kZRGroupRecordType);
    return platform::refCast<ZRSpecialGroup>(
        initSpecialRecordWithUniqueId(recordClass, id, std::move(roster)));
}

Ref<ZRSpecialGroup> ZRSpecialGroup::initWithUniqueId(
    std::optional<std::string_view> uniqueId, Ref<ZRRoster> roster)
{
    return initWithUniqueId(recordClassDescription, uniqueId, std::move(roster));
}

Ref<ZRSpecialGroup> ZRSpecialGroup::specialGroupForRoster(Ref<ZRRoster> roster)
{
    return initWithUniqueId(std::nullopt, std::move(roster));
}

std::string_view ZRSpecialGroup::_table() const { return zr::kZRGroupRecordType; }

bool ZRSpecialGroup::doesPropertyExist(std::string_view property) const
{
    return nts_Roster()->doesPropertyExist(property, ZRGroup::recordClassDescription);
}

// The base would make a row to hold the value.
bool ZRSpecialGroup::nts_SetValue(const platform::Value&, std::string_view, bool) { return false; }
