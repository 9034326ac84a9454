// The order of people by name.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"

#include <cstdint>
#include <string>
#include <string_view>

class ZRRecord;
enum class ZRNameOrder;

/// What a comparison of two people needs to know, found out once a sort.
struct ZRNameComparison {
    /// By last name first, or by first name.
    bool byLastName = false;
};

/// The user's preference kZRNameSorting: 0 sorts by first name, anything else, and nothing, by last name.
ZR_EXPORT std::int64_t zrNameSorting();

/// A comparison by that preference.
ZR_EXPORT ZRNameComparison _createCompartorContext();
/// A comparison in that order.
ZR_EXPORT ZRNameComparison zrComparisonInOrder(ZRNameOrder order);

/// Negative, zero or positive, by the sort names in the user's locale. A group sorts by its name, before all
/// people. Records whose rows are gone are told apart by their ids; it never fails. The global lock is held.
ZR_EXPORT int ZRComparePeopleName(const ZRRecord& a, const ZRRecord& b, const ZRNameComparison& comparison);

/// The same for the standard library's re-entrant sort, over pointers to records.
ZR_EXPORT int bsd_ZRComparePeopleName(void* comparison, const void* a, const void* b);

/// A record with all that its place among others depends on, read in advance: comparing two of them reads
/// nothing else, and takes no lock.
///
/// Ownership: borrows the record and the bytes. Threads: a plain value. Errors: none.
struct ZRNamedRecord {
    const ZRRecord* record = nullptr;
    /// Bytes in the order of the sort names.
    std::string_view key;
    /// It has no row to read a name from.
    bool isGone = false;
    /// Where it stood before the sort.
    std::size_t position = 0;
};

/// The order of ZRComparePeopleName of the records, as it was when their keys were read.
ZR_EXPORT int ZRComparePeopleName(const ZRNamedRecord& a, const ZRNamedRecord& b);

/// Appends to `bytes` what `key` of a ZRNamedRecord is. False when the record's row is gone. What is derived
/// from the record's fields is kept in its stored object.
bool nts_appendNameKey(const ZRRecord& record, const ZRNameComparison& comparison, std::string& bytes) ZR_NTS;
