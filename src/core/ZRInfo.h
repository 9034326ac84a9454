// The one record of a roster that holds the roster's own facts.
#pragma once

#include "core/ZRRecord.h"

/// Facts of the roster itself: whose card is Me, versions, sharing.
///
/// Ownership, Threads, Errors: as ZRRecord. The roster keeps it alive.
class ZR_EXPORT ZRInfo : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// The record of the shared roster; absent when there is none.
    static platform::Ref<ZRInfo> info();
    static platform::Ref<ZRInfo> nts_Info() ZR_NTS;
    /// The record of `roster`, made when it has none yet; absent for no roster.
    static platform::Ref<ZRInfo> nts_InfoWithRoster(ZRRoster* roster) ZR_NTS;
    /// Always empty: no group contains it.
    ZRRecordList nts_ParentGroups() const override ZR_NTS { return {}; }

protected:
    ZRInfo() = default;

private:
    friend struct ZRRecordClasses;
};
