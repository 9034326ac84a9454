// The record classes that no user sees.
#include "core/ZRPrivateRecords.h"

#include "store/ZRRoster.h"

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

Ref<ZRLog> ZRLog::nts_InitWithDeletedUID(std::string_view deletedUID, ZRRoster& roster)
{
    auto log = platform::refCast<ZRLog>(nts_initWithUniqueId(recordClassDescription, std::nullopt, roster));
    if (log)
        log->nts_SetValue(Value(deletedUID), "DeletedUID");
    return log;
}

std::string ZRLog::nts_DeletedUID() const { return std::string(nts_ValueForProperty("DeletedUID").asText()); }

std::string ZRLog::_deletedUID() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_DeletedUID(); });
}

std::string ZRDataType::description() const
{
    return Value::dictionary(
        {{"ZRTableName", Value("ZRDataType")}, {"Table", valueForProperty("Table")},
            {"Property", valueForProperty("Property")}, {"Type", valueForProperty("Type")}})
        .description();
}
