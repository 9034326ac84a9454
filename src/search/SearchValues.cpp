// The values of a record that a search in memory has read.
#include "search/SearchValues.h"

#include "core/ZRRecord.h"

using platform::Value;

namespace {

/// Of the innermost record that this thread looks at.
SearchValues*& current()
{
    thread_local SearchValues* innermost = nullptr;
    return innermost;
}

} // namespace

SearchValues::SearchValues(const ZRRecord& record) : _record(record), _outer(current()) { current() = this; }

SearchValues::~SearchValues()
{
    zrGlobalLockIsHeld();
    for (const auto& property : _entered)
        _record.nts_SetValueInTemporaryCache({}, property);
    current() = _outer;
}

Value SearchValues::nts_read(const ZRRecord& record, std::string_view property)
{
    Value value = record.nts_ValueInTemporaryCacheForProperty(property);
    if (value.isAbsent()) {
        value = record.nts_ValueForProperty(property);
        if (SearchValues* scope = current(); scope && &scope->_record == &record) {
            record.nts_SetValueInTemporaryCache(
                value.isAbsent() ? Value(platform::NullMarker()) : value, property);
            scope->_entered.emplace_back(property);
        }
    }
    return value.isNull() ? Value() : value;
}
