// The record classes as values: what a record type names, and what a table, an id or a caller looks up by
// name.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Object.h"

#include <string_view>

class ZRRecord;

/// One class of public records.
///
/// It is a description, not a factory of stored records: `make` gives an unbound handle.
///
/// Ownership: static, one instance a class.
/// Threads:   constant.
/// Errors:    none; an unknown name is absent.
struct ZR_EXPORT ZRRecordClass {
    /// The record type, such as "ZRPerson".
    std::string_view name;
    /// The class above; absent for ZRRecord.
    const ZRRecordClass* base;
    /// A handle of the class that is bound to nothing yet; absent for classes that have no records.
    platform::Ref<ZRRecord> (*make)();

    /// This class or one below `other`.
    bool isKindOf(const ZRRecordClass& other) const;

    /// The class of a record type, or null.
    static const ZRRecordClass* named(std::string_view recordType);
};
