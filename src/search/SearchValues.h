// The values of a record that a search in memory has read.
#pragma once

#include "core/ZRGlobalLock.h"
#include "platform/value/Value.h"

#include <string>
#include <string_view>
#include <vector>

class ZRRecord;

/// Keeps what is read of a record in its temporary cache while the parts of one search look at it, and takes
/// it out again afterwards: a write does not touch that cache, so the next search must read anew.
///
/// Ownership: a scope on the stack; borrows the record.
/// Threads:   the global lock is held. An inner scope of the same record finds what the outer one read.
/// Errors:    what reading raises.
class SearchValues {
public:
    explicit SearchValues(const ZRRecord& record);
    ~SearchValues();
    SearchValues(const SearchValues&) = delete;
    SearchValues& operator=(const SearchValues&) = delete;

    /// The value from the record's temporary cache, or read; absent for the null marker.
    static platform::Value nts_read(const ZRRecord& record, std::string_view property) ZR_NTS;

private:
    const ZRRecord& _record;
    SearchValues* const _outer;
    std::vector<std::string> _entered;
};
