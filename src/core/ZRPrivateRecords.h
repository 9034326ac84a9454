// The record classes that no user sees: subscriptions, the log of deletions, mail recents and two legacy
// tables.
#pragma once

#include "core/ZRRecord.h"

/// A subscription to somebody's shared contacts. Its table is named "ZRSubscriptionRecord".
class ZR_EXPORT ZRSubscription : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

protected:
    ZRSubscription() = default;

private:
    friend struct ZRRecordClasses;
};

/// One deleted record, remembered for those who synchronise.
class ZR_EXPORT ZRLog : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    static platform::Ref<ZRLog> nts_InitWithDeletedUID(std::string_view deletedUID, ZRRoster& roster) ZR_NTS;
    std::string nts_DeletedUID() const ZR_NTS;
    std::string _deletedUID() const;

protected:
    ZRLog() = default;

private:
    friend struct ZRRecordClasses;
};

/// Somebody whom mail was exchanged with; lives in a store of its own.
class ZR_EXPORT ZRMailRecent : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

protected:
    ZRMailRecent() = default;

private:
    friend struct ZRRecordClasses;
};

/// A property type as the legacy file kept it.
class ZR_EXPORT ZRDataType : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }
    std::string description() const override;

protected:
    ZRDataType() = default;

private:
    friend struct ZRRecordClasses;
};

/// A membership row as the legacy file kept it.
class ZR_EXPORT ZRGroupContents : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

protected:
    ZRGroupContents() = default;

private:
    friend struct ZRRecordClasses;
};
