// What happens when a key is set, and how a key that follows from others is computed: the hooks of the model
// table.
#pragma once

#include "objectstore/StoreObject.h"
#include "platform/text/Dates.h"
#include "platform/value/Value.h"

namespace hooks {

using objectstore::StoreObject;
using platform::Value;

// ---- years, and dates without their year

struct YearAndRest {
    Value year;
    Value yearless;
};
/// The year of a date, and the seconds since that year began; absent for what is no date. This year is taken
/// to begin in GMT, so that all programs of a day agree; any other in the zone that the date is read in. Days
/// are noon GMT and are read there: elsewhere the last of December may be of the next year.
YearAndRest extractYear(const Value& date, platform::TimeZone zone = platform::TimeZone::local());

Value creationDateYear(StoreObject&);
Value creationDateYearless(StoreObject&);
Value modificationDateYear(StoreObject&);
Value modificationDateYearless(StoreObject&);
Value birthdayYear(StoreObject&);
Value birthdayYearless(StoreObject&);
Value dateYear(StoreObject&);
Value dateYearless(StoreObject&);
Value dateValueYear(StoreObject&);
Value dateValueYearless(StoreObject&);

void creationDateDidChange(StoreObject&);
/// While an undo or a redo runs, the date becomes now: what is undone is modified again.
void modificationDateDidChange(StoreObject&);
void birthdayDidChange(StoreObject&);
void dateDidChange(StoreObject&);
void dateValueDidChange(StoreObject&);

/// The modification date, or the creation date of what was never modified.
Value aggregateModificationDate(StoreObject&);
void setAggregateModificationDate(StoreObject&, const Value&);

// ---- names, folds and the index string

void nameDidChange(StoreObject&);
void displayFlagsDidChange(StoreObject&);
void indexedTextDidChange(StoreObject&);
void groupNameDidChange(StoreObject&);
void emailAddressDidChange(StoreObject&);
void mailRecentDidChange(StoreObject&);
Value sortingFirstName(StoreObject&);
Value sortingLastName(StoreObject&);
/// The collation keys of the sort names in the locale of the store.
Value sortingFirstKey(StoreObject&);
Value sortingLastKey(StoreObject&);
Value groupSortingName(StoreObject&);
Value stringForIndexing(StoreObject&);

// ---- keys that other objects hold

Value meUniqueId(StoreObject&);
void setMeUniqueId(StoreObject&, const Value&);
Value modifiedUniqueIds(StoreObject&);
void setModifiedUniqueIds(StoreObject&, const Value&);
Value lastEmailDates(StoreObject&);
void setLastEmailDates(StoreObject&, const Value&);

Value valuesOfSource(StoreObject& info, std::string_view key);
/// Values that the source of the info record holds for it.
template <int which>
Value sourceValues(StoreObject& info)
{
    constexpr std::string_view keys[] = {"remoteLocations", "readSharingACL", "readWriteSharingACL"};
    return valuesOfSource(info, keys[which]);
}

} // namespace hooks
