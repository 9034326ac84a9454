// Groups that stand for records which are together for another reason than a row of the store.
#pragma once

#include "core/ZRGroup.h"

/// Base of the groups that are not stored: everybody, and what came with the last import.
///
/// It is no record of a roster: it cannot be added to one or removed, and is in no list of groups. It has an
/// id, by which its roster finds it for as long as it lives.
///
/// Ownership: as ZRRecord.
/// Threads:   as ZRRecord.
/// Errors:    what needs a row (choices of entries, properties of its own) is refused with false.
class ZR_EXPORT ZRSpecialGroup : public ZRGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// A group with that id, or a fresh one. Raises without a roster.
    static platform::Ref<ZRSpecialGroup> initWithUniqueId(
        std::optional<std::string_view> uniqueId, platform::Ref<ZRRoster> roster);
    static platform::Ref<ZRSpecialGroup> specialGroupForRoster(platform::Ref<ZRRoster> roster);

    /// The table that groups are stored in.
    std::string_view _table() const override;
    bool isSpecialGroup() const override { return true; }
    /// As for stored groups.
    bool doesPropertyExist(std::string_view property) const override;
    using ZRRecord::nts_SetValue;
    bool nts_SetValue(const platform::Value& value, std::string_view property,
        bool recordCouldBeInDatabase) override ZR_NTS;

protected:
    ZRSpecialGroup() = default;
    static platform::Ref<ZRSpecialGroup> initWithUniqueId(const ZRRecordClass& recordClass,
        std::optional<std::string_view> uniqueId, platform::Ref<ZRRoster> roster);

private:
    friend struct ZRRecordClasses;
};
